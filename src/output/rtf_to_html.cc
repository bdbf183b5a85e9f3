#include "output/rtf_to_html.h"

#include "output/html_converter.h"

namespace tenora {

std::string RtfToHtml(std::string_view rtf, std::string_view options) {
  return html::Converter(html::ReadOptions(options)).Convert(rtf);
}

}  // namespace tenora
