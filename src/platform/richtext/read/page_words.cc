#include "platform/richtext/read/page_words.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tenora::richtext {
namespace {

constexpr int kLargestParameter = 100'000;

}  // namespace

bool PageWords::Take(const Token& word) {
  static const std::unordered_map<std::string_view, int PageSetup::*> kLengths{
      {"paperw", &PageSetup::width},  {"paperh", &PageSetup::height},
      {"margl", &PageSetup::left},    {"margr", &PageSetup::right},
      {"margt", &PageSetup::top},     {"margb", &PageSetup::bottom},
      {"pgwsxn", &PageSetup::width},  {"pghsxn", &PageSetup::height},
      {"marglsxn", &PageSetup::left}, {"margrsxn", &PageSetup::right},
      {"margtsxn", &PageSetup::top},  {"margbsxn", &PageSetup::bottom}};
  static const std::unordered_set<std::string_view> kOthers{
      "headery", "footery", "titlepg",  "facingp",   "margmirror", "gutter",  "guttersxn", "cols",
      "colsx",   "linex",   "pgnstart", "pgnstarts", "pgnrestart", "vertalc", "vertalb"};
  if (word.text == "sbknone" || word.text == "sbkpage" || word.text == "sectd") {
    continuous_ = word.text == "sbknone";
    return true;
  }
  const auto length = kLengths.find(word.text);
  const bool other = kOthers.contains(word.text);
  const bool landscape = word.text == "landscape" || word.text == "lndscpsxn";
  if (length == kLengths.end() && !other && !landscape && word.text != "deftab") return false;
  if (first_section_ended_) return true;
  if (length != kLengths.end()) {
    page_.*length->second = std::abs(std::clamp(word.param, -kLargestPage, kLargestPage));
  } else if (other) {
    std::string& source = others_[std::string(word.text)];
    source.assign(1, '\\').append(word.text);
    if (word.has_param)
      source += std::to_string(std::clamp(word.param, -kLargestParameter, kLargestParameter));
  } else if (landscape) {
    page_.landscape = word.On();
  } else {
    default_tab_ = std::clamp(word.Or(720), 1, kLargestPage);
  }
  return true;
}

void PageWords::Apply(Document* document) const {
  document->page = page_;
  for (const auto& [word, source] : others_) document->page.other_words += source;
  document->default_tab = default_tab_;
}

}  // namespace tenora::richtext
