#include "letters/check/paper_check.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/printing/not_on_paper.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Where the group ends that holds a position. A picture's data, which can be megabytes, has no
// braces.
std::size_t EndOfGroup(std::string_view source, std::size_t at) {
  for (std::ptrdiff_t depth = 1;;) {
    const std::size_t close = source.find('}', at);
    if (close == std::string_view::npos) return source.size();
    depth += std::ranges::count(source.substr(at, close - at), '{') - 1;
    if (depth == 0) return close;
    at = close + 1;
  }
}

// Of a picture's source; with its length, these bytes tell it from others.
constexpr std::size_t kTellingStart = 1024, kTellingEnd = 64;

// A number for the pictures and the carried objects of a source, 0 without any. Texts inside are
// not looked at, since a merge changes them.
std::size_t IdentityOf(std::string_view source) {
  constexpr std::string_view kWords[] = {"\\pict",     "\\object", "\\shp",
                                         "\\footnote", "\\do",     "\\mmath"};
  std::size_t identity = 0;
  const auto add = [&](std::string_view part) {
    identity = identity * 31 + std::hash<std::string_view>()(part);
  };
  for (std::size_t at = source.find('\\'); at != std::string_view::npos;
       at = source.find('\\', at + 1)) {
    const std::string_view rest = source.substr(at);
    for (const std::string_view word : kWords) {
      if (!rest.starts_with(word)) continue;
      if (const char next = rest.size() > word.size() ? rest[word.size()] : '}';
          next >= 'a' && next <= 'z') {
        continue;
      }
      add(word);
      if (word != kWords[0]) continue;
      const std::size_t end = EndOfGroup(source, at);
      const std::string_view picture = source.substr(at, end - at);
      add(picture.substr(0, kTellingStart));
      add(picture.substr(picture.size() - std::min(picture.size(), kTellingEnd)));
      identity += picture.size();
      at = end - 1;
    }
  }
  return identity;
}

// The text that a source writes as "\\u" and the number of a UTF-16 unit each.
std::string EscapedText(std::string_view source) {
  constexpr std::string_view kEscape = "\\u";
  std::u16string units;
  for (std::size_t at = source.find(kEscape); at != std::string_view::npos;
       at = source.find(kEscape, at + 1)) {
    int unit = 0;
    const char* const number = source.data() + at + kEscape.size();
    const auto read = std::from_chars(number, source.data() + source.size(), unit);
    // Numbers above 32767 may be written as negative ones.
    if (read.ec == std::errc() && unit >= -0x8000 && unit <= 0xFFFF) {
      units += static_cast<char16_t>(unit);
    }
  }
  return FromUtf16(units);
}

constexpr std::size_t kMostNamed = 20;

}  // namespace

std::vector<LetterFinding> PaperCheck::Findings(const RichTextBox& letter) {
  std::vector<LetterFinding> findings = PictureFindings(letter);
  const std::string escaped = EscapedText(letter.TextRTF());
  std::u32string missing;
  for (std::string_view rest = escaped; !rest.empty() && missing.size() < kMostNamed;) {
    const char32_t character = TakeCodePoint(rest);
    if (missing.find(character) == std::u32string::npos && !fonts_.Shows(character)) {
      missing += character;
    }
  }
  if (missing.empty()) return findings;
  std::string named;
  for (const char32_t character : missing) AppendUtf8(named, character);
  findings.push_back({FindingWeight::kWarning, "",
                      "no installed font has \"" + named +
                          "\", which will appear on paper as empty boxes; install a font for it"});
  return findings;
}

const std::vector<LetterFinding>& PaperCheck::PictureFindings(const RichTextBox& letter) {
  const std::size_t identity = IdentityOf(letter.TextRTF());
  if (known_ == identity) return findings_;
  known_ = identity;
  findings_.clear();
  if (identity == 0) return findings_;
  for (const std::string& words : printing::NotOnPaper(letter.Document())) {
    findings_.push_back({FindingWeight::kWarning, "",
                         words + " will not appear on paper; put it into the template as a PNG or "
                                 "JPEG picture, or as text"});
  }
  return findings_;
}

}  // namespace tenora
