// The generation routine of frmMain's cmdGenerate_Click and `tenora generate`: one letter for
// each recipient, merged, saved and printed or mailed. Every run keeps a run log beside the letters
// (docs/generating.md), from which a run that was cut short is resumed.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "letters/generation_request.h"
#include "platform/printing/printing.h"
#include "rental/session.h"

namespace tenora {

// What an error with one letter does to the others.
enum class AfterError {
  kStop,           // the window: shown under "frmMain - cmdGenerate_Click", and the run ends
  kNextRecipient,  // the command line: noted, and the run goes on
};

// One letter as the run leaves it.
struct LetterReport {
  enum class Result {
    kDone,       // all that was asked
    kFailed,     // not all; `problem` says why, and resuming tries again
    kInDoubt,    // handed over, but it is not known whether it arrived: never sent again
    kNoAddress,  // saved; the recipient has no e-mail address
    kHeld,       // saved and not handed over; `problem` says what is wrong with the letter
  };

  std::size_t number = 0;  // of the recipient, from 1
  Recipient recipient;
  Result result = Result::kDone;
  std::filesystem::path file;         // the saved letter, empty when there is none
  std::string problem;                // "61 - Disk full: …"
  std::vector<std::string> warnings;  // of a letter that was made all the same
};

// Told of the run's progress, on the thread that runs it.
class GenerationObserver {
 public:
  virtual ~GenerationObserver() = default;
  // The log is written; `count` letters are to be made.
  virtual void Started(std::size_t /*count*/, const std::filesystem::path& /*log*/) {}
  // A letter (or its PDF) has been written under this name.
  virtual void Saved(const std::filesystem::path& /*file*/) {}
  // A letter is finished. One whose disk or printer fails at the end is reported a second time.
  virtual void LetterFinished(const LetterReport& /*report*/) {}
  // The database's server cannot be reached, and the run waits for so long until it can; and it
  // can.
  virtual void WaitingForServer(std::chrono::milliseconds /*most*/) {}
  virtual void ServerIsBack() {}
  // The print job has ended; the file is that of the PDF printer, else empty.
  virtual void JobPrinted(std::size_t /*letters*/, const std::filesystem::path& /*file*/) {}
  // Asked after each letter, when a window may also process its events: true ends the run after the
  // current letter.
  virtual bool StopAsked() { return false; }
};

// What a run leaves of all its letters together.
struct MergedFiles {
  std::filesystem::path pdf;           // empty: none
  std::size_t letters = 0, pages = 0;  // in the PDF
  std::vector<LetterReport> left_out;  // of the PDF; `problem` says why
  std::filesystem::path post_list;     // empty: none
  std::vector<std::string> problems;   // why there is none that was asked for

  bool whole() const { return left_out.empty() && problems.empty(); }
};

// How the run ended.
struct GenerationSummary {
  std::size_t asked = 0;                 // recipients of the run, with those of earlier attempts
  std::size_t done = 0;                  // with those done before
  std::size_t done_before = 0;           // by the runs that this one resumes
  std::vector<LetterReport> failed;      // why not, each
  std::vector<LetterReport> in_doubt;    // for a person to check
  std::vector<LetterReport> held;        // for a person to correct, or to send as they are
  std::vector<LetterReport> no_address;  // for a person to print, or to be mailed by resuming
  bool stopped = false;  // by StopAsked, an error with kStop, or a mail server that does not answer
  bool composed = false;  // mailed means: opened in the mail program, for the user to send
  std::filesystem::path log;
  MergedFiles merged;

  std::size_t untouched() const {
    return asked - done - failed.size() - in_doubt.size() - held.size() - no_address.size();
  }
  bool complete() const { return done == asked; }
};

// Chooses the recipients, from the caches as the run has just loaded them.
using ChooseRecipients = std::function<std::vector<Recipient>(const Caches& caches)>;

// What resuming does with a letter that is not done, by its number.
enum class Resuming {
  kUsual,    // what is missing; a held letter is looked at again
  kAsItIs,   // as kUsual, but a held letter is handed over as its file is
  kOnPaper,  // as kUsual, but printed, also in a run that e-mails: it is done then
  kLeft,     // nothing
};
using ResumeWay = std::function<Resuming(std::size_t number)>;

class Generation {
 public:
  // `printers` is for the printer destination; null otherwise. All outlive the generation.
  Generation(Session& session, AfterError after_error, GenerationObserver& observer,
             printing::Printers* printers = nullptr)
      : session_(session), after_error_(after_error), observer_(observer), printers_(printers) {}

  // How many threads merge the letters, 0 for one for each processor, up to four, as it is at
  // first. What is made, asked and logged does not depend on it.
  void MergeOn(unsigned threads) { threads_ = threads; }

  // For how long a run waits for a database server that went away; half a minute at first.
  void WaitForServer(std::chrono::milliseconds most) { wait_for_server_ = most; }

  // Opens the database, reloads the caches and the options and closes it; fills the request's
  // recipients by `choose`; then makes the letters. The template is read once: it may change or
  // disappear during the run. Raises before anything is made: a database that cannot be read (91,
  // shown already), a template or run log that cannot be read or written, what `choose` raises.
  GenerationSummary Run(GenerationRequest request, const ChooseRecipients& choose);

  // Does what the log shows to be missing, and nothing twice: a letter that was mailed, or perhaps
  // mailed, is never mailed again. A held letter that is looked at again is checked by its file
  // where a person has corrected that, else merged anew, and goes out when nothing holds it any
  // more. Without `way` all is done as usual. Raises what Run raises, and the errors of
  // RunLog::Resume.
  GenerationSummary Resume(const std::filesystem::path& log, ResumeWay way = {});

  // What the run of a log was asked, for whoever prepares to resume it. Raises as Resume does for a
  // log that cannot be read.
  static GenerationRequest RequestOf(const std::filesystem::path& log);

 private:
  Session& session_;
  AfterError after_error_;
  GenerationObserver& observer_;
  printing::Printers* printers_;
  unsigned threads_ = 0;
  std::chrono::milliseconds wait_for_server_ = std::chrono::seconds(30);
};

// As the window calls it, for the recipients that the request names, each tenant by the tenancy's
// code: a name alone would reach the first who has it. An error is shown in a box titled
// "frmMain - cmdGenerate_Click" and ends the run; letters already made stay, and the rest can be
// resumed from the log.
GenerationSummary GenerateSelection(Session& session, GenerationRequest request,
                                    GenerationObserver& observer,
                                    printing::Printers* printers = nullptr);

}  // namespace tenora
