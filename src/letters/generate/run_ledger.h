// What a run was asked and what became of each letter, kept so that whatever ends the run, at
// whatever moment, nothing is lost and nothing is done twice. One store is the run log, a file
// beside the letters; the other is the queue on a server.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "letters/generate/logged_run.h"
#include "platform/runtime/error.h"

namespace tenora {

// What is noted of the run itself.
enum class RunRemark {
  kResumed,
  kStopped,    // before the last letter
  kEnded,      // something may be left to do
  kComplete,   // nothing is
  kForgotten,  // a person has settled what was left
};

// The store cannot be reached, or the letters are no longer this process's to make: nothing more
// may be done with any of them.
class LedgerLost : public RuntimeError {
 public:
  using RuntimeError::RuntimeError;
};

// A letter that is ready to be written, and wants a name.
struct NameWish {
  std::size_t number = 0;
  std::filesystem::path series;  // "…/Jane Smith/Rent review", of "Rent review.rtf", "…(1).rtf", …
  std::size_t place = 0;         // in the series, of the first name that is free on the disk
  LetterState state = LetterState::kSaving;
  std::string fingerprint;
};

class RunLedger {
 public:
  virtual ~RunLedger() = default;
  RunLedger& operator=(const RunLedger&) = delete;

  const LoggedRun& run() const { return run_; }
  const GenerationRequest& request() const { return run_.request; }
  const Recipient& recipient(std::size_t number) const {
    return run_.request.recipients[number - 1];
  }
  const LoggedLetter& letter(std::size_t number) const { return run_.letters[number - 1]; }
  std::size_t count() const { return run_.letters.size(); }

  // Notes what is to be kept of a letter; the file is kept where none is given. Nothing is in the
  // store before Write.
  void Note(std::size_t number, LetterState state, const std::string& detail = {},
            const std::string& fingerprint = {});
  void NoteFile(std::size_t number, const std::filesystem::path& file);
  // Keeps an answer for every letter from now on.
  void NoteAnswer(const std::string& prompt, const std::string& answer);
  // Brings what was noted to the store: it survives the end of this process.
  virtual void Write() = 0;
  // Writes and waits for the disk: it survives a power cut too.
  virtual void Sync() = 0;
  // The run ends, for now. As Sync.
  virtual void Close(RunRemark remark) = 0;

  // The log's own file; none for a queue.
  virtual std::filesystem::path path() const { return {}; }

  // The letter's place in the whole run, of which the ledger may have a part, and the run's size.
  virtual std::size_t PlaceInRun(std::size_t number) const { return number; }
  virtual std::size_t LettersInRun() const { return count(); }

  // Whether the store gives the names of the letters' files, many at once, rather than the disk one
  // by one: several machines may write to one folder.
  virtual bool GivesNames() const { return false; }
  // The names, which nobody else gets, in the order of the wishes; they are noted, with the state,
  // when this returns. Raises LedgerLost.
  virtual std::vector<std::filesystem::path> TakeNames(std::span<const NameWish> /*wishes*/) {
    return {};
  }

  // Whether the letters are still this process's, as far as its clock says.
  virtual bool StillOurs() const { return true; }
  // An error with one letter that would meet the others too. True where the run is to end for now,
  // and goes on later by itself; false where it is that letter's failure.
  virtual bool Suspend(const std::string& /*problem*/) { return false; }
  // Whoever tries this letter again without a person's doing meets the same failure.
  virtual void GiveUp(std::size_t /*number*/) {}

 protected:
  explicit RunLedger(std::filesystem::path data_folder) : data_folder_(std::move(data_folder)) {}
  RunLedger(RunLedger&&) = default;

  const std::filesystem::path& data_folder() const { return data_folder_; }

  LoggedRun run_;

 private:
  // What the store keeps of the letter has changed.
  virtual void LetterNoted(std::size_t number) = 0;
  virtual void AnswerNoted(const std::string& prompt, const std::string& answer) = 0;

  std::filesystem::path data_folder_;
};

}  // namespace tenora
