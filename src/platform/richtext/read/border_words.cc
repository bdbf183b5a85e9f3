#include "platform/richtext/read/border_words.h"

#include <algorithm>
#include <unordered_map>

namespace tenora::richtext {
namespace {

using Handler = void (*)(Border&, const Token&, const ColourTable&);
using Words = std::unordered_map<std::string_view, Handler>;

constexpr int kWidest = 255;      // twips
constexpr int kMostSpace = 1440;  // twips between a border and its text

template <Border::Kind Kind>
void Draw(Border& border, const Token&, const ColourTable&) {
  border.present = true;
  border.kind = Kind;
}

void Remove(Border& border, const Token&, const ColourTable&) { border = Border(); }

const Words& BorderWords() {
  using Kind = Border::Kind;
  static const Words words = [] {
    Words all{
        {"brdrnone", Remove},
        {"brdrnil", Remove},
        // Word processors name the invisible borders of a letterhead's table so.
        {"brdrtbl", Remove},
        {"brdrw", [](Border& b, const Token& word,
                     const ColourTable&) { b.width = std::clamp(word.param, 0, kWidest); }},
        {"brsp", [](Border& b, const Token& word,
                    const ColourTable&) { b.space = std::clamp(word.param, 0, kMostSpace); }},
        {"brdrcf", [](Border& b, const Token& word,
                      const ColourTable& colours) { b.colour = colours.Position(word.param); }},
    };
    for (const std::string_view word :
         {"brdrs", "brdrth", "brdrsh", "brdrhair", "brdrwavy", "brdrinset", "brdroutset",
          "brdremboss", "brdrengrave", "brdrframe", "brdrtnthsg", "brdrthtnsg", "brdrtnthtnsg",
          "brdrtnthmg", "brdrthtnmg", "brdrtnthtnmg", "brdrtnthlg", "brdrthtnlg", "brdrtnthtnlg"})
      all.emplace(word, Draw<Kind::kSingle>);
    for (const std::string_view word : {"brdrdb", "brdrtriple", "brdrwavydb"})
      all.emplace(word, Draw<Kind::kDouble>);
    all.emplace("brdrdot", Draw<Kind::kDotted>);
    for (const std::string_view word :
         {"brdrdash", "brdrdashsm", "brdrdashd", "brdrdashdd", "brdrdashdotstr"})
      all.emplace(word, Draw<Kind::kDashed>);
    return all;
  }();
  return words;
}

}  // namespace

bool IsBorderWord(std::string_view name) {
  return name.starts_with("br") && BorderWords().contains(name);
}

void ApplyBorderWord(const Token& word, const ColourTable& colours, Border* border) {
  const auto found = BorderWords().find(word.text);
  if (found != BorderWords().end()) found->second(*border, word, colours);
}

}  // namespace tenora::richtext
