#include "letters/letter_check.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "letters/lint/code_rules.h"
#include "letters/lint/code_scanner.h"
#include "letters/lint/letter_text.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::size_t kLongestShown = 60;  // bytes of a value or a code

// A value in quotation marks, on one line and cut between characters.
std::string Quoted(std::string_view value) {
  std::string shown;
  while (!value.empty() && shown.size() < kLongestShown) {
    const char32_t c = TakeCodePoint(value);
    AppendUtf8(shown, c < ' ' ? U' ' : c);
  }
  return "\"" + shown + (value.empty() ? "\"" : "…\"");
}

// `characters` are those that do not belong there.
std::string ValueSentence(const MergeNote& note, const std::string& characters) {
  if (note.answered)
    return "the answer " + Quoted(note.value) +
           " does not stand in the letter as it was given; answer without " + characters +
           ", or correct the letter by hand";
  return "the value " + Quoted(note.value) +
         " does not stand in the letter as it stands in the data; take " + characters +
         " out of the data, or correct the letter by hand";
}

std::optional<LetterFinding> FindingOf(const MergeNote& note, const std::string& source) {
  using enum FindingWeight;
  switch (note.fact) {
    case MergeFact::kAltered:
      return LetterFinding{kHold, note.code,
                           ValueSentence(note, "backslashes, braces and control characters")};
    case MergeFact::kBrackets:
      if (source.find(note.source) != std::string::npos) return std::nullopt;
      return LetterFinding{kHold, note.code,
                           ValueSentence(note, "<< and >>, which were read as a code,")};
    case MergeFact::kNoPayment:
      return LetterFinding{kHold, note.code,
                           "the tenancy has no payment, and the letter shows an empty one; record "
                           "the payment, or use a template without payment codes"};
    case MergeFact::kNoDate:
      return LetterFinding{kWarning, note.code,
                           "there is no such date, and its place in the letter is empty; enter the "
                           "date, or word the letter so that it does without"};
    case MergeFact::kPlaceholder:
      return LetterFinding{kWarning, note.code,
                           "there is no such date, and the letter shows " + Quoted(note.value) +
                               "; enter the date, or correct the letter by hand",
                           note.value};
    case MergeFact::kNumberAgain:
      return LetterFinding{
          kWarning, note.code,
          "the receipt number " + note.value +
              " is not stored for this building: another one may have had it, and "
              "the next letter of this one gets it again; give the building a custom field "
              "NxtReceipt with the last number issued",
          note.value};
    case MergeFact::kNumberLeft:
      return LetterFinding{kWarning, note.code,
                           note.value +
                               " is the next receipt number; a preview does not take it, and the "
                               "letter gets the one that is the next when it is generated",
                           note.value};
  }
  return std::nullopt;
}

// Skips what stands between the characters of a text in its source: braces, line ends and control
// words. The position is that of the next character that is shown, or the source's end.
std::size_t NextShown(std::string_view source, std::size_t at) {
  while (at < source.size()) {
    const char c = source[at];
    if (c == '{' || c == '}' || c == '\r' || c == '\n') {
      ++at;
    } else if (c == '\\' && at + 1 < source.size() && source[at + 1] >= 'a' &&
               source[at + 1] <= 'z') {
      at = source.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ", at + 1);
      at = source.find_first_not_of("-0123456789", std::min(at, source.size()));
      if (at < source.size() && source[at] == ' ') ++at;
    } else {
      return at;
    }
  }
  return source.size();
}

// Whether "<<" is in the text of the letter, also where its two characters differ in format.
bool MayHoldCodes(std::string_view source) {
  for (std::size_t at = source.find('<'); at != std::string_view::npos;
       at = source.find('<', at + 1)) {
    const std::size_t next = NextShown(source, at + 1);
    if (next < source.size() && source[next] == '<') return true;
  }
  return false;
}

// What is open on its line is taken for a code only where it begins like one.
bool BeginsLikeCode(std::string_view rest, TemplateKind kind) {
  if (FormOf(rest) != CodeForm::kCatalogue) return true;
  return std::ranges::any_of(MergeCodesOf(kind),
                             [&](const MergeCode& code) { return rest.starts_with(code.name); });
}

class CodesLeft {
 public:
  CodesLeft(TemplateKind kind, Date today) : kind_(kind), today_(today) {}

  std::vector<LetterFinding> Run(const RichTextBox& letter) {
    for (const LetterText& text : TextsOf(letter)) {
      for (const ScannedCode& code : ScanCodes(text.text)) {
        LookAt(std::string_view(text.text).substr(code.begin, code.end - code.begin), code);
      }
    }
    return std::move(found_);
  }

 private:
  void LookAt(std::string_view written, const ScannedCode& code) {
    std::string_view name = written.substr(kCodeStart.size());
    if (!code.closed && !BeginsLikeCode(name, kind_)) return;
    if (code.closed) name.remove_suffix(kCodeEnd.size());
    if (!seen_.insert(std::string(name)).second) return;
    if (written.starts_with(kPromptStart)) return AddQuestion(name, written);
    const auto complaint =
        code.closed ? CheckCode(name, code.holds_code, kind_, today_, nullptr) : std::nullopt;
    found_.push_back({FindingWeight::kHold, std::string(code.closed ? name : ""),
                      "the code " + Quoted(written) + " was not filled in; " +
                          (complaint ? complaint->advice : "correct the template or the letter"),
                      std::string(written)});
  }

  void AddQuestion(std::string_view name, std::string_view written) {
    name.remove_prefix(1);
    if (name.ends_with('?')) name.remove_suffix(1);
    found_.push_back({FindingWeight::kHold, std::string(name),
                      "the question " + Quoted(name) +
                          " was not asked and stands in the letter; every question needs its ?>> "
                          "and three characters or more, correct the template",
                      std::string(written)});
  }

  TemplateKind kind_;
  Date today_;
  std::set<std::string> seen_;
  std::vector<LetterFinding> found_;
};

}  // namespace

bool Holds(const std::vector<LetterFinding>& findings) {
  return std::ranges::any_of(findings, [](const LetterFinding& finding) {
    return finding.weight == FindingWeight::kHold;
  });
}

std::string FindingText(const Recipient& recipient, const LetterFinding& finding) {
  std::string text = recipient.name;
  if (!recipient.code.empty()) text += " (" + recipient.code + ")";
  if (!finding.code.empty()) text += ": " + finding.code;
  return text + ": " + finding.sentence;
}

std::vector<LetterFinding> CheckLetter(const RichTextBox& letter, TemplateKind kind,
                                       const MergeNotes& notes, Date today) {
  const std::string& source = letter.TextRTF();
  std::vector<LetterFinding> findings;
  const auto without_payment = [&](const std::string& code) {
    return std::ranges::any_of(notes.All(), [&](const MergeNote& note) {
      return note.fact == MergeFact::kNoPayment && note.code == code;
    });
  };
  bool payment_told = false;
  for (const MergeNote& note : notes.All()) {
    // One word about the missing payment is enough.
    if (note.fact == MergeFact::kNoPayment && std::exchange(payment_told, true)) continue;
    if (note.fact == MergeFact::kNoDate && without_payment(note.code)) continue;
    if (auto finding = FindingOf(note, source)) findings.push_back(std::move(*finding));
  }
  if (MayHoldCodes(source)) {
    std::ranges::move(CodesLeft(kind, today).Run(letter), std::back_inserter(findings));
  }
  // Not std::ranges': clang 14, which builds the fuzz targets, cannot compile its result.
  std::stable_partition(findings.begin(), findings.end(),
                        [](const LetterFinding& f) { return f.weight == FindingWeight::kHold; });
  return findings;
}

}  // namespace tenora
