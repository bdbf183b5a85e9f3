#include "platform/access/check/check_report.h"

namespace tenora::access {
namespace {

constexpr std::size_t kMostOfOnePlace = 25;
constexpr std::size_t kMostInAll = 500;

std::string RemedyText(Remedy remedy) {
  switch (remedy) {
    case Remedy::kNone:
      return {};
    case Remedy::kRebuildIndex:
      return "Compact and repair a copy of the file in the program that created it, which rebuilds "
             "the "
             "index; do not change the table before that.";
    case Remedy::kRestore:
      return "Rows may be lost: keep a copy of the file, compact and repair it in the program that "
             "created it, and compare the table with the last backup.";
    case Remedy::kCorrectRows:
      return "Correct the rows in the program that created the file.";
    case Remedy::kCompact:
      return "No rows are affected; compact the file in the program that created it.";
  }
  return {};
}

}  // namespace

void CheckReport::Fault(const FindingPlace& place, std::optional<std::uint32_t> page,
                        std::optional<std::uint32_t> row, std::string what, Remedy remedy) {
  Add({Finding::Kind::kFault, place.table, place.index, page, row, std::move(what),
       RemedyText(remedy)});
}

void CheckReport::NotChecked(const FindingPlace& place, std::string what) {
  Add({Finding::Kind::kNotChecked, place.table, place.index, {}, {}, std::move(what), {}});
}

void CheckReport::Note(const FindingPlace& place, std::optional<std::uint32_t> page,
                       std::string what) {
  Add({Finding::Kind::kNote, place.table, place.index, page, {}, std::move(what), {}});
}

void CheckReport::Add(Finding finding) {
  if (findings_.size() < kMostInAll &&
      ++counts_[{finding.table, finding.index}] <= kMostOfOnePlace) {
    findings_.push_back(std::move(finding));
  } else {
    ++left_out_;
  }
}

std::vector<Finding> CheckReport::Take() {
  if (left_out_ > 0) {
    Finding& rest = findings_.emplace_back();
    rest.what = std::to_string(left_out_) + " more findings are not shown";
  }
  left_out_ = 0;
  counts_.clear();
  return std::exchange(findings_, {});
}

}  // namespace tenora::access
