#include "merge/forms/form_values.h"

#include <algorithm>

namespace tenora {

FormValues::FormValues(Session& session, const FactSource& recipient, const CollectionOwner& owner,
                       const FormTree& tree, Date today, LatestLedger& entries)
    : session_(session),
      recipient_(recipient),
      owner_(owner),
      tree_(tree),
      today_(today),
      entries_(entries),
      ledger_(tree.ledger.get()) {
  frames_.emplace_back();
}

bool FormValues::IsRecipients(std::string_view name) const {
  return std::ranges::none_of(frames_,
                              [&](const Frame& frame) {
                                return frame.sums.contains(name) ||
                                       (frame.collection != nullptr &&
                                        frame.collection->Names().Find(name) != nullptr);
                              }) &&
         name != kOpeningBalance;
}

Fact FormValues::Get(std::string_view name) const {
  for (auto frame = frames_.rbegin(); frame != frames_.rend(); ++frame) {
    if (frame->row == nullptr) continue;
    const FactNames& names = frame->collection->Names();
    if (names.Find(name) != nullptr || names.IsField(name)) return frame->row->Get(name);
  }
  for (auto frame = frames_.rbegin(); frame != frames_.rend(); ++frame) {
    if (const auto sum = frame->sums.find(name); sum != frame->sums.end()) return sum->second;
  }
  // A sum whose repetition stands in a branch that was not taken.
  if (name.starts_with(kTotalStart)) return Currency();
  if (name.starts_with(kCountStart)) return 0.0;
  return name == kOpeningBalance ? OpeningBalance() : recipient_.Get(name);
}

Fact FormValues::OpeningBalance() const {
  const CollectionOwner here = OwnerHere();
  if (ledger_ == nullptr || here.tenant == nullptr || ledger_->since.empty()) return Currency();
  return entries_.BalanceBefore(*here.tenant, ReadDay(ledger_->since, today_));
}

CollectionOwner FormValues::OwnerHere() const {
  CollectionOwner owner = owner_;
  for (const Frame& frame : frames_) {
    if (frame.row == nullptr) continue;
    if (const TenantRecord* const tenant = frame.row->Tenant()) owner.tenant = tenant;
    if (std::string code = frame.row->PropertyCode(); !code.empty()) {
      owner.property = std::move(code);
    }
  }
  return owner;
}

bool FormValues::Within(const Repetition& each, const CollectionRow& row) const {
  if (each.since.empty() && each.until.empty()) return true;
  const Fact fact = row.Get(each.collection->day);
  const Date* const day = std::get_if<Date>(&fact);
  if (day == nullptr) return false;
  const auto number = [&](const std::string& text) { return ReadDay(text, today_).DayNumber(); };
  return (each.since.empty() || day->DayNumber() >= number(each.since)) &&
         (each.until.empty() || day->DayNumber() <= number(each.until));
}

FormValues::Rows FormValues::Begin(const Repetition& each) {
  if (each.collection->kind == CollectionKind::kLedgerEntry) ledger_ = &each;
  Rows rows = RowsOf(session_, *each.collection, OwnerHere(), entries_);
  std::erase_if(rows, [&](const auto& row) { return !Within(each, *row); });
  if (each.newest_first) std::ranges::reverse(rows);
  const auto begin = [&](const std::string& name, const Fact& nothing) {
    if (!tree_.sums.contains(name)) return;
    for (Frame& frame : frames_) frame.sums.emplace(name, nothing);
    frames_.back().sums[name] = nothing;
  };
  begin(each.collection->CountName(), 0.0);
  for (const std::string& total : each.collection->TotalNames()) begin(total, Currency());
  return rows;
}

bool FormValues::Enter(const Repetition& each, std::unique_ptr<CollectionRow> row) {
  frames_.push_back({each.collection, std::move(row), {}});
  if (each.where && !each.where->Holds(*this, today_)) {
    frames_.pop_back();
    return false;
  }
  AddUp(*each.collection);
  return true;
}

void FormValues::AddUp(const Collection& collection) {
  const CollectionRow& row = *frames_.back().row;
  const auto around = [&](const std::string& name, auto&& add) {
    if (!tree_.sums.contains(name)) return;
    for (std::size_t i = 0; i + 1 < frames_.size(); ++i) add(frames_[i].sums[name]);
  };
  around(collection.CountName(), [](Fact& count) { count = std::get<double>(count) + 1; });
  for (const std::string& total : collection.TotalNames()) {
    if (!tree_.sums.contains(total)) continue;
    const Fact fact = row.Get(std::string_view(total).substr(kTotalStart.size()));
    const auto* const amount = std::get_if<Currency>(&fact);
    if (amount == nullptr) continue;
    around(total, [&](Fact& sum) { sum = std::get<Currency>(sum) + *amount; });
  }
}

}  // namespace tenora
