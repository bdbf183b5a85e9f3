// The values that a template's forms see while they are filled: of the rows around, of the sums so
// far, and of the recipient.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "merge/forms/collection_rows.h"
#include "merge/forms/form_tree.h"
#include "rental/session.h"

namespace tenora {

class FormValues : public FactSource {
 public:
  // All outlive this. One of the recipients.
  FormValues(Session& session, const FactSource& recipient, const CollectionOwner& owner,
             const FormTree& tree, Date today, LatestLedger& entries);

  Fact Get(std::string_view name) const override;
  Date today() const { return today_; }
  // Whether a value is the recipient's own, of no row and no sum.
  bool IsRecipients(std::string_view name) const;

  // Calls `use` for each row that the repetition asks for, with its values in sight.
  template <typename Use>
  void ForEachRow(const Repetition& each, Use&& use) {
    for (auto& row : Begin(each)) {
      if (!Enter(each, std::move(row))) continue;
      use();
      frames_.pop_back();
    }
  }

 private:
  using Rows = std::vector<std::unique_ptr<CollectionRow>>;

  struct Frame {
    const Collection* collection = nullptr;  // null for the letter's own
    std::unique_ptr<CollectionRow> row;
    std::map<std::string, Fact, std::less<>> sums;
  };

  // The rows within the days, in the order asked for, and the sums of a new repetition at nothing.
  Rows Begin(const Repetition& each);
  // False, and no row entered, where the condition does not hold.
  bool Enter(const Repetition& each, std::unique_ptr<CollectionRow> row);
  void AddUp(const Collection& collection);
  CollectionOwner OwnerHere() const;
  bool Within(const Repetition& each, const CollectionRow& row) const;
  Fact OpeningBalance() const;

  Session& session_;
  const FactSource& recipient_;
  const CollectionOwner owner_;
  const FormTree& tree_;
  const Date today_;
  LatestLedger& entries_;
  const Repetition* ledger_;  // the latest over the ledger, or the first to come
  std::vector<Frame> frames_;
};

}  // namespace tenora
