#include "platform/query/values/collation.h"

#include <algorithm>
#include <string>

#include "platform/query/values/sqlite_value.h"

namespace tenora::query {
namespace {

constexpr std::uint32_t kBefore2010 = 0x00000409;
constexpr char kFirstPrintable = 0x20, kLastPrintable = 0x7E;
// What follows the weights in the key of a text without accents and marks.
constexpr std::string_view kEndOfPlainKey("\1\0", 2);

std::string_view WithoutTrailingBlanks(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

int Sign(int number) { return (number > 0) - (number < 0); }

int Collate(void* collation, int left_size, const void* left, int right_size, const void* right) {
  return static_cast<const Collation*>(collation)->Compare(
      {static_cast<const char*>(left), static_cast<std::size_t>(left_size)},
      {static_cast<const char*>(right), static_cast<std::size_t>(right_size)});
}

class Hasher {
 public:
  void Add(char byte) { hash_ = (hash_ ^ static_cast<std::uint8_t>(byte)) * 0x9E3779B97F4A7C15; }
  std::uint64_t Finish() const { return hash_ ^ hash_ >> 32; }

 private:
  std::uint64_t hash_ = 0;
};

}  // namespace

const Collation& Collation::Of(std::uint32_t sort_order) {
  const access::SortOrder& order = access::SortOrder::Closest(sort_order);
  if (&order == access::SortOrder::Find(kBefore2010)) {
    static const Collation before(order);
    return before;
  }
  static const Collation since(order);
  return since;
}

Collation::Collation(const access::SortOrder& order) : order_(order) {
  const auto weights = [this](std::string_view text) {
    std::string key;
    order_.AppendComparable(text, key);
    return key.ends_with(kEndOfPlainKey) ? key.substr(0, key.size() - kEndOfPlainKey.size()) : "";
  };
  // In front of another character, since a blank at the end has no weight.
  const std::size_t other = weights("a").size();
  for (char c = kFirstPrintable; c <= kLastPrintable; ++c) {
    const std::string own = weights(std::string{c, 'a'});
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(own[i]); };
    std::uint16_t& weight = ascii_[static_cast<std::size_t>(c)];
    if (own.size() == other + 1) weight = static_cast<std::uint16_t>(byte(0) << 8);
    if (own.size() == other + 2) weight = static_cast<std::uint16_t>(byte(0) << 8 | byte(1));
  }
}

std::uint16_t Collation::AsciiWeight(char c) const {
  const auto byte = static_cast<unsigned char>(c);
  return byte < kAsciiSize ? ascii_[byte] : std::uint16_t{0};
}

int Collation::Compare(std::string_view left, std::string_view right) const {
  left = WithoutTrailingBlanks(left);
  right = WithoutTrailingBlanks(right);
  if (left == right) return 0;
  const auto by_keys = [&] {
    std::string left_key, right_key;
    order_.AppendComparable(left, left_key);
    order_.AppendComparable(right, right_key);
    return Sign(left_key.compare(right_key));
  };
  const std::size_t common = std::min(left.size(), right.size());
  // Most texts are ASCII: compare their weights in place and build keys only if that fails.
  for (std::size_t i = 0; i < common; ++i) {
    const std::uint16_t l = AsciiWeight(left[i]), r = AsciiWeight(right[i]);
    if (l == 0 || r == 0) return by_keys();
    if (l != r) return l < r ? -1 : 1;
  }
  const std::string_view rest = left.size() > common ? left.substr(common) : right.substr(common);
  for (const char c : rest)
    if (AsciiWeight(c) == 0) return by_keys();
  if (left.size() == right.size()) return 0;
  return left.size() < right.size() ? -1 : 1;
}

std::uint64_t Collation::Hash(std::string_view text) const {
  text = WithoutTrailingBlanks(text);
  Hasher hasher;
  const bool plain = std::ranges::all_of(text, [this](char c) { return AsciiWeight(c) != 0; });
  if (plain) {
    for (const char c : text) {
      const std::uint16_t weight = AsciiWeight(c);
      hasher.Add(static_cast<char>(weight >> 8));
      if ((weight & 0xFF) != 0) hasher.Add(static_cast<char>(weight));
    }
    for (const char byte : kEndOfPlainKey) hasher.Add(byte);
  } else {
    std::string key;
    order_.AppendComparable(text, key);
    for (const char byte : key) hasher.Add(byte);
  }
  return hasher.Finish();
}

void RegisterCollation(sqlite3* connection, const Collation& collation) {
  RequireDone(sqlite3_create_collation_v2(connection, kCollationName, SQLITE_UTF8,
                                          const_cast<Collation*>(&collation), Collate, nullptr));
}

}  // namespace tenora::query
