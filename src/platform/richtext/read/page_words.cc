#include "platform/richtext/read/page_words.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/richtext/read/border_words.h"

namespace tenora::richtext {
namespace {

constexpr int kLargestParameter = 100'000;
constexpr std::size_t kLongestColumns = 1000;  // of the words of \colno
// Of the sides that a letter does not name, where it names others. Deliberate: a letter that names
// none has none.
constexpr int kUsualSideMargin = 1800, kUsualEndMargin = 1440;

std::string SourceOf(const Token& word) {
  std::string source(1, '\\');
  source += word.text;
  if (word.has_param)
    source += std::to_string(std::clamp(word.param, -kLargestParameter, kLargestParameter));
  return source;
}

std::optional<PageBorders> PresentIn(PageBorders borders) {
  bool any = false;
  for (Border* border : {&borders.top, &borders.left, &borders.bottom, &borders.right}) {
    any = any || border->present;
    if (!border->present) *border = Border();
  }
  if (!any) return std::nullopt;
  return borders;
}

}  // namespace

bool PageWords::Take(const Token& word) {
  static const std::unordered_map<std::string_view, Section::Begin> kBegins{
      {"sbknone", Section::Begin::kContinuous},
      {"sbkcol", Section::Begin::kColumn},
      {"sbkpage", Section::Begin::kPage},
      {"sbkeven", Section::Begin::kEvenPage},
      {"sbkodd", Section::Begin::kOddPage}};
  if (const auto begin = kBegins.find(word.text); begin != kBegins.end()) {
    begin_ = begin->second;
  } else if (word.text == "sectd") {
    begin_ = Section::Begin::kPage;
    // In the head, section words may come before.
    if (section_ == nullptr) return true;
    borders_ = {};
    own_ = {};
    own_landscape_.reset();
    others_.clear();
  } else if (word.text == "landscape") {
    if (section_ == nullptr)
      landscape_ = word.On();
    else
      own_landscape_ = word.On();
  } else if (word.text == "lndscpsxn") {
    own_landscape_ = word.On();
  } else if (word.text == "deftab") {
    if (section_ == nullptr) default_tab_ = std::clamp(word.Or(720), 1, kLargestPage);
  } else {
    return TakeLength(word) || TakeColumn(word) || TakeOther(word);
  }
  return true;
}

bool PageWords::TakeBorder(const Token& word, const ColourTable& colours, bool counts) {
  if (border_ != nullptr && IsBorderWord(word.text)) {
    ApplyBorderWord(word, colours, border_);
    return true;
  }
  border_ = nullptr;
  constexpr std::string_view kPrefix = "pgbrdr";
  if (!word.text.starts_with(kPrefix)) return false;
  PageBorders& borders = counts ? borders_ : ignored_;
  const std::string_view name = word.text.substr(kPrefix.size());
  if (name == "t") border_ = &borders.top;
  if (name == "l") border_ = &borders.left;
  if (name == "b") border_ = &borders.bottom;
  if (name == "r") border_ = &borders.right;
  if (name == "head") borders.around_header = true;
  if (name == "foot") borders.around_footer = true;
  if (name == "opt") {
    using Pages = PageBorders::Pages;
    const int pages = word.param & 7;
    borders.pages = pages == 1 ? Pages::kFirst : pages == 2 ? Pages::kAllButFirst : Pages::kAll;
    borders.from_paper = (word.param & kBordersFromPaper) != 0;
  }
  return true;
}

bool PageWords::TakeLength(const Token& word) {
  static const std::unordered_map<std::string_view, std::optional<int> Lengths::*> kHead{
      {"paperw", &Lengths::width}, {"paperh", &Lengths::height}, {"margl", &Lengths::left},
      {"margr", &Lengths::right},  {"margt", &Lengths::top},     {"margb", &Lengths::bottom}};
  static const std::unordered_map<std::string_view, std::optional<int> Lengths::*> kOwn{
      {"pgwsxn", &Lengths::width},   {"pghsxn", &Lengths::height}, {"marglsxn", &Lengths::left},
      {"margrsxn", &Lengths::right}, {"margtsxn", &Lengths::top},  {"margbsxn", &Lengths::bottom}};
  const int length = std::abs(std::clamp(word.param, -kLargestPage, kLargestPage));
  if (const auto own = kOwn.find(word.text); own != kOwn.end()) {
    own_.*own->second = length;
    return true;
  }
  const auto head = kHead.find(word.text);
  if (head == kHead.end()) return false;
  Lengths& lengths = section_ == nullptr ? head_ : own_;
  lengths.*head->second = length;
  return true;
}

// The words that describe the columns one by one belong together, in their order.
bool PageWords::TakeColumn(const Token& word) {
  if (word.text != "colno" && word.text != "colw" && word.text != "colsr") return false;
  if (word.text == "colno" && word.Or(1) <= 1) others_.erase("colno");
  std::string& source = others_["colno"];
  if (source.size() < kLongestColumns && (word.text == "colno" || !source.empty()))
    source += SourceOf(word);
  if (source.empty()) others_.erase("colno");
  return true;
}

bool PageWords::TakeOther(const Token& word) {
  static const std::unordered_set<std::string_view> kHead{
      "facingp",  "nocolbal", "margmirror", "gutterprl", "ftnrestart", "aftnrestart", "gutter",
      "pgnstart", "ftnstart", "aftnstart",  "ftnnalc",   "ftnnauc",    "ftnnrlc",     "ftnnruc",
      "aftnnalc", "aftnnauc", "aftnnrlc",   "aftnnruc",  "htmautsp"};
  static const std::unordered_set<std::string_view> kOwn{
      "headery",    "footery",   "titlepg",    "guttersxn", "cols",     "colsx",
      "linebetcol", "pgnstarts", "pgnrestart", "linex",     "rtlgutter"};
  static const std::unordered_set<std::string_view> kNumbers{"pgnucrm", "pgnlcrm", "pgnucltr",
                                                             "pgnlcltr"};
  static const std::unordered_set<std::string_view> kVertical{"vertal", "vertalb", "vertalc",
                                                              "vertalj"};
  if (word.text == "pgncont") {
    others_.erase("pgnrestart");
  } else if (word.text == "pgndec") {
    others_.erase("pgnformat");
  } else if (word.text == "vertalt") {
    others_.erase("vertal");
  } else if (kVertical.contains(word.text)) {
    others_["vertal"] = SourceOf(word);
  } else if (kNumbers.contains(word.text)) {
    others_["pgnformat"] = SourceOf(word);
  } else if (kOwn.contains(word.text)) {
    others_[std::string(word.text)] = SourceOf(word);
  } else if (kHead.contains(word.text)) {
    if (section_ == nullptr) head_others_[std::string(word.text)] = SourceOf(word);
  } else {
    return false;
  }
  return true;
}

PageSetup PageWords::Page() const {
  PageSetup page;
  const auto length = [&](std::optional<int> Lengths::*which, int usual = 0) {
    return (own_.*which).value_or((head_.*which).value_or(usual));
  };
  page.width = length(&Lengths::width);
  page.height = length(&Lengths::height);
  // As a saved letter has it, where the first section's size is the document's.
  if (page.width == 0) page.width = first_.width;
  if (page.height == 0) page.height = first_.height;
  const bool margins = own_.NamesMargin() || head_.NamesMargin();
  const int side = margins ? kUsualSideMargin : 0, end = margins ? kUsualEndMargin : 0;
  page.left = length(&Lengths::left, side);
  page.top = length(&Lengths::top, end);
  page.right = length(&Lengths::right, side);
  page.bottom = length(&Lengths::bottom, end);
  // A later section may lie across by its size alone.
  const bool sized = section_ != nullptr && own_.width && own_.height;
  page.landscape = own_landscape_.value_or(sized ? page.width > page.height : landscape_);
  page.borders = PresentIn(borders_);
  Others words = others_;
  if (section_ == nullptr) words.insert(head_others_.begin(), head_others_.end());
  for (const auto& [word, source] : words) page.other_words += source;
  return page;
}

// As word processors have it, with and without the spacing of HTML.
int PageWords::AutomaticSpace() const { return head_others_.contains("htmautsp") ? 280 : 100; }

void PageWords::EndSection() {
  if (section_ == nullptr) {
    first_ = Page();
    return;
  }
  section_->page = Page();
  section_->begin = begin_;
}

std::shared_ptr<Section> PageWords::BeginSection() {
  EndSection();
  section_ = std::make_shared<Section>();
  return section_;
}

void PageWords::Apply(Document* document) {
  EndSection();
  document->page = first_;
  document->default_tab = default_tab_;
}

}  // namespace tenora::richtext
