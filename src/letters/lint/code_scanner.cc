#include "letters/lint/code_scanner.h"

#include <algorithm>
#include <string>
#include <utility>

#include "merge/merge_codes.h"

namespace tenora {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
// Longer text between look-alike brackets is a quotation.
constexpr std::size_t kLongestLookalike = 200;

// Finds the next occurrence after positions that only grow, without searching twice.
class Ahead {
 public:
  Ahead(std::string_view text, std::string_view part) : text_(text), part_(part) {}
  std::size_t From(std::size_t at) {
    if (!known_ || next_ < at) next_ = text_.find(part_, at);
    known_ = true;
    return next_;
  }

 private:
  std::string_view text_, part_;
  std::size_t next_ = 0;
  bool known_ = false;
};

class Scanner {
 public:
  explicit Scanner(std::string_view text)
      : text_(text), next_start_(text, kCodeStart), next_prompt_end_(text, kPromptEnd) {}

  std::vector<ScannedCode> Scan() {
    for (std::size_t at = 0; at < text_.size();) at = Step(at);
    EndLine(text_.size());
    std::ranges::sort(codes_, {}, &ScannedCode::begin);
    return std::move(codes_);
  }

 private:
  std::size_t Step(std::size_t at) {
    const std::string_view rest = text_.substr(at);
    if (rest.starts_with(kCodeStart)) {
      if (rest.starts_with("<<<")) return at + 1;
      open_.push_back({at, at, true, false});
      return at + kCodeStart.size();
    }
    if (rest.starts_with(kCodeEnd) && !open_.empty() && !(InPrompt() && PromptGoesOn(at))) {
      Close(at + kCodeEnd.size());
      return at + kCodeEnd.size();
    }
    if (rest.front() == '\n' && !(InPrompt() && PromptGoesOn(at))) EndLine(at);
    return at + 1;
  }

  bool InPrompt() const {
    return !open_.empty() && text_.substr(open_.back().begin).starts_with(kPromptStart);
  }

  // Whether the end of the current prompt is still to come, not counting a "?>>" at `at`.
  bool PromptGoesOn(std::size_t at) {
    const std::size_t own_end = open_.back().begin + kCodeStart.size();
    if (at > own_end && text_[at - 1] == '?' && text_.substr(at).starts_with(kCodeEnd)) {
      return false;
    }
    const std::size_t end = next_prompt_end_.From(at);
    return end != kNone && end < next_start_.From(at);
  }

  void Close(std::size_t end) {
    ScannedCode code = open_.back();
    open_.pop_back();
    code.end = end;
    if (text_.substr(code.begin).starts_with(kPromptStart)) {
      code.closed = text_.substr(0, end).ends_with(kPromptEnd);
    }
    codes_.push_back(code);
    if (!open_.empty()) open_.back().holds_code = true;
  }

  void EndLine(std::size_t at) {
    for (ScannedCode& code : open_) {
      code.end = at;
      code.closed = false;
      codes_.push_back(code);
    }
    open_.clear();
  }

  std::string_view text_;
  Ahead next_start_, next_prompt_end_;
  std::vector<ScannedCode> open_;
  std::vector<ScannedCode> codes_;
};

bool StandsAlone(std::string_view text, std::size_t at) {
  return (at == 0 || text[at - 1] != '<') && !text.substr(at + 1).starts_with("<");
}

}  // namespace

std::vector<ScannedCode> ScanCodes(std::string_view text) { return Scanner(text).Scan(); }

std::vector<ScannedCode> ScanLookalikes(std::string_view text) {
  static constexpr std::pair<std::string_view, std::string_view> kBrackets[] = {
      {"«", "»"}, {"‹‹", "››"}, {"≪", "≫"}, {"<", ">"}};
  std::vector<ScannedCode> found;
  for (const auto& [open, close] : kBrackets) {
    for (std::size_t at = text.find(open); at != kNone; at = text.find(open, at + open.size())) {
      if (open == "<" && !StandsAlone(text, at)) continue;
      const std::string_view rest = text.substr(at, kLongestLookalike);
      const std::size_t length = rest.substr(0, rest.find('\n')).find(close, open.size());
      if (length == kNone) continue;
      found.push_back({at, at + length + close.size(), true, false});
    }
  }
  std::ranges::sort(found, {}, &ScannedCode::begin);
  return found;
}

}  // namespace tenora
