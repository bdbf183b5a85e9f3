// Lists: the list tables of modern word processors and the \pn groups of the classic form, both
// read as Bullet.
#pragma once

#include <array>
#include <map>
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
    Bullet bullet;
    int left_indent = 0, first_indent = 0;
  };

  void BeginList();
  void EndList();
  void BeginLevel();
  void BeginOverride();
  void EndOverride();
  void Word(const Token& token);
  // The template of a level's text: its length, then characters, those below 9 standing for the
  // numbers of the levels.
  void LevelText(char32_t character);

  // Counts one more paragraph of list \lsN on a level. `follows` is true when the paragraph before
  // it was of the same list and level: both then belong to one run of numbers.
  Item Next(int list, int level, bool follows);

 private:
  struct Level {
    Bullet::Kind kind = Bullet::Kind::kDecimal;
    int start = 1;
    std::u32string text;
    int left_indent = 0, first_indent = 0;
    bool has_length = false;
  };
  struct List {
    int id = 0;
    std::array<Level, kLevels> levels;
    int level_count = 0;
    std::array<int, kLevels> counts{};  // 0: not begun
    std::array<int, kLevels> run_starts{};
  };

  static std::string NumberText(const List& list, int level);

  std::map<int, List> lists_;     // by id
  std::map<int, int> overrides_;  // \ls to id
  List list_;                     // being read
  int override_list_ = 0, override_id_ = 0;
};

}  // namespace tenora::richtext
