#include "output/html/tag_stack.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tenora::html {
namespace {

struct TagText {
  std::string_view begin, end;
};

// In the order of Tag; fonts and wrappers bring their own opening tags.
constexpr TagText kTags[] = {
    {"<b>", "</b>"}, {"<i>", "</i>"},     {"<u>", "</u>"},
    {"<s>", "</s>"}, {"<sup>", "</sup>"}, {"<sub>", "</sub>"},
    {"", "</font>"}, {"<li>", "</li>"},   {"", "</td></tr></table>"},
};

const TagText& TextOf(Tag tag) { return kTags[static_cast<std::size_t>(tag)]; }

bool IsParagraphTag(Tag tag) { return tag == Tag::kListItem || tag == Tag::kWrapper; }

}  // namespace

const TagStack::Code* TagStack::FindInForce(Tag tag) const {
  const auto found = std::find_if(codes_.begin(), codes_.end(), [tag](const Code& code) {
    return code.tag == tag && !code.cancelled;
  });
  return found == codes_.end() ? nullptr : &*found;
}

const TagStack::Code* TagStack::FindPending(Tag tag) const {
  const auto found = std::find_if(next_codes_.begin(), next_codes_.end(),
                                  [tag](const Code& code) { return code.tag == tag; });
  return found == next_codes_.end() ? nullptr : &*found;
}

bool TagStack::IsInForce(Tag tag) const { return FindInForce(tag) != nullptr; }
bool TagStack::IsPending(Tag tag) const { return FindPending(tag) != nullptr; }

std::string_view TagStack::BeginOf(Tag tag) const {
  const Code* code = FindInForce(tag);
  return code == nullptr ? std::string_view() : std::string_view(code->begin);
}

void TagStack::Open(Tag tag, std::string_view begin) {
  if (IsInForce(tag) || IsPending(tag)) return;
  next_codes_.push_back({tag, false, std::string(begin.empty() ? TextOf(tag).begin : begin)});
  changed_ = true;
}

void TagStack::Close(Tag tag) {
  for (Code& code : codes_) {
    if (code.tag == tag) code.cancelled = changed_ = true;
  }
  std::erase_if(next_codes_, [tag](const Code& code) { return code.tag == tag; });
}

void TagStack::Reopen(Tag tag, std::string_view begin) {
  for (Code& code : next_codes_) {
    if (code.tag != tag) continue;
    code.begin = begin;
    return;
  }
  Close(tag);
  Open(tag, begin);
}

void TagStack::CancelFormatting() {
  for (Code& code : codes_) {
    if (code.tag != Tag::kListItem) code.cancelled = changed_ = true;
  }
}

void TagStack::EndGroup() {
  CancelFormatting();
  const auto item = std::find_if(next_codes_.begin(), next_codes_.end(),
                                 [](const Code& code) { return code.tag == Tag::kListItem; });
  next_codes_.erase(item == next_codes_.end() ? next_codes_.begin() : std::next(item),
                    next_codes_.end());
  std::erase_if(next_codes_, [](const Code& code) { return code.tag == Tag::kWrapper; });
}

void TagStack::ResetParagraph() {
  CancelFormatting();
  std::erase_if(next_codes_, [](const Code& code) { return code.tag != Tag::kListItem; });
}

// The stack after the merge. `kept` is how many of its codes, from the outermost, are open already
// and stay so.
std::vector<TagStack::Code> TagStack::Merge(std::size_t& kept) const {
  const auto is_cancelled = [](const Code& code) { return code.cancelled; };
  kept = std::find_if(codes_.begin(), codes_.end(), is_cancelled) - codes_.begin();
  std::vector<Code> merged = codes_;
  std::erase_if(merged, is_cancelled);

  // New paragraph tags go below the formatting: above those that are open, the wrapper first.
  const auto is_formatting = [](const Code& code) { return !IsParagraphTag(code.tag); };
  std::size_t place = std::find_if(merged.begin(), merged.end(), is_formatting) - merged.begin();
  for (const Tag tag : {Tag::kWrapper, Tag::kListItem}) {
    const Code* code = FindPending(tag);
    if (code == nullptr) continue;
    kept = std::min(kept, place);
    merged.insert(merged.begin() + place++, *code);
  }
  std::copy_if(next_codes_.begin(), next_codes_.end(), std::back_inserter(merged), is_formatting);
  return merged;
}

void TagStack::Flush(std::string& closing, std::string& opening) {
  if (!changed_) return;
  std::size_t kept = 0;
  std::vector<Code> merged = Merge(kept);
  for (std::size_t i = codes_.size(); i-- > kept;) closing += TextOf(codes_[i].tag).end;
  for (std::size_t i = kept; i < merged.size(); ++i) opening += merged[i].begin;
  codes_ = std::move(merged);
  next_codes_.clear();
  changed_ = false;
}

void TagStack::CloseAll(std::string& closing) {
  for (std::size_t i = codes_.size(); i-- > 0;) closing += TextOf(codes_[i].tag).end;
  codes_.clear();
  next_codes_.clear();
  changed_ = false;
}

}  // namespace tenora::html
