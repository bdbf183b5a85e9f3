#include "platform/richtext/read/list_table.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/write/list_number.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::ptrdiff_t kLongestText = 64;  // characters
constexpr int kLargestNumber = 32767;

// What the private characters of Symbol and Wingdings draw.
char32_t DrawnBullet(char32_t character) {
  static const std::unordered_map<char32_t, char32_t> kDrawn{
      {0xf0a7, 0x25aa}, {0xf0a8, 0x25fb}, {0xf0d8, 0x27a2}, {0xf0fc, 0x2713}, {0xf076, 0x2756},
      {0xf06c, 0x25cf}, {0xf06e, 0x25a0}, {0xf071, 0x2751}, {0xf075, 0x25c6}, {0xf0e0, 0x2192},
      {0xf0e8, 0x2794}, {0xf0fb, 0x2717}, {0xf0be, 0x2013}, {0xf02d, 0x2013}};
  const auto found = kDrawn.find(character);
  if (found != kDrawn.end()) return found->second;
  if (character == 0xb7) return U'•';
  return character >= 0xf000 && character <= 0xf0ff ? U'•' : character;
}

// Bounds the text around a number.
void AppendBounded(std::string* text, char32_t raw) {
  const char32_t character = CleanCharacter(raw);
  const auto length = std::ranges::count_if(
      *text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; });
  if (character >= 0x20 && length < kLongestText) AppendUtf8(*text, character);
}

Bullet::Kind KindOfFormat(int nfc) {
  switch (nfc) {
    case 1:
      return Bullet::Kind::kUpperRoman;
    case 2:
      return Bullet::Kind::kLowerRoman;
    case 3:
      return Bullet::Kind::kUpperLetter;
    case 4:
      return Bullet::Kind::kLowerLetter;
    case 23:
      return Bullet::Kind::kBullet;
    case 255:
      return Bullet::Kind::kNone;
    default:
      return Bullet::Kind::kDecimal;
  }
}

}  // namespace

std::string BulletText(std::string_view text) {
  std::string drawn;
  while (!text.empty()) AppendUtf8(drawn, DrawnBullet(TakeCodePoint(text)));
  return drawn;
}

void ClassicBullet::Word(const Token& token) {
  using Kind = Bullet::Kind;
  static const std::unordered_map<std::string_view, Kind> kKinds{
      {"pnlvlblt", Kind::kBullet},     {"pndec", Kind::kDecimal},
      {"pncard", Kind::kDecimal},      {"pnord", Kind::kDecimal},
      {"pnlcltr", Kind::kLowerLetter}, {"pnucltr", Kind::kUpperLetter},
      {"pnlcrm", Kind::kLowerRoman},   {"pnucrm", Kind::kUpperRoman}};
  const auto kind = kKinds.find(token.text);
  if (kind != kKinds.end())
    bullet_.kind = kind->second;
  else if (token.text == "pnlvlcont")
    none_ = true;
  else if (token.text == "pnstart")
    bullet_.start = std::clamp(token.param, 0, kLargestNumber);
  else if (token.text == "pnindent")
    bullet_.indent = std::clamp(token.param, 0, kLargestNumber);
  else if (token.text == "pnf")
    font_number_ = token.param;
}

void ClassicBullet::Character(char32_t character, bool before) {
  std::string& text = before ? bullet_.before : bullet_.after;
  AppendBounded(&text, character);
}

Bullet ClassicBullet::Take() const {
  Bullet bullet = bullet_;
  if (none_) return Bullet();
  if (bullet.kind == Bullet::Kind::kNone) bullet.kind = Bullet::Kind::kDecimal;
  if (bullet.kind != Bullet::Kind::kBullet) return bullet;
  bullet.before = BulletText(bullet.before.empty() ? "•" : bullet.before);
  bullet.start = 1;
  return bullet;
}

void ListTable::BeginList() { list_ = List(); }

void ListTable::EndList() {
  const int id = list_.id;
  lists_[id] = std::exchange(list_, List());
}

void ListTable::BeginLevel() {
  if (list_.level_count < kLevels) ++list_.level_count;
}

void ListTable::BeginOverride() { override_list_ = override_id_ = 0; }

void ListTable::EndOverride() { overrides_[override_list_] = override_id_; }

void ListTable::Word(const Token& token) {
  if (token.text == "listid") {
    list_.id = override_id_ = token.param;
    return;
  }
  if (token.text == "ls") {
    override_list_ = token.param;
    return;
  }
  if (list_.level_count == 0) return;
  Level& level = list_.levels[static_cast<std::size_t>(list_.level_count - 1)];
  if (token.text == "levelnfc" || token.text == "levelnfcn")
    level.kind = KindOfFormat(token.param);
  else if (token.text == "levelstartat")
    level.start = std::clamp(token.param, 0, kLargestNumber);
  else if (token.text == "li" || token.text == "lin")
    level.left_indent = std::clamp(token.param, 0, kLargestNumber);
  else if (token.text == "fi")
    level.first_indent = std::clamp(token.param, -kLargestNumber, kLargestNumber);
}

void ListTable::LevelText(char32_t character) {
  if (list_.level_count == 0) return;
  Level& level = list_.levels[static_cast<std::size_t>(list_.level_count - 1)];
  if (!std::exchange(level.has_length, true)) return;
  if (character != ';' && level.text.size() < static_cast<std::size_t>(kLongestText))
    level.text += character;
}

std::string ListTable::NumberText(const List& list, int level) {
  const auto index = static_cast<std::size_t>(level);
  return FormatNumber(list.levels[index].kind, std::max(list.counts[index], 1));
}

ListTable::Item ListTable::Next(int list_number, int level_number, bool follows) {
  Item item;
  const auto override_entry = overrides_.find(list_number);
  const auto found =
      override_entry == overrides_.end() ? lists_.end() : lists_.find(override_entry->second);
  if (found == lists_.end()) return item;
  List& list = found->second;
  if (level_number < 0 || level_number >= std::max(list.level_count, 1)) return item;
  const auto index = static_cast<std::size_t>(level_number);
  const Level& level = list.levels[index];

  int& count = list.counts[index];
  count = count == 0 ? std::max(level.start, 1) : std::min(count + 1, kLargestNumber);
  std::fill(list.counts.begin() + level_number + 1, list.counts.end(), 0);
  if (!follows || list.run_starts[index] == 0) list.run_starts[index] = count;

  item.left_indent = level.left_indent;
  item.first_indent = level.first_indent;
  Bullet& bullet = item.bullet;
  bullet.kind = level.kind;
  std::string* side = &bullet.before;
  for (const char32_t character : level.text) {
    if (character == static_cast<char32_t>(level_number))
      side = &bullet.after;
    else if (character < static_cast<char32_t>(level_number)) {
      for (const char c : NumberText(list, static_cast<int>(character)))
        AppendBounded(side, static_cast<char32_t>(c));
    } else
      AppendBounded(side, character);
  }
  if (bullet.kind == Bullet::Kind::kBullet) {
    // A bullet has no number.
    bullet.before = BulletText(bullet.before.empty() ? "•" : bullet.before);
    bullet.after.clear();
  } else if (bullet.kind == Bullet::Kind::kNone) {
    bullet = Bullet();
  } else {
    bullet.start = list.run_starts[index];
  }
  return item;
}

}  // namespace tenora::richtext
