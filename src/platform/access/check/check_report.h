// Collects what the checks find, so that a file full of faults gives a list of bounded length.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/access/check.h"
#include "platform/access/format/corruption.h"
#include "platform/access/format/page.h"

namespace tenora::access {

enum class Remedy {
  kNone,
  kRebuildIndex,  // rows are safe
  kRestore,       // rows may be lost
  kCorrectRows,   // the file is sound, its rows contradict each other
  kCompact,       // only space is lost
};

// What a finding is about, as far as it is about one thing.
struct FindingPlace {
  std::string table, index;

  FindingPlace WithIndex(std::string name) const { return {table, std::move(name)}; }
};

class CheckReport {
 public:
  void Fault(const FindingPlace& place, std::optional<std::uint32_t> page,
             std::optional<std::uint32_t> row, std::string what, Remedy remedy);
  void Fault(const FindingPlace& place, RowPointer row, std::string what, Remedy remedy) {
    Fault(place, row.page, row.row, std::move(what), remedy);
  }
  void Fault(const FindingPlace& place, const Corruption& corruption, Remedy remedy) {
    Fault(place, corruption.page(), std::nullopt, corruption.what(), remedy);
  }
  void NotChecked(const FindingPlace& place, std::string what);

  // The findings, with a line for those left out; the report is then empty.
  std::vector<Finding> Take();

 private:
  void Add(Finding finding);

  std::vector<Finding> findings_;
  std::map<std::pair<std::string, std::string>, std::size_t> counts_;  // by table and index
  std::size_t left_out_ = 0;
};

}  // namespace tenora::access
