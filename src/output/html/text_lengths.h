// How much of a text has which font and size.
#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

namespace tenora::html {

class TextLengths {
 public:
  using Format = std::pair<int, int>;  // font and half-points

  void Add(Format format, std::size_t length) {
    if (length == 0) return;
    all_ += length;
    // Runs that follow each other often have the same, and most paragraphs have one.
    if (format == last_) {
      last_length_ += length;
      return;
    }
    if (last_length_ > 0) others_[last_] += last_length_;
    last_ = format;
    last_length_ = length;
  }

  std::size_t all() const { return all_; }
  bool empty() const { return all_ == 0; }

  // What most of the text has; of two that are as long, the lower one.
  Format Most() const {
    if (others_.empty()) return last_;
    auto lengths = others_;
    lengths[last_] += last_length_;
    return std::ranges::max_element(lengths, {}, [](const auto& entry) { return entry.second; })
        ->first;
  }

 private:
  std::map<Format, std::size_t> others_;
  Format last_;
  std::size_t last_length_ = 0;  // of the last runs, not in others_ yet
  std::size_t all_ = 0;
};

}  // namespace tenora::html
