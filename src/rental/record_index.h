// Finds the records of a list by a text of theirs, without a search through the list.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tenora {

template <typename Record>
class RecordIndex {
 public:
  explicit RecordIndex(std::string Record::*key) : key_(key) {}

  // To be called before the list is loaded anew.
  void Forget() { indexed_ = nullptr; }

  // The place of the first record with this key (exact); none: the list's size. The list is the one
  // of every call; it is everybody's to change.
  std::size_t First(const std::vector<Record>& records, std::string_view key) {
    const std::size_t place = Listed(records, key);
    if (place < records.size() && records[place].*key_ == key) return place;
    // A key that is not where it was may be elsewhere.
    const auto found = std::ranges::find(records, key, key_);
    return static_cast<std::size_t>(found - records.begin());
  }

 private:
  std::size_t Listed(const std::vector<Record>& records, std::string_view key) {
    if (indexed_ != records.data() || count_ != records.size()) {
      places_.clear();
      for (std::size_t i = 0; i < records.size(); ++i) places_.emplace(records[i].*key_, i);
      indexed_ = records.data();
      count_ = records.size();
    }
    const auto place = places_.find(std::string(key));
    return place == places_.end() ? records.size() : place->second;
  }

  std::string Record::*key_;
  // The first record with each key, by its place in the list as it was then.
  std::unordered_map<std::string, std::size_t> places_;
  const Record* indexed_ = nullptr;
  std::size_t count_ = 0;
};

}  // namespace tenora
