// What control words mean in text. Letters repeat few words very often: what a word is, which takes
// a look into several tables, is remembered for the next time.
#pragma once

#include <array>
#include <string_view>

namespace tenora::richtext {

struct WordRole {
  enum class Kind {
    kOther,
    kInvisible,
    kNeverText,
    kCharacter,  // stands for one
    kFormat,     // of characters
    kBreak,      // ends a paragraph, cell, row or section, or is an object of its own
  };
  std::string_view name;
  Kind kind = Kind::kOther;
  char32_t character = 0;  // of kCharacter
  // Words of both exist; which is meant depends on the words before.
  bool of_row = false, of_paragraph = false;
};

class WordRoles {
 public:
  // The name must outlive this.
  const WordRole& Of(std::string_view name);

 private:
  std::array<WordRole, 256> known_;  // by a hash of the name, the last one that had it
};

}  // namespace tenora::richtext
