#include "output/rtf_to_html.h"

#include "output/html/document_html.h"
#include "output/html/html_converter.h"
#include "platform/richtext/rtf_reader.h"

namespace tenora {
namespace {

// Blanks, breaks and the zero byte that the classic control leaves at the end of a file.
constexpr std::string_view kAround("\0 \t\r\n", 5);
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view WithoutOuterBraces(std::string_view rtf) {
  if (rtf.starts_with(kByteOrderMark)) rtf.remove_prefix(kByteOrderMark.size());
  const std::size_t first = rtf.find_first_not_of(kAround);
  if (first == std::string_view::npos) return {};
  rtf = rtf.substr(first, rtf.find_last_not_of(kAround) - first + 1);
  if (rtf.size() >= 2 && rtf.front() == '{' && rtf.back() == '}')
    rtf = rtf.substr(1, rtf.size() - 2);
  return rtf;
}

}  // namespace

std::string RtfToHtml(std::string_view rtf, std::string_view options,
                      const PictureSource& pictures) {
  const html::Options read = html::ReadOptions(options);
  if (options.find("+D") != std::string_view::npos) {
    return html::DocumentHtml(richtext::ReadRtf(rtf),
                              {read.line_terminator, read.font_faces, read.unicode_references},
                              pictures);
  }
  std::string input(WithoutOuterBraces(rtf));
  const html::Head head = html::TakeHead(input);
  return html::Converter(read, head).Convert(input);
}

}  // namespace tenora
