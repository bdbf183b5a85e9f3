// A strict reader for the converter's HTML: every tag known, every tag closed in its place.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tenora::test {

// What is wrong with the tags, with the position; empty when they nest. Text must carry its angle
// brackets as entities.
inline std::string NestingFault(std::string_view html) {
  constexpr std::array<std::string_view, 11> kNames = {"b",    "i",  "u",     "s",  "sup", "sub",
                                                       "font", "li", "table", "tr", "td"};
  std::vector<std::string_view> open;
  for (std::size_t at = 0; at < html.size();) {
    at = html.find_first_of("<>", at);
    if (at == std::string_view::npos) break;
    const auto fault = [&](const std::string& what) {
      return what + " at " + std::to_string(at) + ": " + std::string(html.substr(at, 60));
    };
    if (html[at] == '>') return fault("stray bracket");
    const std::size_t end = html.find('>', at);
    if (end == std::string_view::npos) return fault("open tag");
    const std::string_view tag = html.substr(at + 1, end - at - 1);
    const bool closes = tag.starts_with('/');
    const std::string_view name = closes ? tag.substr(1) : tag.substr(0, tag.find(' '));
    if (tag == "br" || tag == "Br") {
    } else if (std::ranges::find(kNames, name) == kNames.end()) {
      return fault("unknown tag");
    } else if (!closes) {
      if (std::ranges::find(open, name) != open.end()) return fault("tag inside itself");
      open.push_back(name);
    } else if (open.empty() || open.back() != name) {
      return fault("misplaced closing tag");
    } else {
      open.pop_back();
    }
    at = end + 1;
  }
  return open.empty() ? std::string() : "never closed: " + std::string(open.back());
}

}  // namespace tenora::test
