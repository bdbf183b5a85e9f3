// The formatting in force while a letter is converted, as HTML tags.
//
// Two stacks: the codes in force, whose opening tags are written, and the next codes, requested
// since the last text and not yet opened. Closing a code in force only cancels it; the tags go out
// together ahead of the next text, when the next codes are merged onto those in force:
//   - a new list item goes below all formatting, so that it encloses it;
//   - a new alignment wrapper goes below the formatting and the list item too, but inside a list
//     item that is already open;
//   - everything above the lowest change is closed and what stays is opened again, so that tags
//     always nest.
// No tag is on a stack twice (except one cancelled and requested again), so a merge takes constant
// time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tenora::html {

enum class Tag : std::uint8_t {
  kBold,
  kItalic,
  kUnderline,
  kStrike,
  kSuper,
  kSub,
  kFont,
  kListItem,
  kWrapper,  // the table around an aligned paragraph
};

class TagStack {
 public:
  bool IsInForce(Tag tag) const;
  bool IsPending(Tag tag) const;

  // Nothing when the code is in force or pending already. `begin` is the opening tag of a font or a
  // wrapper.
  void Open(Tag tag, std::string_view begin = {});
  // Cancels the code where it is in force, forgets it where it is pending.
  void Close(Tag tag);
  // As Open, but replaces the opening tag of a pending code and closes one in force.
  void Reopen(Tag tag, std::string_view begin);
  // The opening tag of a code in force; empty when it is not.
  std::string_view BeginOf(Tag tag) const;

  // The end of a group: cancels all but the list item, forgets what is pending above a pending
  // list item (everything when there is none).
  void EndGroup();
  // A paragraph reset: cancels and forgets all but the list item.
  void ResetParagraph();

  // Merges the next codes onto those in force and appends the tags that this takes.
  void Flush(std::string& closing, std::string& opening);
  // Closes every code still open.
  void CloseAll(std::string& closing);

 private:
  struct Code {
    Tag tag = Tag::kBold;
    bool cancelled = false;
    std::string begin;
  };

  const Code* FindInForce(Tag tag) const;
  const Code* FindPending(Tag tag) const;
  void CancelFormatting();
  std::vector<Code> Merge(std::size_t& kept) const;

  std::vector<Code> codes_;       // outermost first
  std::vector<Code> next_codes_;  // in the order of the requests
  bool changed_ = false;          // something is cancelled or pending
};

}  // namespace tenora::html
