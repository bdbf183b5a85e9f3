// Hashes of keys, each once. When there are more than fit, those of a part of all keys, the same
// part for everybody who knows its number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tenora::access {

class KeyHashes {
 public:
  // Keeps at most that many hashes, and of more of them an ever smaller part.
  explicit KeyHashes(std::size_t most);
  // Keeps those of one part of several, a power of two.
  KeyHashes(std::uint64_t part, std::uint64_t parts);

  void Add(std::string_view key);
  // Keeps part 0 of so many, if that is less than what is kept now.
  void Reduce(std::uint64_t parts);
  std::uint64_t parts() const { return parts_; }
  // To be called after the last Add and before the next two.
  void Sort();
  // Also true, once in 2^64 times, for a key that was never added.
  bool Has(std::string_view key) const;
  bool HasAllOf(const KeyHashes& other) const;
  // Whether the hash of the key is of the part that is kept.
  bool Concerns(std::string_view key) const;

 private:
  std::uint64_t part_ = 0, parts_ = 1;
  std::size_t most_ = 0;  // before hashes are sorted and repeated ones go
  bool bounded_;
  std::vector<std::uint64_t> hashes_;
};

}  // namespace tenora::access
