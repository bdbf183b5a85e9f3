#include "ui/window/letter/showable_letter.h"

#include <cstddef>

#include "platform/richtext/document_text.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

// In characters. Beyond these a window does not answer for minutes, or needs more than half a
// gigabyte: breaking lines takes Qt time that grows with the square of a word's length.
constexpr std::ptrdiff_t kLongestWord = 100'000, kLongestParagraph = 5'000'000;

}  // namespace

void RequireShowable(const RichTextBox& letter, const std::string& name) {
  const auto refuse = [&](const char* what, std::ptrdiff_t most) {
    throw StandardError(error_number::kPathFileAccess,
                        name + " has a " + what + " of more than " + std::to_string(most) +
                            " characters, which a window cannot show; divide it in a word "
                            "processor. Letters can be generated from it as it is.");
  };
  const auto visit = [&](const richtext::Paragraph& paragraph, richtext::ParagraphEnd) {
    std::ptrdiff_t length = 0, word = 0;
    for (const richtext::Run& run : paragraph.runs) {
      for (const char c : run.text) {
        if ((static_cast<unsigned char>(c) & 0xC0U) == 0x80) continue;
        ++length;
        word = c >= 0 && c <= ' ' ? 0 : word + 1;
        if (word > kLongestWord) refuse("word", kLongestWord);
      }
    }
    if (length > kLongestParagraph) refuse("paragraph", kLongestParagraph);
  };
  richtext::ForEachParagraph(letter.Document().blocks, visit);
}

}  // namespace tenora
