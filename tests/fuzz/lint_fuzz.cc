// Any bytes are a template that can be looked at, and every finding is within its text.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "letters/template_lint.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tenora;
  const std::string source(reinterpret_cast<const char*>(data), size);
  RichTextBox letter;
  letter.SetTextRTF(richtext::WriteRtf(richtext::ReadRtf(source)));
  const int length = static_cast<int>(richtext::PositionText(letter.Document().blocks).size());
  const Date today = Date::FromCalendar(2026, 11, 21);
  for (const TemplateKind kind :
       {TemplateKind::kTenant, TemplateKind::kOwner, TemplateKind::kCheque}) {
    for (const TemplateFinding& finding : LintTemplate(letter, kind, today)) {
      const bool inside = finding.position >= -1 && finding.length >= 0 &&
                          finding.position + finding.length <= length;
      if (inside && IsValidUtf8(finding.Text())) continue;
      std::fprintf(stderr, "%d+%d of %d: %s\n", finding.position, finding.length, length,
                   finding.Text().c_str());
      std::abort();
    }
  }
  return 0;
}
