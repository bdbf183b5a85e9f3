// What a run was asked and what became of each letter, kept so that whatever ends the run, at
// whatever moment, nothing is lost and nothing is done twice. One store is the run log, a file
// beside the letters; the other is the queue on a server.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "letters/generate/logged_run.h"

namespace tenora {

// What is noted of the run itself.
enum class RunRemark {
  kResumed,
  kStopped,    // before the last letter
  kEnded,      // something may be left to do
  kComplete,   // nothing is
  kForgotten,  // a person has settled what was left
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
  virtual void Note(RunRemark remark) = 0;
  // Brings what was noted to the store: it survives the end of this process.
  virtual void Write() = 0;
  // Writes and waits for the disk: it survives a power cut too.
  virtual void Sync() = 0;

  // The log's own file.
  virtual std::filesystem::path path() const = 0;

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
