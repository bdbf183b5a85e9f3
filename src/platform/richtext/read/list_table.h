// Lists: the list tables of modern word processors and the \pn groups of the classic form, both
// read as Bullet.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>

#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

// The bullet a paragraph shows for a character of a bullet font; letters of Symbol and Wingdings
// become the Unicode characters they draw.
std::string BulletText(std::string_view text);

// A \pn group being read.
class ClassicBullet {
 public:
  void Word(const Token& token);
  void Character(char32_t character, bool before);
  int font_number() const { return font_number_; }
  Bullet Take() const;

 private:
  Bullet bullet_;
  bool none_ = false;
  int font_number_ = -1;
};

// \listtable and \listoverridetable.
class ListTable {
 public:
  static constexpr int kLevels = 9;

  struct Item {
    Bullet bullet;  // its number and its list are to be chosen; kNone for no list
    int number = 0;
    Bullet* last = nullptr;  // what was chosen for the item before of this list and level
  };

  void BeginList();
  void EndList();
  void BeginLevel();
  void BeginOverride();
  void BeginOverrideLevel();
  void EndOverride();
  void Word(const Token& token);
  // The template of a level's text: its length, then characters, those below 9 standing for the
  // numbers of the levels.
  void LevelText(char32_t character);

  // Counts one more paragraph of list \lsN on a level.
  Item Next(int list, int level);

 private:
  struct Level {
    Bullet::Kind kind = Bullet::Kind::kDecimal;
    int start = 1;
    std::u32string text;
    Bullet form;  // what is kept of it as it is
    bool has_length = false;
    bool decimal_outer_numbers = false;  // \levellegal
    bool runs_through = false;           // \levelnorestart
    bool leading_zero = false, ordinal = false;
  };
  static constexpr int kNotBegun = -1;
  struct List {
    List() { counts.fill(kNotBegun); }

    int id = 0;
    std::array<Level, kLevels> levels;
    int level_count = 0;
    std::array<int, kLevels> counts;
    std::array<Bullet, kLevels> last;
  };
  // What \lsN changes of its list. Lists of one id count together, but one with a start of its own
  // begins anew there.
  struct Override {
    int list = 0, id = 0;
    int level_count = 0;
    std::array<std::optional<Level>, kLevels> levels;
    std::array<std::optional<int>, kLevels> starts;
    std::array<bool, kLevels> begun{};
    bool starts_anew = false;  // of the level being read
  };

  static int Start(const List& list, const Override& change, std::size_t level);
  static const Level& LevelOf(const List& list, const Override& change, std::size_t level);
  static void Count(List* list, Override* change, std::size_t level);
  static void SetText(const List& list, const Override& change, std::size_t level, Bullet* bullet);

  std::map<int, List> lists_;          // by id
  std::map<int, Override> overrides_;  // by \ls
  List list_;                          // being read
  Override override_;                  // being read
  Level* level_ = nullptr;             // being read, of one of the two
};

}  // namespace tenora::richtext
