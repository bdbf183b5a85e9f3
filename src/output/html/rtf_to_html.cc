#include "output/rtf_to_html.h"

#include "output/html/html_converter.h"

namespace tenora {
namespace {

// Blanks, breaks and the zero byte that the classic control leaves at the end of a file.
constexpr std::string_view kAround("\0 \r\n", 4);

std::string_view WithoutOuterBraces(std::string_view rtf) {
  const std::size_t first = rtf.find_first_not_of(kAround);
  if (first == std::string_view::npos) return {};
  rtf = rtf.substr(first, rtf.find_last_not_of(kAround) - first + 1);
  if (rtf.size() >= 2 && rtf.front() == '{' && rtf.back() == '}')
    rtf = rtf.substr(1, rtf.size() - 2);
  return rtf;
}

}  // namespace

std::string RtfToHtml(std::string_view rtf, std::string_view options) {
  std::string input(WithoutOuterBraces(rtf));
  const html::Head head = html::TakeHead(input);
  return html::Converter(html::ReadOptions(options), head).Convert(input);
}

}  // namespace tenora
