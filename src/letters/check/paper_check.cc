#include "letters/check/paper_check.h"

#include <functional>
#include <string>
#include <string_view>

#include "platform/printing/not_on_paper.h"

namespace tenora {
namespace {

// Where the group ends that holds a position; a brace in a picture's data would be no hexadecimal
// digit.
std::size_t EndOfGroup(std::string_view source, std::size_t at) {
  for (int depth = 1; (at = source.find_first_of("{}", at)) != std::string_view::npos; ++at) {
    depth += source[at] == '{' ? 1 : -1;
    if (depth == 0) return at;
  }
  return source.size();
}

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
      add(source.substr(at, end - at));
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
