#include "platform/access/check/index_check.h"

#include <algorithm>

namespace tenora::access {
namespace {

std::uint32_t Packed(RowPointer row) { return row.page << 8 | row.row; }

std::string RowName(RowPointer row) {
  return "row " + std::to_string(row.row) + " on page " + std::to_string(row.page);
}

}  // namespace

IndexCheck::IndexCheck(const CheckContext& context, FindingPlace place,
                       const TableDefinition& table, const PhysicalIndex& index,
                       const KeyList& keys)
    : context_(context),
      place_(std::move(place)),
      table_(table),
      index_(index),
      keys_(&keys),
      owned_(context.ledger.ReadMap(index.owned_pages, "index '" + place_.index + "'", place_)),
      user_(context.ledger.AddUser("index '" + place_.index + "' of table '" + place_.table + "'")),
      matched_(keys.entries().size()),
      unkeyed_matched_(keys.unkeyed().size()) {}

void IndexCheck::Run() {
  if (!keys_->reason().empty()) {
    std::string what = keys_->has_keys() ? std::to_string(keys_->unkeyed_count()) + " keys: "
                                         : std::string("the keys: ");
    context_.report.NotChecked(place_, what.append(keys_->reason()));
  }
  Visit(index_.root_page, 0);
  for (const Level& level : levels_) {
    if (level.next == 0) continue;
    Fault(level.page, "the page should be the last of its level, but names page " +
                          std::to_string(level.next) + " as the next");
  }
  for (std::uint32_t page = owned_.NextFrom(0); page != PageBuffer::kNone;
       page = owned_.NextFrom(page + 1)) {
    if (context_.ledger.IsClaimedBy(page, user_)) continue;
    // What is below a page that cannot be read belongs to the index all the same.
    if (!context_.ledger.Claim(page, user_, place_) || !complete_ || IsBlank(page)) continue;
    Fault(page, "the index owns the page, but no entry leads there");
  }
  if (keys_->is_sum()) return;
  if (complete_) CheckRowsHaveEntries();
  if (unique()) CheckUnique(*keys_);
}

bool IndexCheck::Differs() const {
  return !complete_ || keys_->unkeyed_count() > 0 || sum_ != keys_->sum() || (unique() && repeats_);
}

void IndexCheck::CompareEntries(const KeyList& keys) {
  keys_ = &keys;
  matched_.assign(keys.entries().size(), false);
  unkeyed_matched_.assign(keys.unkeyed().size(), false);
  explained_.clear();
  rows_.clear();
  position_ = 0;
  PageBuffer buffer;
  IndexPage page;
  for (const std::uint32_t number : leaves_) {
    context_.file.Read(number, buffer);
    ReadIndexPage(context_.file.layout(), buffer, page);
    for (const IndexEntry& entry : page.entries) {
      if (keys.part().Has({}, entry.row)) MatchEntry(entry, number);
    }
  }
  if (complete_) CheckRowsHaveEntries();
}

// A page that became empty stays with its index, blank, if the map of free pages starts after it.
bool IndexCheck::IsBlank(std::uint32_t number) const {
  PageBuffer page;
  context_.file.Read(number, page);
  return std::ranges::all_of(Bytes(page.bytes).first(page.size),
                             [](std::byte b) { return b == std::byte{0}; });
}

void IndexCheck::Fault(std::optional<std::uint32_t> page, std::string what) {
  context_.report.Fault(place_, page, {}, std::move(what), Remedy::kRebuildIndex);
}

void IndexCheck::Visit(std::uint32_t number, std::size_t level) {
  if (level == kMostIndexLevels) {
    complete_ = false;
    return Fault(number, "the index has too many levels");
  }
  if (!context_.ledger.Claim(number, user_, place_)) {
    complete_ = false;
    return;
  }
  try {
    PageBuffer buffer;
    IndexPage page;
    context_.file.Read(number, buffer);
    ReadIndexPage(context_.file.layout(), buffer, page);
    CheckPage(page, number, level);
    if (!page.leaf) return VisitNode(number, page, level);
    if (leaf_level_ == 0) leaf_level_ = level + 1;
    if (leaf_level_ != level + 1) Fault(number, "the leaf is not on the level of the others");
    if (keys_->is_sum()) leaves_.push_back(number);
    for (const IndexEntry& entry : page.entries) {
      repeats_ = repeats_ || (has_last_ && last_.key == entry.key && last_.row != entry.row);
      CheckOrder(entry, number);
      if (keys_->is_sum()) {
        sum_.Add(entry.key, entry.row);
      } else {
        MatchEntry(entry, number);
      }
    }
  } catch (const Corruption& corruption) {
    complete_ = false;
    context_.report.Fault(place_, corruption, Remedy::kRebuildIndex);
  }
}

void IndexCheck::VisitNode(std::uint32_t number, const IndexPage& page, std::size_t level) {
  for (const IndexEntry& entry : page.entries) {
    Visit(entry.child, level + 1);
    if (has_last_ && last_ > entry) {
      Fault(number, "the entry for page " + std::to_string(entry.child) +
                        " sorts before the last entry below that page");
    }
    // What follows must sort after this entry, not only after those visited below it.
    last_ = entry;
    has_last_ = true;
  }
  if (page.tail == 0) return Fault(number, "the node has no tail page");
  Visit(page.tail, level + 1);
}

void IndexCheck::CheckPage(const IndexPage& page, std::uint32_t number, std::size_t level) {
  if (!owned_.Contains(number)) Fault(number, "the index does not own the page, but leads there");
  if (page.owner != table_.page) {
    Fault(number, "the page says that it belongs to the table defined on page " +
                      std::to_string(page.owner));
  }
  if (page.free_bytes != page.unused_bytes) {
    Fault(number, "the page says that " + std::to_string(page.free_bytes) +
                      " bytes are free, but there are " + std::to_string(page.unused_bytes));
  }
  if (level == levels_.size()) levels_.emplace_back();
  Level& before = levels_[level];
  if (page.previous != before.page) {
    Fault(number, "page " + std::to_string(before.page) +
                      " comes before this one, but it names page " + std::to_string(page.previous));
  }
  if (before.page != 0 && before.next != number) {
    Fault(before.page, "page " + std::to_string(number) + " comes next, but the page names page " +
                           std::to_string(before.next));
  }
  before = {number, page.next};
}

void IndexCheck::CheckOrder(const IndexEntry& entry, std::uint32_t page) {
  // The entry of the node above repeats the last of the page before it.
  if (has_last_ && last_ > entry) {
    Fault(page, "the entry for " + RowName(entry.row) + " is out of order");
  } else if (has_last_ && last_.key == entry.key && last_.row == entry.row) {
    Fault(page, "the entry for " + RowName(entry.row) + " is there twice");
  }
  last_ = entry;
  has_last_ = true;
}

void IndexCheck::MatchEntry(const IndexEntry& entry, std::uint32_t page) {
  const std::vector<KeyList::Entry>& expected = keys_->entries();
  std::size_t at = position_;
  if (at >= expected.size() || expected[at].row != entry.row || expected[at].key != entry.key) {
    at =
        static_cast<std::size_t>(std::partition_point(expected.begin(), expected.end(),
                                                      [&](const KeyList::Entry& row) {
                                                        return Compare(entry, row.key, row.row) > 0;
                                                      }) -
                                 expected.begin());
  }
  const bool found =
      at < expected.size() && expected[at].row == entry.row && expected[at].key == entry.key;
  if (!found || matched_[at]) return ExplainEntry(entry, page);
  matched_[at] = true;
  position_ = at + 1;
}

void IndexCheck::ExplainEntry(const IndexEntry& entry, std::uint32_t page) {
  const std::vector<RowPointer>& unkeyed = keys_->unkeyed();
  const auto by_place = [](RowPointer left, RowPointer right) {
    return Packed(left) < Packed(right);
  };
  const auto place = std::lower_bound(unkeyed.begin(), unkeyed.end(), entry.row, by_place);
  if (place != unkeyed.end() && *place == entry.row) {
    const auto at = static_cast<std::size_t>(place - unkeyed.begin());
    if (!unkeyed_matched_[at]) {
      unkeyed_matched_[at] = true;
      return;
    }
    return Fault(page, RowName(entry.row) + " has more than one entry");
  }
  if (rows_.empty()) {
    for (const KeyList::Entry& row : keys_->entries()) rows_.push_back(Packed(row.row));
    std::sort(rows_.begin(), rows_.end());
  }
  if (!std::binary_search(rows_.begin(), rows_.end(), Packed(entry.row))) {
    return Fault(page,
                 "an entry leads to " + RowName(entry.row) + ", where no row of the index is");
  }
  explained_.push_back(Packed(entry.row));
  Fault(page, "the key of an entry is not that of " + RowName(entry.row));
}

void IndexCheck::CheckRowsHaveEntries() {
  std::sort(explained_.begin(), explained_.end());
  const auto check = [&](RowPointer row, bool matched) {
    if (matched || std::binary_search(explained_.begin(), explained_.end(), Packed(row))) return;
    context_.report.Fault(place_, row, "the row has no entry in the index", Remedy::kRebuildIndex);
  };
  for (std::size_t i = 0; i < matched_.size(); ++i) check(keys_->entries()[i].row, matched_[i]);
  // Which rows the index ignores can be known only from their keys.
  if (!keys_->has_keys() && (index_.flags & kIndexLeavesOutNulls) != 0) return;
  for (std::size_t i = 0; i < unkeyed_matched_.size(); ++i) {
    check(keys_->unkeyed()[i], unkeyed_matched_[i]);
  }
}

void IndexCheck::CheckUnique(const KeyList& keys) {
  const std::vector<KeyList::Entry>& rows = keys.entries();
  for (std::size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].has_null || rows[i].key != rows[i - 1].key) continue;
    context_.report.Fault(
        place_, rows[i].row,
        "the row has the key of " + RowName(rows[i - 1].row) + ", though the index is unique",
        Remedy::kCorrectRows);
  }
}

}  // namespace tenora::access
