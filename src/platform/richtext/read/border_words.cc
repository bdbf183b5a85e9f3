#include "platform/richtext/read/border_words.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "platform/richtext/border_kinds.h"

namespace tenora::richtext {
namespace {

using Handler = void (*)(Border&, const Token&, const ColourTable&);
using Words = std::unordered_map<std::string_view, Handler>;

constexpr int kWidest = 255;      // twips
constexpr int kMostSpace = 1440;  // twips between a border and its text

void Remove(Border& border, const Token&, const ColourTable&) { border = Border(); }

const Words& BorderWords() {
  static const Words words{
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
  return words;
}

}  // namespace

bool IsBorderWord(std::string_view name) {
  return name.starts_with("br") && (BorderWords().contains(name) || BorderKindOf(name));
}

void ApplyBorderWord(const Token& word, const ColourTable& colours, Border* border) {
  const auto found = BorderWords().find(word.text);
  if (found != BorderWords().end()) return found->second(*border, word, colours);
  const std::optional<Border::Kind> kind = BorderKindOf(word.text);
  if (!kind) return;
  border->present = true;
  border->kind = *kind;
}

}  // namespace tenora::richtext
