#include "platform/richtext/read/colour_table.h"

#include <algorithm>

namespace tenora::richtext {

void ColourTable::Word(const Token& token) {
  const auto value = static_cast<std::uint8_t>(std::clamp(token.param, 0, 255));
  if (token.text == "red")
    entry_.red = value;
  else if (token.text == "green")
    entry_.green = value;
  else if (token.text == "blue")
    entry_.blue = value;
  else
    return;
  entry_.automatic = false;
}

void ColourTable::EndEntry() {
  positions_.push_back(Add(std::exchange(entry_, Colour{.automatic = true})));
}

int ColourTable::Position(int number) const {
  const auto index = static_cast<std::size_t>(number);
  return number >= 0 && index < positions_.size() ? positions_[index] : 0;
}

int ColourTable::Add(Colour colour) {
  if (colour.automatic) return 0;
  const std::uint32_t key = static_cast<std::uint32_t>(colour.red) << 16 |
                            static_cast<std::uint32_t>(colour.green) << 8 | colour.blue;
  const auto [entry, added] = known_.try_emplace(key, static_cast<int>(colours_.size()));
  if (added) colours_.push_back(colour);
  return entry->second;
}

}  // namespace tenora::richtext
