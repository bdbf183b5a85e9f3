// A run of letters as its ledger has it: what it was asked, and what became of each letter.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/generation_request.h"

namespace tenora {

// How far a letter has come. Only the last line of a letter counts, but for its file.
enum class LetterState {
  kWaiting,   // no line yet
  kSaving,    // about to take this file name
  kSaved,     // on the disk
  kSending,   // about to be handed to the mail server
  kMailed,    // the server has taken it
  kPrinting,  // its print job is about to be handed on
  kPrinted,
  kFailed,
  kHolding,    // about to take this file name, and then to be held back
  kHeld,       // on the disk, and held back by the check of the finished letter
  kNoAddress,  // on the disk, for a recipient without an e-mail address
};

// As ledgers write it: "no address".
std::string_view WordOf(LetterState state);
std::optional<LetterState> LetterStateOf(std::string_view word);
// "folder", "printer" or "email".
std::string_view WordOf(Destination destination);
std::optional<Destination> DestinationOf(std::string_view word);

// Whether nothing is left to do on a letter. One that was to be mailed may have been printed for
// want of an address.
inline bool IsDone(LetterState state, Destination destination) {
  switch (destination) {
    case Destination::kPrinter:
      return state == LetterState::kPrinted;
    case Destination::kEmail:
      return state == LetterState::kMailed || state == LetterState::kPrinted;
    case Destination::kFolder:
      break;
  }
  return state == LetterState::kSaved;
}

// Whether the letter was handed over without confirmation that it arrived.
inline bool InDoubt(LetterState state) {
  return state == LetterState::kSending || state == LetterState::kPrinting;
}

// Whether the letter waits for a correction or a person's word.
inline bool HeldBack(LetterState state) {
  return state == LetterState::kHolding || state == LetterState::kHeld;
}

struct LoggedLetter {
  LetterState state = LetterState::kWaiting;
  std::string file;    // below the data folder, "Jane Smith/Rent review(1).rtf"; empty when none
  std::string detail;  // address, printer, why it failed or is held
  // Of the file as the program wrote it, or of both while a held one is being replaced. Another
  // content is a person's correction, or another letter.
  std::string fingerprint;
  std::string attempt = {};  // when the run that wrote the state began, "2026-11-21 09:30:00"
};

// What a line with this state, detail and, for kHeld, fingerprint says of the content of a letter's
// file; empty where it says nothing, and what earlier lines on the same file said still holds.
inline const std::string& FingerprintIn(LetterState state, const std::string& detail,
                                        const std::string& fingerprint) {
  const bool taking = state == LetterState::kSaving || state == LetterState::kHolding;
  return taking ? detail : fingerprint;
}

struct LoggedRun {
  std::string log_name;      // of the log's own file
  std::string data_folder;   // as an absolute path
  std::string started = {};  // "2026-11-21 09:30:00"
  GenerationRequest request;
  std::vector<LoggedLetter> letters;  // one for each recipient, in the same order
};

}  // namespace tenora
