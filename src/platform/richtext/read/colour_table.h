// The colour table while a document is read. Equal colours share one position, so that runs that
// look alike are alike.
#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class ColourTable {
 public:
  ColourTable() : colours_{Colour{.automatic = true}} {}

  // The content of the \colortbl group.
  void Word(const Token& token);
  void EndEntry();

  // Position of the colour with this number in the source; an unknown number is automatic.
  int Position(int number) const;
  int Add(Colour colour);
  // The colour at a position that this table gave.
  const Colour& At(int position) const { return colours_[static_cast<std::size_t>(position)]; }
  std::vector<Colour> Take() { return std::move(colours_); }

 private:
  std::vector<Colour> colours_;
  std::vector<int> positions_;  // by number
  std::map<std::uint32_t, int> known_;
  Colour entry_{.automatic = true};
};

}  // namespace tenora::richtext
