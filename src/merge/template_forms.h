// The forms of a template whose text depends on the recipient:
//
//   <<If Balance Owing > 0>> … <<Else If CONDITION>> … <<Else>> … <<End If>>
//   <<Each Payment since 1 April where Payment Amount > 100 newest first>> … <<End Each>>
//   <<Payment Date:short>>, <<Total Payment Amount>>, <<Days Behind>>
//
// over words, paragraphs, rows of tables and cells, in the letter's text and in headers and
// footers. They are read once and filled for each recipient, before the merge codes. A template
// without any is not touched.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "merge/merge_codes.h"
#include "merge/merge_target.h"

namespace tenora {

struct FormFinding {
  enum class Kind {
    kUnclosed,    // no end
    kCrossed,     // ends in another form, or outside its cell or table
    kOutside,     // an end or else without a beginning
    kCondition,   // that cannot be read
    kCollection,  // an unknown one, one of other templates, a wrong clause
    kName,        // a code that means nothing where it stands
    kFormat,      // an unknown one, or one that does not fit the value
    kSplit,       // by a change of format
    kTooDeep,
  };

  Kind kind;
  int head = -1;  // of which header or footer, as HeadGroupsOf counts; -1: the text
  std::size_t offset = 0, size = 0;  // bytes of the text, each paragraph ended by one
  std::string code;                  // with the brackets
  std::string problem, advice;
};

class TemplateForms {
 public:
  // A quick look: false only where the source of a letter holds no form.
  static bool MayHold(std::string_view source, TemplateKind kind);
  // Whether a code, without its brackets, is a form where the kind's templates have it: a marker, a
  // value with a format, a column or sum, or a fact that is no merge code.
  static bool IsForm(std::string_view code, TemplateKind kind);

  TemplateForms(std::string_view source, TemplateKind kind);
  ~TemplateForms();
  TemplateForms(TemplateForms&&) noexcept;
  TemplateForms& operator=(TemplateForms&&) noexcept;

  const std::string& Source() const;
  TemplateKind Kind() const;
  // What is wrong with them, in the order of the text.
  const std::vector<FormFinding>& Findings() const;
  // Where the codes are that are forms, right or wrong: the head as in FormFinding, and the offset.
  const std::set<std::pair<int, std::size_t>>& Codes() const;
  // False where there is so much wrong, or so deep a nesting, that not all has been looked at: the
  // findings and codes are those up to there.
  bool Complete() const;

  // Makes the letter the template with its forms filled for a recipient. The database is open.
  // Raises 5 for forms with findings, 7 for a letter that would become too long, and what the
  // look-ups raise; the letter is then as it was. The result of a tenant's is what LastPayment gave
  // for the letter's receipt number, where a form needed it, and the tenant's record is as that
  // left it; none where no form did.
  std::optional<bool> Fill(const MergeTarget& target, TenantRecord& tenant) const;
  void Fill(const MergeTarget& target, const OwnerRecord& owner) const;

 private:
  struct State;
  std::unique_ptr<const State> state_;
};

}  // namespace tenora
