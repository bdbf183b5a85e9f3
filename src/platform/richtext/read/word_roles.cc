#include "platform/richtext/read/word_roles.h"

#include <algorithm>
#include <cstddef>

#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/read/character_words.h"
#include "platform/richtext/read/destinations.h"
#include "platform/richtext/read/paragraph_words.h"
#include "platform/richtext/read/row_definition.h"

namespace tenora::richtext {
namespace {

bool IsBreakWord(std::string_view name) {
  static constexpr std::string_view kWords[] = {
      "par",   "cell",    "nestcell", "row",    "nestrow", "sect", "chpgn",
      "chftn", "sectnum", "column",   "chdate", "chtime",  "chatn"};
  return std::ranges::find(kWords, name) != std::end(kWords);
}

WordRole RoleOf(std::string_view name) {
  using Kind = WordRole::Kind;
  WordRole role{name};
  if (IsInvisibleWord(name))
    role.kind = Kind::kInvisible;
  else if (IsNeverText(name))
    role.kind = Kind::kNeverText;
  else if ((role.character = CharacterOfWord(name)) != 0)
    role.kind = Kind::kCharacter;
  else if (IsCharacterWord(name))
    role.kind = Kind::kFormat;
  else if (IsBreakWord(name))
    role.kind = Kind::kBreak;
  role.of_row = RowDefinition::IsRowWord(name);
  role.of_paragraph = IsParagraphWord(name);
  return role;
}

}  // namespace

const WordRole& WordRoles::Of(std::string_view name) {
  const auto at = [name](std::size_t i) -> std::size_t {
    return static_cast<unsigned char>(name[i]);
  };
  const std::size_t hash =
      name.empty() ? 0
                   : name.size() + 7 * at(0) + 31 * at(name.size() / 2) + 73 * at(name.size() - 1);
  WordRole& role = known_[hash % known_.size()];
  if (role.name != name) role = RoleOf(name);
  return role;
}

}  // namespace tenora::richtext
