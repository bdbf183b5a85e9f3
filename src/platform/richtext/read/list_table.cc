#include "platform/richtext/read/list_table.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "platform/richtext/characters/special_characters.h"
#include "platform/richtext/list_mark.h"
#include "platform/richtext/write/format_writer.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::ptrdiff_t kLongestText = 64;  // characters
constexpr int kLargestNumber = 32767;
constexpr int kLargestHalfPoints = 3276;
constexpr int kLeadingZero = 22, kOrdinal = 5;  // of \levelnfc

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

const char* OrdinalEnding(int number) {
  if (number / 10 % 10 == 1) return "th";
  const int last = number % 10;
  return last == 1 ? "st" : last == 2 ? "nd" : last == 3 ? "rd" : "th";
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

Bullet::Gap GapOf(int follow) {
  return follow == 1 ? Bullet::Gap::kSpace : follow == 2 ? Bullet::Gap::kNone : Bullet::Gap::kTab;
}

// Words of a mark's own character format, which \pn groups write with a prefix. Fonts and colours
// are positions.
void TakeMarkFormat(const Token& token, std::string_view prefix, Bullet* bullet) {
  if (!token.text.starts_with(prefix)) return;
  const std::string_view word = token.text.substr(prefix.size());
  if (word == "b")
    bullet->bold = token.On();
  else if (word == "i")
    bullet->italic = token.On();
  else if (word == "fs")
    bullet->half_points = std::clamp(token.param, 0, kLargestHalfPoints);
  else if (word == "cf")
    bullet->colour = token.param;
  else if (word == "f")
    bullet->font = token.param;
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
  else if (token.text == kListWord)
    bullet_.list = std::clamp(token.param, 0, kLargestNumber);
  else if (token.text == kListGapWord)
    bullet_.gap = GapOf(token.param);
  else if (token.text == "pnqr")
    bullet_.alignment = Alignment::kRight;
  else if (token.text == "pnqc")
    bullet_.alignment = Alignment::kCentre;
  else if (token.text == "pnf")
    font_number_ = token.param;
  else
    TakeMarkFormat(token, "pn", &bullet_);
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
  bullet.list = 0;
  return bullet;
}

void ListTable::BeginList() {
  list_ = List();
  level_ = nullptr;
}

void ListTable::EndList() {
  const int id = list_.id;
  lists_[id] = std::exchange(list_, List());
  level_ = nullptr;
}

void ListTable::BeginLevel() {
  if (override_.level_count > 0) {
    auto& level = override_.levels[static_cast<std::size_t>(override_.level_count - 1)];
    level = Level();
    level_ = &*level;
    return;
  }
  if (list_.level_count < kLevels) ++list_.level_count;
  level_ = &list_.levels[static_cast<std::size_t>(list_.level_count - 1)];
}

void ListTable::BeginOverride() {
  override_ = Override();
  level_ = nullptr;
}

void ListTable::BeginOverrideLevel() {
  if (override_.level_count < kLevels) ++override_.level_count;
  override_.starts_anew = false;
  level_ = nullptr;
}

void ListTable::EndOverride() {
  const int list = override_.list;
  overrides_[list] = std::exchange(override_, Override());
  level_ = nullptr;
}

void ListTable::Word(const Token& token) {
  if (token.text == "listid") {
    list_.id = override_.id = token.param;
  } else if (token.text == "ls") {
    override_.list = token.param;
  } else if (token.text == "listoverridestartat") {
    override_.starts_anew = true;
  } else if (token.text == "levelstartat") {
    const int start = std::clamp(token.param, 0, kLargestNumber);
    if (level_ != nullptr) level_->start = start;
    if (override_.starts_anew)
      override_.starts[static_cast<std::size_t>(std::max(override_.level_count - 1, 0))] = start;
  } else if (level_ == nullptr) {
    return;
  } else if (token.text == "levelnfc" || token.text == "levelnfcn") {
    level_->kind = KindOfFormat(token.param);
    level_->leading_zero = token.param == kLeadingZero;
    level_->ordinal = token.param == kOrdinal;
  } else if (token.text == "levellegal") {
    level_->decimal_outer_numbers = token.On();
  } else if (token.text == "levelnorestart") {
    level_->runs_through = token.On();
  } else if (token.text == "levelfollow") {
    level_->form.gap = GapOf(token.param);
  } else if (token.text == "leveljc" || token.text == "leveljcn") {
    level_->form.alignment = token.param == 2   ? Alignment::kRight
                             : token.param == 1 ? Alignment::kCentre
                                                : Alignment::kLeft;
  } else {
    TakeMarkFormat(token, "", &level_->form);
  }
}

void ListTable::LevelText(char32_t character) {
  if (level_ == nullptr || !std::exchange(level_->has_length, true)) return;
  if (character != ';' && level_->text.size() < static_cast<std::size_t>(kLongestText))
    level_->text += character;
}

const ListTable::Level& ListTable::LevelOf(const List& list, const Override& change,
                                           std::size_t level) {
  return change.levels[level] ? *change.levels[level] : list.levels[level];
}

int ListTable::Start(const List& list, const Override& change, std::size_t level) {
  return change.starts[level].value_or(LevelOf(list, change, level).start);
}

void ListTable::Count(List* list, Override* change, std::size_t level) {
  // An outer level without an item of its own has its first number.
  for (std::size_t outer = 0; outer < level; ++outer) {
    if (list->counts[outer] == kNotBegun) list->counts[outer] = Start(*list, *change, outer);
  }
  int& count = list->counts[level];
  const bool anew = change->starts[level] && !std::exchange(change->begun[level], true);
  count = anew || count == kNotBegun ? Start(*list, *change, level)
                                     : std::min(count + 1, kLargestNumber);
  for (std::size_t inner = level + 1; inner < kLevels; ++inner) {
    if (!LevelOf(*list, *change, inner).runs_through) list->counts[inner] = kNotBegun;
  }
}

void ListTable::SetText(const List& list, const Override& change, std::size_t level,
                        Bullet* bullet) {
  const Level& own = LevelOf(list, change, level);
  std::string* side = &bullet->before;
  for (const char32_t character : own.text) {
    if (character == static_cast<char32_t>(level)) {
      // Zeros and the endings of ordinals are text, since a Bullet knows no such numbers.
      if (own.leading_zero && list.counts[level] < 10) AppendBounded(side, U'0');
      side = &bullet->after;
      if (own.ordinal) side->append(OrdinalEnding(list.counts[level]));
    } else if (character < static_cast<char32_t>(level)) {
      const Level& outer = LevelOf(list, change, character);
      const auto kind = own.decimal_outer_numbers ? Bullet::Kind::kDecimal : outer.kind;
      for (const char c : FormatNumber(kind, list.counts[character]))
        AppendBounded(side, static_cast<char32_t>(c));
    } else {
      AppendBounded(side, character);
    }
  }
}

ListTable::Item ListTable::Next(int list_number, int level_number) {
  const auto change = overrides_.find(list_number);
  if (change == overrides_.end()) return {};
  const auto found = lists_.find(change->second.id);
  if (found == lists_.end()) return {};
  List& list = found->second;
  if (level_number < 0 || level_number >= std::max(list.level_count, 1)) return {};
  const auto level = static_cast<std::size_t>(level_number);
  const Level& own = LevelOf(list, change->second, level);
  Count(&list, &change->second, level);
  if (own.kind == Bullet::Kind::kNone) return {};

  const bool shows_number =
      !own.has_length || own.text.find(static_cast<char32_t>(level)) != std::u32string::npos;
  if (own.kind != Bullet::Kind::kBullet && !shows_number && own.text.empty()) return {};

  Item item;
  item.number = list.counts[level];
  item.last = &list.last[level];
  item.bullet = own.form;
  item.bullet.kind = shows_number ? own.kind : Bullet::Kind::kBullet;
  SetText(list, change->second, level, &item.bullet);
  if (item.bullet.kind == Bullet::Kind::kBullet) {
    // A bullet has no number.
    item.bullet.before = BulletText(item.bullet.before.empty() ? "•" : item.bullet.before);
    item.bullet.after.clear();
  }
  return item;
}

}  // namespace tenora::richtext
