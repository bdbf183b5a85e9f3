#include "platform/access/check/key_hashes.h"

#include <algorithm>
#include <functional>

namespace tenora::access {
namespace {

constexpr std::size_t kFewHashes = 1024;

std::uint64_t HashOf(std::string_view key) { return std::hash<std::string_view>()(key); }

}  // namespace

KeyHashes::KeyHashes(std::size_t most) : most_(std::max<std::size_t>(most, 2)), bounded_(true) {}

KeyHashes::KeyHashes(std::uint64_t part, std::uint64_t parts)
    : part_(part), parts_(parts), most_(kFewHashes), bounded_(false) {}

bool KeyHashes::Concerns(std::string_view key) const { return HashOf(key) % parts_ == part_; }

void KeyHashes::Add(std::string_view key) {
  const std::uint64_t hash = HashOf(key);
  if (hash % parts_ != part_) return;
  if (hashes_.size() == hashes_.capacity()) {
    hashes_.reserve(std::min(most_, std::max(kFewHashes, 2 * hashes_.size())));
  }
  hashes_.push_back(hash);
  if (hashes_.size() < most_) return;
  Sort();
  // Sorting is worth while only if it makes room for a good number.
  const std::size_t full = most_ - most_ / 4;
  if (!bounded_ && hashes_.size() > full) most_ *= 2;
  while (bounded_ && hashes_.size() > full) Reduce(2 * parts_);
}

void KeyHashes::Reduce(std::uint64_t parts) {
  if (parts <= parts_) return;
  parts_ = parts;
  std::erase_if(hashes_, [&](std::uint64_t hash) { return hash % parts_ != part_; });
}

void KeyHashes::Sort() {
  std::ranges::sort(hashes_);
  hashes_.erase(std::unique(hashes_.begin(), hashes_.end()), hashes_.end());
}

bool KeyHashes::Has(std::string_view key) const {
  return std::ranges::binary_search(hashes_, HashOf(key));
}

bool KeyHashes::HasAllOf(const KeyHashes& other) const {
  return std::ranges::includes(hashes_, other.hashes_);
}

}  // namespace tenora::access
