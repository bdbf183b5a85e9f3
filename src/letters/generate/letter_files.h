// The letters of a run as files: what earlier attempts left of one, and how it is written so that
// after a kill it is neither lost, nor saved twice, nor taken for a person's work.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "letters/frm_letter.h"
#include "letters/generate/run_ledger.h"
#include "letters/generation.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {

// Also a link that leads nowhere. An empty file, which a power cut may leave, is removed.
bool IsOnDisk(const std::filesystem::path& path);

// "1234 bytes, 0123456789abcdef", by which a log knows the content of a letter's file.
std::string Fingerprint(std::string_view text);
// Whether a run wrote the content with this fingerprint as this letter's.
bool Wrote(const LoggedLetter& letter, std::string_view fingerprint);
// Whether the letter's file is as the run wrote it.
bool IsAsWritten(const LoggedLetter& letter, const std::filesystem::path& file);

class LetterFiles {
 public:
  // The log outlives this object.
  LetterFiles(RunLedger& log, std::filesystem::path data_folder)
      : log_(log), data_folder_(std::move(data_folder)) {}

  // The whole letter that an earlier run saved; empty when there is none. A damaged one is left as
  // it is, with a warning.
  std::filesystem::path SavedBefore(LetterReport& report) const;
  // The number of the other letter of the run whose content the file of that letter has, as when
  // somebody has exchanged the names of two; 0 where it has its own, or none of the run's.
  std::size_t OtherIn(const LetterReport& report) const;
  // Saves a new letter, held back or not, under a name as LetterNames gives it. Where the ledger
  // gives the names, and the letter is handed over to nobody, it waits for SaveWaiting; the report
  // has no file then. Raises what SaveGenerated raises, and LedgerLost.
  void Save(frmLetter& letter, LetterReport& report, const std::string& name);
  // Saves the letters that wait, and gives their reports.
  std::vector<LetterReport> SaveWaiting();

  // Of a letter that an earlier run held back:

  // Whether its file is not as the program wrote it.
  bool ChangedByHand(const LetterReport& report);
  // Notes the reasons that still hold a letter changed by hand.
  void NoteHeld(const LetterReport& report);
  // Puts a letter merged anew in place of the unchanged file. False where both are the same.
  bool ReplaceHeld(const frmLetter& letter, const LetterReport& report);

 private:
  // A letter that has everything but its name.
  struct Unnamed {
    LetterReport report;
    std::filesystem::path series;  // as of a NameWish
    std::string text, fingerprint;
    std::optional<RuntimeError> error;  // why it could not be written
  };

  void SaveByLog(frmLetter& letter, LetterReport& report, const std::string& name);
  // Gives them names and writes them; those that cannot be written have an error then. Raises
  // LedgerLost.
  void Write(std::vector<Unnamed>& letters, Durability durability);
  NameWish WishOf(const Unnamed& letter) const;

  RunLedger& log_;
  std::filesystem::path data_folder_;
  std::vector<Unnamed> waiting_;
};

}  // namespace tenora
