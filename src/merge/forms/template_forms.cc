#include "merge/template_forms.h"

#include <algorithm>
#include <map>
#include <utility>

#include "data/sql_text.h"
#include "merge/forms/form_builder.h"
#include "merge/forms/form_filler.h"
#include "merge/forms/form_pieces.h"
#include "merge/recipient_facts.h"
#include "platform/richtext/canonical_form.h"
#include "platform/richtext/document_sections.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using richtext::Document;
using richtext::HeadGroup;

// Longer codes are no form: a condition has at most so many characters.
constexpr std::size_t kLongestCode = 12'000;

bool IsOrdinary(std::string_view code, TemplateKind kind) {
  const auto codes = MergeCodesOf(kind);
  return std::ranges::find(codes, code, &MergeCode::name) != codes.end() ||
         code == kBuildingReceiptNumber;
}

bool Named(const std::vector<std::string_view>& names, std::string_view code) {
  return std::ranges::any_of(names, [&](std::string_view one) { return EqualsNoCase(one, code); });
}

bool IsRowOrSum(std::string_view code) {
  if (EqualsNoCase(code, kOpeningBalance)) return true;
  return std::ranges::any_of(Collections(), [&](const Collection& one) {
    if (one.kind != CollectionKind::kTenancy && one.Names().Find(code) != nullptr) return true;
    const std::vector<std::string> totals = one.TotalNames();
    return EqualsNoCase(one.CountName(), code) || Named({totals.begin(), totals.end()}, code);
  });
}

// The text between "<<" and ">>" that a source shows, control words left out; empty where the
// brackets do not close.
std::string ShownCode(std::string_view source) {
  std::string shown;
  for (std::size_t at = 0; at < source.size() && shown.size() < kLongestCode; ++at) {
    const char c = source[at];
    if (c == '\\' && at + 1 < source.size()) {
      const std::string_view rest = source.substr(at);
      if (rest.starts_with("\\par") || rest.starts_with("\\line") || rest.starts_with("\\cell")) {
        return {};
      }
      std::size_t end = at + 1;
      while (end < source.size() && source[end] >= 'a' && source[end] <= 'z') ++end;
      if (end == at + 1) {
        shown += '?';  // an escaped character
        at = end + (source[end] == '\'' ? 2 : 0);
        continue;
      }
      if (rest.starts_with("\\tab")) shown += ' ';
      while (end < source.size() && (IsDigit(source[end]) || source[end] == '-')) ++end;
      at = end < source.size() && source[end] == ' ' ? end : end - 1;
      continue;
    }
    if (c == '{' || c == '}' || c == '\r' || c == '\n') continue;
    shown += c;
    if (shown.ends_with(kCodeEnd)) return shown.substr(0, shown.size() - kCodeEnd.size());
    if (shown.ends_with(kCodeStart)) shown.clear();
  }
  return {};
}

struct HeadForms {
  const HeadGroup* group = nullptr;
  FormTree tree;
};

}  // namespace

struct TemplateForms::State {
  std::string source;
  TemplateKind kind = TemplateKind::kTenant;
  Document document;
  FormTree tree;
  std::vector<HeadForms> heads;  // those that hold forms
  std::vector<FormFinding> findings;
  std::set<std::pair<int, std::size_t>> codes;
  bool complete = true;

  FormTree Read(const std::vector<richtext::Block>& blocks, int head) {
    std::vector<FormFinding> found;
    std::vector<std::size_t> held;
    FormTree read = BuildForms(PiecesOf(blocks), kind, &found, &held);
    complete = complete && read.complete;
    for (FormFinding& finding : found) {
      finding.head = head;
      findings.push_back(std::move(finding));
    }
    for (const std::size_t offset : held) codes.emplace(head, offset);
    return read;
  }

  void ReadHeads() {
    int number = 0;
    for (const HeadGroup* group : richtext::HeadGroupsOf(document)) {
      const std::size_t before = codes.size();
      FormTree read = Read(group->blocks, number++);
      if (codes.size() > before) heads.push_back({group, std::move(read)});
    }
  }

  void Fill(const MergeTarget& target, const FactSource& recipient,
            const CollectionOwner& owner) const;
  // The groups with those that hold forms written anew; true when there is one.
  bool FillHeads(FormFiller& filler, Document* filled) const;
};

bool TemplateForms::IsForm(std::string_view code, TemplateKind kind) {
  if (kind == TemplateKind::kCheque || code.starts_with('?')) return false;
  if (MarkerOf(code)) return true;
  if (IsOrdinary(code, kind)) return false;
  const FactNames& facts = RecipientFactNames(kind);
  if (facts.IsField(code) || code.starts_with("FutureDate:")) return false;
  if (Named(PrintedFacts(kind), code)) return true;
  // In another letter case it is a slip of a merge code, and no form.
  if (facts.Find(code) != nullptr) return false;
  if (IsRowOrSum(code)) return true;
  const std::size_t colon = code.rfind(':');
  if (colon == std::string_view::npos) return false;
  const std::string_view base = code.substr(0, colon);
  return FindFormat(TrimBlanks(code.substr(colon + 1))) != nullptr || facts.Find(base) != nullptr ||
         IsRowOrSum(base);
}

bool TemplateForms::MayHold(std::string_view source, TemplateKind kind) {
  for (std::size_t at = source.find('<'); at != std::string_view::npos;
       at = source.find('<', at + 1)) {
    // The second one may stand behind a change of format.
    const std::string_view rest = source.substr(at + 1, kLongestCode);
    std::string code;
    if (rest.starts_with('<')) {
      code = ShownCode(rest.substr(1));
    } else if (rest.starts_with('\\') || rest.starts_with('}') || rest.starts_with('{')) {
      code = ShownCode(rest);
      if (!code.starts_with('<')) continue;
      code.erase(0, 1);
    }
    if (!code.empty() && IsForm(code, kind)) return true;
  }
  return false;
}

TemplateForms::TemplateForms(std::string_view source, TemplateKind kind) {
  auto state = std::make_unique<State>();
  state->source = source;
  state->kind = kind;
  state->document = richtext::ReadRtf(source);
  state->ReadHeads();
  state->tree = state->Read(state->document.blocks, -1);
  std::ranges::stable_sort(state->findings, [](const FormFinding& left, const FormFinding& right) {
    return std::pair(left.head, left.offset) < std::pair(right.head, right.offset);
  });
  state_ = std::move(state);
}

TemplateForms::~TemplateForms() = default;
TemplateForms::TemplateForms(TemplateForms&&) noexcept = default;
TemplateForms& TemplateForms::operator=(TemplateForms&&) noexcept = default;

const std::string& TemplateForms::Source() const { return state_->source; }
TemplateKind TemplateForms::Kind() const { return state_->kind; }
const std::vector<FormFinding>& TemplateForms::Findings() const { return state_->findings; }
const std::set<std::pair<int, std::size_t>>& TemplateForms::Codes() const { return state_->codes; }
bool TemplateForms::Complete() const { return state_->complete; }

bool TemplateForms::State::FillHeads(FormFiller& filler, Document* filled) const {
  if (heads.empty()) return false;
  const auto fill = [&](const std::vector<HeadGroup>& from, std::vector<HeadGroup>* groups) {
    for (std::size_t i = 0; i < from.size(); ++i) {
      const auto form = std::ranges::find(heads, &from[i], &HeadForms::group);
      if (form == heads.end()) continue;
      (*groups)[i].source =
          richtext::WriteHeadGroup(document, from[i], filler.Fill(form->tree, from[i].blocks));
    }
  };
  fill(document.head_groups, &filled->head_groups);
  for (richtext::Block& block : filled->blocks) {
    auto* const paragraph = std::get_if<richtext::Paragraph>(&block);
    if (paragraph == nullptr || paragraph->next_section == nullptr) continue;
    auto section = std::make_shared<richtext::Section>(*paragraph->next_section);
    fill(paragraph->next_section->head_groups, &section->head_groups);
    paragraph->next_section = std::move(section);
  }
  return true;
}

void TemplateForms::State::Fill(const MergeTarget& target, const FactSource& recipient,
                                const CollectionOwner& owner) const {
  if (!findings.empty()) {
    throw RuntimeError(error_number::kInvalidProcedureCall,
                       findings.front().problem + "; " + findings.front().advice);
  }
  Session& session = target.session;
  const Date today = session.platform.clock.Today();
  FormBudget budget;
  MergeNotes notes = target.letter.Notes;
  const auto told = [&](std::string_view name, const std::string& text) {
    if (text.find(kCodeStart) == std::string::npos && text.find(kCodeEnd) == std::string::npos) {
      return;
    }
    std::string written = ReplaceAll(text, "\\", "\\\\");
    written = ReplaceAll(ReplaceAll(std::move(written), "{", "\\{"), "}", "\\}");
    notes.Add({MergeFact::kBrackets, std::string(name), text, target.editor.SourceForm(written)});
  };
  const auto filler_for = [&](FormValues& values) {
    return FormFiller(session, values, RecipientFactNames(kind), budget, notes, told);
  };
  Document filled = document;
  LatestLedger ledger(session);
  FormValues values(session, recipient, owner, tree, today, ledger);
  FormFiller body = filler_for(values);
  filled.blocks = body.Fill(tree, document.blocks);
  DropHalfBookmarks(&filled.blocks);
  FormTree head_tree;
  for (const HeadForms& head : heads) {
    head_tree.sums.insert(head.tree.sums.begin(), head.tree.sums.end());
    if (head_tree.ledger == nullptr) head_tree.ledger = head.tree.ledger;
  }
  FormValues head_values(session, recipient, owner, head_tree, today, ledger);
  FormFiller head_filler = filler_for(head_values);
  const bool heads_written = FillHeads(head_filler, &filled);
  std::string merged = richtext::WriteRtf(richtext::InCanonicalForm(std::move(filled)));
  // A header's source has its canonical form from the reader.
  if (heads_written) merged = richtext::WriteRtf(richtext::ReadRtf(merged));
  target.letter.Notes = std::move(notes);
  target.editor.SetTextRTF(std::move(merged));
}

std::optional<bool> TemplateForms::Fill(const MergeTarget& target, TenantRecord& tenant) const {
  const bool receipt = target.letter.ReceiptNumber != 0;
  const LookedUpTenancy details(target.session, tenant, target.letter.ReceiptNumber);
  const TenantFacts facts(details, target.session.platform.clock.Now(), receipt);
  state_->Fill(target, facts, {.tenant = &tenant, .owner = nullptr, .property = {}});
  return details.PaymentIfRead();
}

void TemplateForms::Fill(const MergeTarget& target, const OwnerRecord& owner) const {
  const LookedUpOwner details(target.session, owner);
  const OwnerFacts facts(details, target.session.platform.clock.Now());
  state_->Fill(target, facts, {.tenant = nullptr, .owner = &owner, .property = {}});
}

}  // namespace tenora
