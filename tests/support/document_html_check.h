// A strict reader for the HTML of whole documents: what mail programs must never get.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tenora::test {

class DocumentHtmlCheck {
 public:
  // What is wrong, with the place; empty for HTML whose tags nest, are known and in which no
  // attribute holds more than it should.
  static std::string Fault(std::string_view html) { return DocumentHtmlCheck(html).Run(); }

 private:
  explicit DocumentHtmlCheck(std::string_view html) : html_(html) {}

  template <typename Names>
  static bool IsOneOf(std::string_view name, const Names& names) {
    return std::ranges::find(names, name) != names.end();
  }

  std::string Complain(const std::string& what) const {
    return what + " at " + std::to_string(at_) + ": " + std::string(html_.substr(at_, 80));
  }

  std::string Run() {
    constexpr std::array<std::string_view, 3> kVoid{"br", "hr", "img"};
    constexpr std::array<std::string_view, 18> kNames{"div", "p",  "ul",   "ol",  "li",  "table",
                                                      "hr",  "tr", "td",   "a",   "b",   "i",
                                                      "u",   "s",  "span", "sup", "sub", "img"};
    for (const char c : html_) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte < 0x20 && c != '\r' && c != '\n') return "a control character";
    }
    while ((at_ = html_.find_first_of("<>", at_)) != std::string_view::npos) {
      if (html_[at_] == '>') return Complain("stray bracket");
      const std::size_t end = html_.find('>', at_);
      if (end == std::string_view::npos) return Complain("open tag");
      const std::string_view tag = html_.substr(at_ + 1, end - at_ - 1);
      const bool closes = tag.starts_with('/');
      const std::string_view name = closes ? tag.substr(1) : tag.substr(0, tag.find(' '));
      if (!IsOneOf(name, kNames) && name != "br") return Complain("unknown tag");
      if (closes) {
        if (open_.empty() || open_.back() != name) return Complain("misplaced closing tag");
        open_.pop_back();
      } else {
        if (std::string fault = PlaceFault(name); !fault.empty()) return Complain(fault);
        if (std::string fault = AttributeFault(tag.substr(name.size())); !fault.empty())
          return Complain(fault);
        if (!IsOneOf(name, kVoid)) open_.push_back(name);
      }
      at_ = end + 1;
    }
    return open_.empty() ? std::string() : "never closed: " + std::string(open_.back());
  }

  // Paragraphs hold no blocks, lists only items, tables only rows, rows only cells.
  std::string PlaceFault(std::string_view name) const {
    constexpr std::array<std::string_view, 6> kBlocks{"div", "p", "ul", "ol", "table", "hr"};
    const std::string_view around = open_.empty() ? std::string_view() : open_.back();
    if (IsOneOf(name, kBlocks) && IsOneOf("p", open_) && !IsOneOf("td", open_))
      return "block in a paragraph";
    if ((name == "li") != (around == "ul" || around == "ol")) return "item out of place";
    if ((name == "tr") != (around == "table")) return "row out of place";
    if ((name == "td") != (around == "tr")) return "cell out of place";
    return {};
  }

  static std::string AttributeFault(std::string_view rest) {
    constexpr std::array<std::string_view, 16> kNames{
        "style",  "href",  "src",   "alt",         "width",       "height", "colspan", "rowspan",
        "valign", "align", "start", "cellspacing", "cellpadding", "border", "dir",     "size"};
    while (!rest.empty()) {
      const std::size_t equals = rest.find("=\"");
      if (rest.front() != ' ' || equals == std::string_view::npos) return "malformed attribute";
      const std::string_view name = rest.substr(1, equals - 1);
      rest.remove_prefix(equals + 2);
      const std::size_t end = rest.find('"');
      if (end == std::string_view::npos) return "open attribute";
      const std::string_view value = rest.substr(0, end);
      rest.remove_prefix(end + 1);
      if (!IsOneOf(name, kNames)) return "unknown attribute";
      if (value.empty() && name != "alt") return "empty attribute";
      const auto begins = [&](auto... starts) { return (value.starts_with(starts) || ...); };
      if (name == "src" && !begins("cid:", "data:image/")) return "external picture";
      if (name == "href" && !IsWebOrMail(value)) return "unsafe link";
      if (name == "style" && !IsSafeStyle(value)) return "unsafe style";
    }
    return {};
  }

  static bool IsWebOrMail(std::string_view value) {
    std::string start(value.substr(0, 8));
    for (char& c : start) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return start.starts_with("http://") || start.starts_with("https://") ||
           start.starts_with("mailto:");
  }

  // Quotes come in pairs, and no function but one is called.
  static bool IsSafeStyle(std::string_view value) {
    for (std::size_t at = value.find('('); at != std::string_view::npos;
         at = value.find('(', at + 1)) {
      if (!value.substr(0, at).ends_with(":calc")) return false;
    }
    return std::ranges::count(value, '\'') % 2 == 0 && !value.ends_with(';') &&
           value.find(";;") == std::string_view::npos &&
           value.find_first_of("\\{}<>&@\"") == std::string_view::npos;
  }

  std::string_view html_;
  std::size_t at_ = 0;
  std::vector<std::string_view> open_;
};

}  // namespace tenora::test
