#include "letters/template_lint.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "letters/lint/code_rules.h"
#include "letters/lint/code_scanner.h"
#include "letters/lint/letter_text.h"
#include "letters/lint/merge_field.h"
#include "merge/merge_codes.h"
#include "merge/replace_code.h"
#include "merge/template_forms.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using Kind = TemplateFinding::Kind;

// Characters of a line that are shown around a code.
constexpr std::size_t kShownBefore = 30;
constexpr std::size_t kShownAfter = 60;
// A message of fewer bytes stops the asking.
constexpr std::size_t kShortestMessage = 3;
// Findings in the message that says why no letter is made.
constexpr std::size_t kMostShown = 3;

int PositionsIn(std::string_view text) { return static_cast<int>(ToUtf16(text).size()); }

// The part of a line around a code, cut between characters.
std::string Around(std::string_view line, std::size_t at) {
  const auto starts_character = [&](std::size_t i) {
    return i >= line.size() || (static_cast<unsigned char>(line[i]) & 0xC0U) != 0x80;
  };
  std::size_t begin = at > kShownBefore ? at - kShownBefore : 0;
  while (begin > 0 && !starts_character(begin)) --begin;
  std::size_t end = std::min(line.size(), at + kShownAfter);
  while (end < line.size() && !starts_character(end)) ++end;
  std::string shown(TrimBlanks(line.substr(begin, end - begin)));
  if (begin > 0) shown.insert(0, "…");
  if (end < line.size()) shown += "…";
  return shown;
}

// Bytes of a text in the letter's source.
std::size_t LengthInSource(const RichTextBox& letter, std::string_view text) {
  const auto escaped = [](char c) { return c == '\\' || c == '{' || c == '}'; };
  return letter.SourceForm(text).size() +
         static_cast<std::size_t>(std::ranges::count_if(text, escaped));
}

// Whether the source may write a text otherwise than the merge, which has it from the database.
bool MayBeEscaped(std::string_view text) {
  return std::ranges::any_of(
      text, [](char c) { return c < ' ' || c > '~' || c == '\\' || c == '{' || c == '}'; });
}

// In which respects two character formats differ: "bold", "font", in a fixed order; empty for equal
// formats.
std::vector<std::string_view> FormatDifference(const richtext::CharFormat& left,
                                               const richtext::CharFormat& right) {
  const std::pair<bool, std::string_view> respects[] = {
      {left.bold != right.bold, "bold"},
      {left.italic != right.italic, "italic"},
      {left.underline != right.underline, "underline"},
      {left.strike != right.strike, "strikethrough"},
      {left.font != right.font, "font"},
      {left.half_points != right.half_points, "size"},
      {left.kerned_from != right.kerned_from, "kerning"},
      {left.colour != right.colour, "colour"},
      {left.highlight != right.highlight, "highlight"},
      {left.script != right.script || left.raise_half_points != right.raise_half_points,
       "raised or lowered text"},
      {left.all_caps != right.all_caps || left.small_caps != right.small_caps, "capitals"},
      {left.hidden != right.hidden, "hidden text"},
      {left.protect != right.protect, "protected text"},
  };
  std::vector<std::string_view> words;
  for (const auto& [differs, word] : respects) {
    if (differs) words.push_back(word);
  }
  return words;
}

class Linter {
 public:
  Linter(const RichTextBox& letter, TemplateKind kind, Date today, const CustomFieldCodes* fields)
      : letter_(letter), kind_(kind), today_(today), fields_(fields), texts_(TextsOf(letter)) {
    if (TemplateForms::MayHold(letter.TextRTF(), kind)) forms_.emplace(letter.TextRTF(), kind);
  }

  std::vector<TemplateFinding> Run() {
    for (const LetterText& text : texts_) Lint(text);
    std::ranges::stable_sort(found_, {}, &TemplateFinding::position);
    DropPromptsNeverAsked();
    return std::move(found_);
  }

 private:
  void Lint(const LetterText& text) {
    text_ = &text;
    counted_bytes_ = 0;
    counted_ = text.position;
    if (text.place == "field") LintMergeField();
    const std::vector<ScannedCode> codes = ScanCodes(text.text);
    for (const ScannedCode& code : codes) {
      if (!IsForm(code)) LintCode(code);
    }
    LintLookalikes(codes);
    if (forms_) AddFormFindings();
  }

  bool InStream() const { return text_->place.empty() || text_->head >= 0; }

  // A form that the merge fills, or one where it fills none, which is complained of.
  bool IsForm(const ScannedCode& code) {
    if (!forms_ || !code.closed) return false;
    if (InStream() && forms_->Codes().contains({text_->head, code.begin})) return true;
    if (InStream() && forms_->Complete()) return false;
    if (!TemplateForms::IsForm(NameOf(code), kind_)) return false;
    if (InStream()) return true;
    Add(code, {Kind::kForm,
               std::string(kCodeStart).append(NameOf(code)).append(kCodeEnd) +
                   " cannot stand in a " + text_->place,
               "write it in the letter's text, in a table, a header or a footer"});
    return true;
  }

  void AddFormFindings() {
    if (!InStream()) return;
    for (const FormFinding& finding : forms_->Findings()) {
      if (finding.head != text_->head || finding.offset + finding.size > text_->text.size()) {
        continue;
      }
      Add({finding.offset, finding.offset + finding.size, true, false},
          {Kind::kForm, finding.problem, finding.advice},
          finding.kind == FormFinding::Kind::kSplit ? finding.code : "");
    }
  }

  void LintCode(const ScannedCode& code) {
    if (!code.closed) return LintUnclosed(code);
    const std::string name = NameOf(code);
    if (code.holds_code && forms_ && TemplateForms::IsForm(name, kind_)) {
      const std::string plain = ReplaceAll(ReplaceAll(name, kCodeStart, ""), kCodeEnd, "");
      return Add(code, {Kind::kForm,
                        std::string(kCodeStart).append(name).append(kCodeEnd) +
                            " has a code in brackets inside it",
                        "write names there without brackets: " +
                            std::string(kCodeStart).append(plain).append(kCodeEnd)});
    }
    if (FormOf(name) == CodeForm::kPrompt && kind_ != TemplateKind::kCheque) LintPrompt(code, name);
    const auto complaint = CheckCode(name, code.holds_code, kind_, today_, fields_);
    if (complaint) Add(code, *complaint);
    if (!complaint || complaint->kind == Kind::kFutureDate ||
        complaint->kind == Kind::kCustomField || complaint->kind == Kind::kReceiptNumber) {
      LintFormat(code, name);
    }
  }

  std::string NameOf(const ScannedCode& code) const {
    const std::size_t begin = code.begin + kCodeStart.size();
    return text_->text.substr(begin, code.end - kCodeEnd.size() - begin);
  }

  void LintUnclosed(const ScannedCode& code) {
    const std::string_view rest =
        std::string_view(text_->text).substr(code.begin + kCodeStart.size());
    switch (FormOf(rest)) {
      case CodeForm::kPrompt:
        return Add(code, {Kind::kUnclosed,
                          "the prompt has no \"?>>\" on its line: the merge takes the text up to a "
                          "later \"?>>\" as the question, or stops asking",
                          "end the question with ?>>"});
      case CodeForm::kFutureDate:
      case CodeForm::kCustomField:
        return Add(code, {Kind::kUnclosed,
                          "the code has no \">>\" on its line: the merge takes the text up to a "
                          "later \">>\" for a part of it, or leaves it in the letter",
                          "end the code with >>"});
      case CodeForm::kCatalogue:
        return Add(code, {Kind::kUnclosed, "\"<<\" without \">>\" on its line stays in the letter",
                          "end the code with >>, or write a single <"});
    }
  }

  void LintPrompt(const ScannedCode& code, const std::string& name) {
    // "<<?>>" has one question mark for both ends.
    const std::string_view message =
        name.size() < 2 ? std::string_view() : std::string_view(name).substr(1, name.size() - 2);
    if (LengthInSource(letter_, message) >= kShortestMessage) return;
    Add(code, {Kind::kShortPrompt,
               "a question of fewer than three characters is not asked, nor is any later prompt: "
               "all of them stay in the letter",
               "write a longer question"});
  }

  // Whether the merge finds the code in the source: whole, or for a code with parameters at least
  // its opening.
  void LintFormat(const ScannedCode& code, std::string_view name) {
    if (code.holds_code) return;
    const std::string change = ChangesIn(code.begin, code.end);
    const std::string tag = std::string(kCodeStart).append(name).append(kCodeEnd);
    if (change.empty()) {
      if (FormOf(name) == CodeForm::kCustomField && MayBeEscaped(name) &&
          !SourceContains(letter_, TagInSource(letter_, name))) {
        Add(code, {Kind::kSplit,
                   tag + " has characters that the source of the letter escapes: the field is not "
                         "filled in and the code is removed",
                   "use a field code of plain letters and digits"});
      }
      return;
    }
    const std::size_t opening = kCodeStart.size() + OpeningOf(name).size();
    const bool found =
        FormOf(name) != CodeForm::kCatalogue && ChangesIn(code.begin, code.begin + opening).empty();
    Add(code,
        {Kind::kSplit,
         tag + " has more than one format (" + change + "): the merge " +
             (found ? "loses the format that changes inside it and may take it for another"
                    : "does not find it, and it stays in the letter"),
         "select the whole code and give it one format, or retype it"},
        HoldsObject(code) ? "" : tag);
  }

  bool HoldsObject(const ScannedCode& code) const {
    return std::ranges::any_of(text_->SpansOf(code.begin, code.end),
                               [](const TextSpan* span) { return span->is_object; });
  }

  // What changes between the characters of a stretch of text; empty where the source has it in one
  // piece.
  std::string ChangesIn(std::size_t begin, std::size_t end) const {
    const std::vector<const TextSpan*> spans = text_->SpansOf(begin, end);
    std::vector<std::string_view> changes;
    for (std::size_t i = 0; i < spans.size(); ++i) {
      if (spans[i]->is_object) changes.push_back("a picture or object");
      if (i == 0) continue;
      const TextSpan& before = *spans[i - 1];
      if (before.field != spans[i]->field) changes.push_back("a link or field");
      std::ranges::copy(FormatDifference(before.format, spans[i]->format),
                        std::back_inserter(changes));
    }
    std::string words;
    for (auto change = changes.begin(); change != changes.end(); ++change) {
      if (std::find(changes.begin(), change, *change) != change) continue;
      words.append(words.empty() ? "" : ", ").append(*change);
    }
    return words;
  }

  // Other brackets around what would be a code.
  void LintLookalikes(const std::vector<ScannedCode>& codes) {
    for (const ScannedCode& code : ScanLookalikes(text_->text)) {
      const auto next = std::ranges::upper_bound(codes, code.begin, {}, &ScannedCode::begin);
      const bool inside = next != codes.begin() && std::prev(next)->end > code.begin;
      if (inside || InMergeField(code)) continue;
      std::string_view written(text_->text);
      written = written.substr(code.begin, code.end - code.begin);
      std::string advice = AdviceForLookalike(WithoutBrackets(written), kind_);
      if (advice.empty()) continue;
      Add(code,
          {Kind::kBrackets,
           std::string(written) + " stays in the letter: a code has two < and two >",
           std::move(advice)},
          CodeForLookalike(WithoutBrackets(written), kind_));
    }
  }

  static std::string_view WithoutBrackets(std::string_view written) {
    for (const std::string_view bracket : {"‹‹", "«", "≪", "<"}) {
      if (!written.starts_with(bracket)) continue;
      written.remove_prefix(bracket.size());
      written.remove_suffix(bracket.size());
      break;
    }
    return written;
  }

  bool InMergeField(const ScannedCode& code) const {
    return std::ranges::any_of(text_->SpansOf(code.begin, code.end), [](const TextSpan* span) {
      return span->field != nullptr && IsMergeField(*span->field);
    });
  }

  void LintMergeField() {
    static constexpr std::string_view kWord = "MERGEFIELD";
    const std::size_t word = FindNoCase(text_->text, kWord);
    if (word == std::string::npos) return;
    const std::string name = MergeFieldName(text_->text);
    std::string advice = AdviceForLookalike(name, kind_);
    if (advice.empty()) advice = "write a code in << and >>";
    Add({word, word + kWord.size(), true, false},
        {Kind::kMergeField,
         "the word processor's merge field \"" + name + "\" is not filled by this program",
         "remove the field; " + advice});
  }

  void Add(const ScannedCode& code, Complaint complaint, std::string replacement = {}) {
    TemplateFinding finding;
    finding.kind = complaint.kind;
    finding.place = text_->place;
    const std::size_t line = text_->LineAt(code.begin);
    finding.line = text_->lines[line].number;
    finding.text = Around(text_->TextOfLine(line), code.begin - text_->lines[line].begin);
    finding.position = PositionOf(code.begin);
    if (text_->place.empty()) {
      finding.length =
          PositionsIn(std::string_view(text_->text).substr(code.begin, code.end - code.begin));
    }
    finding.problem = std::move(complaint.problem);
    finding.advice = std::move(complaint.advice);
    finding.replacement = std::move(replacement);
    found_.push_back(std::move(finding));
  }

  int PositionOf(std::size_t offset) {
    if (!text_->place.empty()) return text_->position;
    if (offset < counted_bytes_) {
      counted_bytes_ = 0;
      counted_ = text_->position;
    }
    counted_ +=
        PositionsIn(std::string_view(text_->text).substr(counted_bytes_, offset - counted_bytes_));
    counted_bytes_ = offset;
    return counted_;
  }

  // The first prompt that stops the asking is reported for all later short ones.
  void DropPromptsNeverAsked() {
    bool stopped = false;
    std::erase_if(found_, [&](const TemplateFinding& finding) {
      return finding.kind == Kind::kShortPrompt && std::exchange(stopped, true);
    });
  }

  const RichTextBox& letter_;
  TemplateKind kind_;
  Date today_;
  const CustomFieldCodes* fields_;
  std::vector<LetterText> texts_;
  std::optional<TemplateForms> forms_;

  const LetterText* text_ = nullptr;  // being looked at
  std::size_t counted_bytes_ = 0;     // of its text, up to where positions are counted
  int counted_ = 0;
  std::vector<TemplateFinding> found_;
};

}  // namespace

std::string TemplateFinding::Text() const {
  std::string where = place.empty() ? "" : place + ", ";
  where += "line " + std::to_string(line);
  return where + ": \"" + text + "\": " + problem + "; " + advice;
}

std::vector<TemplateFinding> LintTemplate(const RichTextBox& letter, TemplateKind kind, Date today,
                                          const CustomFieldCodes* fields) {
  return Linter(letter, kind, today, fields).Run();
}

void RequireSoundForms(const RichTextBox& letter, TemplateKind kind, Date today) {
  if (!TemplateForms::MayHold(letter.TextRTF(), kind)) return;
  std::vector<TemplateFinding> found = LintTemplate(letter, kind, today);
  const auto is_form = [](const TemplateFinding& one) { return one.kind == Kind::kForm; };
  if (std::ranges::none_of(found, is_form)) return;
  std::erase_if(found, [&](const TemplateFinding& one) {
    return !is_form(one) && one.kind != Kind::kFormSlip;
  });
  std::string text = "The template cannot be filled. It has " +
                     (found.size() == 1 ? "a mistake" : std::to_string(found.size()) + " mistakes");
  for (std::size_t i = 0; i < std::min(found.size(), kMostShown); ++i) {
    text += (i == 0 ? ": " : "; ") + found[i].Text();
  }
  if (found.size() > kMostShown) text += "; tenora lint shows the others";
  throw RuntimeError(error_number::kInvalidProcedureCall, text);
}

}  // namespace tenora
