// Tells the database of the letters that a run makes next, so that a server gives the rows of many
// in one round trip.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "letters/generate/run_ledger.h"
#include "rental/session.h"

namespace tenora {

class LettersToCome {
 public:
  // `numbers` of the letters to be merged, ascending. All arguments outlive this.
  LettersToCome(Session& session, const RunLedger& log, std::vector<std::size_t> numbers);
  ~LettersToCome();
  // Called before the letter of this number is merged. Raises nothing.
  void Before(std::size_t number);

 private:
  class Links;

  Session& session_;
  const RunLedger& log_;
  std::vector<std::size_t> numbers_;
  std::unique_ptr<Links> links_;  // none for a file
  std::size_t told_ = 0;          // place in numbers_ behind those that the database knows of
};

}  // namespace tenora
