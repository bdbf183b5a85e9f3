#include "platform/access/sort_order.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "platform/access/format/sort_codes.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr std::uint32_t kGeneralLegacyNumber = 0x00000409;
constexpr std::uint32_t kGeneralNumber = 0x01000409;
constexpr std::uint32_t kVersionMask = 0xFF000000;

constexpr char kNoAccent = 2;
constexpr char kSectionEnd = 1;
constexpr char kTextEnd = 0;
constexpr unsigned kMarkPositionFlag = 0x8000;
constexpr unsigned kMarkPositionStart = 7;
constexpr unsigned kMarkPositionStep = 4;
constexpr char kMarkKind = 6;
constexpr std::string_view kFullKana{"\xFF\2\x80\xFF\x80"}, kSmallKana{"\xA0\xFF\2\x80\xFF\x80"};
constexpr std::size_t kMostCharacters = 255;

constexpr char32_t kPlaneSize = 0x10000;
// The end of the Latin, Greek and Cyrillic letters, their accents and the signs among them. How
// these sort beside one another has been seen of every single one.
constexpr char32_t kCommonEnd = 0x530;
// More letters and signs of the same kinds, which sort beside others in the same way: the letters
// with several accents, punctuation, currencies, arrows and the signs of mathematics; ligatures.
constexpr char32_t kMoreLatin = 0x1E00, kMoreLatinEnd = 0x2300, kLigatures = 0xFB00,
                   kLigaturesEnd = 0xFB07;

std::string Named(char32_t character) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "character U+";
  for (int shift = character > 0xFFFFF  ? 20
                   : character > 0xFFFF ? 16
                                        : 12;
       shift >= 0; shift -= 4) {
    text += kDigits[character >> shift & 15];
  }
  return text;
}

int Number(char byte) { return static_cast<unsigned char>(byte); }

bool SortsBesideOthers(char32_t character, const SortCodes& codes) {
  if (character < kCommonEnd) return true;
  const bool more = (character >= kMoreLatin && character < kMoreLatinEnd) ||
                    (character >= kLigatures && character < kLigaturesEnd);
  return more && codes.kind != SortCodes::kCombining;
}

// Whether it is not known how many accents a character counts for: it sorts as several, and has not
// been seen before others.
bool HasUnclearCount(char32_t character, const SortCodes& codes) {
  return character >= kCommonEnd && (codes.accent_count > 1 || codes.weight_size > 2);
}

// The parts of a key as the characters of its text are added one after another.
class KeyParts {
 public:
  // The weights are appended to `key` at once.
  explicit KeyParts(std::string& key) : key_(key) {}

  void Add(const SortCodes& codes) {
    if (codes.kind == SortCodes::kMark) return AddMark(codes.mark);
    if (codes.kind == SortCodes::kCombining) return AddCombining(codes.accents[0]);
    if (codes.kind != SortCodes::kWeights) return;
    key_.append(codes.Weights());
    accents_.append(codes.Accents());
    if (codes.accent_count == 0) accents_ += kNoAccent;
    counted_ += std::max<unsigned>(codes.accent_count, 1);
    if (codes.kana == SortCodes::kFull) kana_.append(kFullKana);
    if (codes.kana == SortCodes::kSmall) kana_.append(kSmallKana);
  }

  // A character whose codes are not known.
  void AddUnknown(char32_t character) {
    key_.append("\xFF\xFF");
    for (int shift = 18; shift >= 0; shift -= 6) {
      key_ += static_cast<char>(0x40 | (character >> shift & 0x3F));
    }
    accents_ += kNoAccent;
    ++counted_;
  }

  void Finish() {
    key_ += kSectionEnd;
    key_.append(accents_, 0, accents_.find_last_not_of(kNoAccent) + 1);
    if (!kana_.empty() || !marks_.empty()) key_.append(2, kSectionEnd).append(kana_);
    if (!marks_.empty()) key_.append(1, kSectionEnd).append(marks_);
    key_ += kTextEnd;
  }

 private:
  void AddMark(char mark) {
    const unsigned position =
        kMarkPositionFlag | (kMarkPositionStart + kMarkPositionStep * counted_);
    marks_ += static_cast<char>(position >> 8);
    marks_ += static_cast<char>(position);
    marks_ += kMarkKind;
    marks_ += mark;
  }

  void AddCombining(char accent) {
    if (accents_.empty()) {
      accents_ += accent;
    } else {
      accents_.back() = static_cast<char>(Number(accents_.back()) + Number(accent));
    }
  }

  std::string& key_;
  std::string accents_, kana_, marks_;
  unsigned counted_ = 0;
};

std::string_view WithoutTrailingSpaces(std::string_view text) {
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

}  // namespace

const SortOrder* SortOrder::Find(std::uint32_t number) {
  if (number == kGeneralLegacyNumber) {
    static const SortOrder legacy(kLegacySortCodes);
    return &legacy;
  }
  if (number != kGeneralNumber) return nullptr;
  static const SortOrder general(kGeneralSortCodes);
  return &general;
}

const SortOrder& SortOrder::Closest(std::uint32_t number) {
  return *Find((number & kVersionMask) == 0 ? kGeneralLegacyNumber : kGeneralNumber);
}

SortOrder::SortOrder(std::span<const SortCodeRow> rows)
    : rows_(rows), common_(kCommonEnd), blocks_(std::make_unique<Block[]>(rows.size())) {
  for (const SortCodeRow& row : rows_) {
    if (row.first >= kCommonEnd) break;
    ReadSortCodes(row, std::span(common_).subspan(row.first));
  }
}

SortOrder::~SortOrder() = default;

const SortCodes& SortOrder::CodesOf(char32_t character) const {
  static constexpr SortCodes kUnknown;
  if (character < kCommonEnd) return common_[character];
  if (character >= kPlaneSize) return kUnknown;
  const auto next = std::ranges::upper_bound(rows_, character, {}, &SortCodeRow::first);
  const SortCodeRow& row = *std::prev(next);  // the first starts before kCommonEnd
  Block& block = blocks_[static_cast<std::size_t>(&row - rows_.data())];
  std::call_once(block.read, [&] {
    block.codes.resize((next == rows_.end() ? kPlaneSize : next->first) - row.first);
    ReadSortCodes(row, block.codes);
  });
  return block.codes[character - row.first];
}

void SortOrder::RequireKnown(std::string_view text) const {
  std::size_t characters = 0;
  char32_t first = 0, unclear = 0, leading = 0;
  bool weights = false;
  int accent = 0;  // the last, to which combining characters add
  const auto refuse = [](char32_t character, char32_t after) {
    throw NotEncodable("the sort codes of " + Named(character) + " after " + Named(after) +
                       " are not known");
  };
  while (!text.empty()) {
    const char32_t character = TakeCodePoint(text);
    if (++characters > kMostCharacters) {
      throw NotEncodable("a text in an index may not be longer than 255 characters");
    }
    const SortCodes& codes = CodesOf(character);
    if (codes.kind == SortCodes::kUnknown) {
      throw NotEncodable("the sort codes of " + Named(character) + " are not known");
    }
    if (characters == 1) first = character;
    for (const char32_t c : {first, character}) {
      if ((characters > 1 || !text.empty()) && !SortsBesideOthers(c, CodesOf(c))) {
        throw NotEncodable("how " + Named(c) + " sorts beside others is not known");
      }
    }
    const bool mark = codes.kind == SortCodes::kMark;
    if (unclear != 0 && (mark || codes.accent_count > 0)) refuse(character, unclear);
    if (leading != 0 && weights && mark) refuse(character, leading);
    if (codes.kind == SortCodes::kCombining) {
      if (accent == 0) leading = character;
      // Sums wrap around, but one that would end the section has not been seen.
      accent = (accent + Number(codes.accents[0])) % 0x100;
      if (accent < kNoAccent) refuse(character, first);
    } else if (codes.kind == SortCodes::kWeights) {
      weights = true;
      accent = codes.accent_count == 0 ? kNoAccent : Number(codes.Accents().back());
    }
    if (HasUnclearCount(character, codes)) unclear = character;
  }
}

void SortOrder::AppendText(std::string_view text, std::string& key) const {
  RequireKnown(WithoutTrailingSpaces(text));
  AppendComparable(text, key);
}

void SortOrder::AppendComparable(std::string_view text, std::string& key) const {
  text = WithoutTrailingSpaces(text);
  KeyParts parts(key);
  while (!text.empty()) {
    const char32_t character = TakeCodePoint(text);
    const SortCodes& codes = CodesOf(character);
    if (codes.kind == SortCodes::kUnknown) {
      parts.AddUnknown(character);
    } else {
      parts.Add(codes);
    }
  }
  parts.Finish();
}

}  // namespace tenora::access
