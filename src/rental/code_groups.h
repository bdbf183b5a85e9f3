// The distinct codes among those of many records, as a database compares texts.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/query/text_match.h"

namespace tenora {

class CodeGroups {
 public:
  explicit CodeGroups(const query::TextMatch& match) : numbers_(match) {}

  // The next record's code.
  void Add(const std::string& code);

  const std::vector<std::string>& codes() const { return codes_; }
  // The numbers of the records with one of the codes, from 0 in the order they were added in.
  const std::vector<std::size_t>& Members(std::size_t code) const { return members_[code]; }
  // The number of a record's code.
  std::size_t Of(std::size_t record) const { return of_[record]; }

 private:
  query::TextMap<std::size_t> numbers_;
  std::vector<std::string> codes_;
  std::vector<std::vector<std::size_t>> members_;
  std::vector<std::size_t> of_;
};

}  // namespace tenora
