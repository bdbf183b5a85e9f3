// Any bytes give a document, whose canonical form reads back as the same document, also after an
// edit.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/richtext/document_text.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"

namespace {

using tenora::richtext::Document;

void Require(bool holds, const char* what, const std::string& first, const std::string& second) {
  if (holds) return;
  std::fprintf(stderr, "%s\n--- first\n%s\n--- second\n%s\n", what, first.c_str(), second.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view source(reinterpret_cast<const char*>(data), size);
  const Document document = tenora::richtext::ReadRtf(source);
  const std::string canonical = tenora::richtext::WriteRtf(document);
  const Document again = tenora::richtext::ReadRtf(canonical);
  const std::string twice = tenora::richtext::WriteRtf(again);
  Require(canonical == twice, "the canonical form is not stable", canonical, twice);
  const std::string text = tenora::richtext::PlainText(document.blocks);
  const std::string text_again = tenora::richtext::PlainText(again.blocks);
  Require(text == text_again, "the text changes", text, text_again);

  tenora::RichTextBox box;
  box.SetTextRTF(canonical);
  const int length = static_cast<int>(tenora::richtext::PositionText(again.blocks).size());
  box.Select(length / 3, length / 3);
  box.SetSelText("<<Name>>\r\n\xc4\x81");
  const std::string edited = box.TextRTF();
  const std::string read = tenora::richtext::WriteRtf(tenora::richtext::ReadRtf(edited));
  Require(edited == read, "an edit leaves another form", edited, read);
  return 0;
}
