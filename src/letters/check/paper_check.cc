#include "letters/check/paper_check.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "platform/printing/not_on_paper.h"

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

}  // namespace

const std::vector<LetterFinding>& PaperCheck::Findings(const RichTextBox& letter) {
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
