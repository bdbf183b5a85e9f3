// A letter of any bytes becomes HTML that is safe to send: tags nest, attributes hold what they
// should, links lead to the web or to mail. Its plain text is UTF-8.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "output/html/document_html.h"
#include "output/html/document_plain_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/runtime/text.h"
#include "support/document_html_check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tenora;
  const std::string_view rtf(reinterpret_cast<const char*>(data), size);
  const richtext::Document document = richtext::ReadRtf(rtf);
  const std::string html = html::DocumentHtml(
      document, {.line_end = "\r\n"}, [](const richtext::Picture&) { return "cid:picture"; });
  const std::string fault = test::DocumentHtmlCheck::Fault(html);
  if (!fault.empty() || !IsValidUtf8(html::DocumentPlainText(document))) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
  }
  return 0;
}
