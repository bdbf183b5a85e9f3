// Collects findings; bounds their number for files with very many faults.
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
  kRebuildIndex,  // no rows are lost
  kRestore,       // rows may be lost
  kCorrectRows,   // the file is intact, but its rows contradict each other
  kCompact,       // only space is lost
};

// The table and index that a finding is about; empty when it is not about one.
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
  // Of what is not a fault, on this page or no certain one.
  void Note(const FindingPlace& place, std::optional<std::uint32_t> page, std::string what);

  // Returns the findings, with a line that counts those left out, and clears the report.
  std::vector<Finding> Take();

 private:
  void Add(Finding finding);

  std::vector<Finding> findings_;
  std::map<std::pair<std::string, std::string>, std::size_t> counts_;  // by table and index
  std::size_t left_out_ = 0;
};

}  // namespace tenora::access
