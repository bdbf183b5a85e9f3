#include "letters/generate/letter_files.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/dialogs/guard.h"
#include "platform/runtime/files.h"
#include "platform/runtime/free_file_name.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

// A power cut may leave an empty file.
void RemoveIfEmpty(const fs::path& path) {
  std::error_code error;
  const bool empty = fs::is_regular_file(fs::symlink_status(path, error)) &&
                     fs::file_size(path, error) == 0 && !error;
  if (empty) fs::remove(path, error);
}

// Whether the file contains a whole letter, from its first brace to its last: a power cut leaves
// one that was not yet synced empty or truncated.
bool IsWholeLetter(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(fs::symlink_status(path, error))) return false;
  const std::string text = ReadWholeFile(path);
  const std::size_t last = text.find_last_not_of(std::string_view(" \r\n\0", 4));
  return text.starts_with("{\\rtf") && text[last] == '}';
}

}  // namespace

std::string Fingerprint(std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325U;  // FNV-1a
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  std::array<char, 48> shown{};
  std::snprintf(shown.data(), shown.size(), "%zu bytes, %016llx", text.size(),
                static_cast<unsigned long long>(hash));
  return shown.data();
}

bool IsOnDisk(const fs::path& path) {
  RemoveIfEmpty(path);
  std::error_code error;
  return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

bool Wrote(const LoggedLetter& letter, std::string_view fingerprint) {
  return letter.fingerprint.find(fingerprint) != std::string::npos;
}

bool IsAsWritten(const LoggedLetter& letter, const fs::path& file) {
  return Wrote(letter, Fingerprint(ReadWholeFile(file)));
}

std::size_t LetterFiles::OtherIn(const LetterReport& report) const {
  const std::string fingerprint = Fingerprint(ReadWholeFile(report.file));
  if (Wrote(log_.letter(report.number), fingerprint)) return 0;
  for (std::size_t number = 1; number <= log_.count(); ++number) {
    if (Wrote(log_.letter(number), fingerprint)) return number;
  }
  return 0;
}

fs::path LetterFiles::SavedBefore(LetterReport& report) const {
  const LoggedLetter& logged = log_.letter(report.number);
  if (logged.file.empty()) return {};
  fs::path file = data_folder_ / logged.file;
  if (!IsOnDisk(file)) return {};
  const bool whole = IsWholeLetter(file);
  // The run ended before it took the name, and another run took it.
  const bool name_not_taken =
      logged.state == LetterState::kSaving || logged.state == LetterState::kHolding;
  if (whole && name_not_taken && !logged.detail.empty() &&
      Fingerprint(ReadWholeFile(file)) != logged.detail) {
    return {};
  }
  if (whole) return file;
  report.warnings.push_back(file.string() +
                            " is damaged and was left as it is; a new letter was made");
  return {};
}

void LetterFiles::Save(frmLetter& letter, LetterReport& report, const std::string& name) {
  if (!log_.GivesNames()) return SaveByLog(letter, report, name);
  const GenerationRequest& request = log_.request();
  const bool held = report.result == LetterReport::Result::kHeld;
  const bool waits = request.destination == Destination::kFolder && !request.pdf && !held;
  SaveWay way;
  way.name = name;
  way.write = [&](const fs::path& first, const std::string& text) {
    std::vector<Unnamed> unnamed{
        {report, fs::path(first).replace_extension(), text, Fingerprint(text), {}}};
    if (waits) {
      waiting_.push_back(std::move(unnamed.front()));
      return fs::path();
    }
    Write(unnamed, Durability::kSynced);
    if (unnamed.front().error) throw *unnamed.front().error;
    return unnamed.front().report.file;
  };
  letter.SaveGenerated(way);
  report.file = letter.members().FilePath;
  if (held) {
    log_.Note(report.number, LetterState::kHeld, report.problem,
              log_.letter(report.number).fingerprint);
  }
}

std::vector<LetterReport> LetterFiles::SaveWaiting() {
  std::vector<Unnamed> letters = std::exchange(waiting_, {});
  Write(letters, IsOnNetwork(data_folder_) ? Durability::kSynced : Durability::kUntilSync);
  std::vector<LetterReport> reports;
  for (Unnamed& letter : letters) {
    // It would meet every other letter too: this one goes back with them.
    const bool full = letter.error && letter.error->number() == error_number::kDiskFull;
    if (full && log_.Suspend(ErrorText(*letter.error))) continue;
    if (letter.error) {
      letter.report.result = LetterReport::Result::kFailed;
      letter.report.problem = ErrorText(*letter.error);
    }
    reports.push_back(std::move(letter.report));
  }
  return reports;
}

// The ledger keeps letters of its runs apart; a file of anybody else's is seen on the disk, if only
// when it is written.
void LetterFiles::Write(std::vector<Unnamed>& letters, Durability durability) {
  std::vector<Unnamed*> unwritten;
  for (Unnamed& letter : letters) unwritten.push_back(&letter);
  while (!unwritten.empty()) {
    std::vector<NameWish> wishes;
    std::erase_if(unwritten, [&](Unnamed* letter) {
      try {
        wishes.push_back(WishOf(*letter));
      } catch (...) {
        letter->error = CurrentError();
      }
      return letter->error.has_value();
    });
    const std::vector<fs::path> names = log_.TakeNames(wishes);
    std::vector<Unnamed*> again;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (!log_.StillOurs()) throw LedgerLost(error_number::kCancelled, "no longer in hand");
      LetterReport& report = unwritten[i]->report;
      try {
        if (WriteNewFile(names[i], unwritten[i]->text, durability)) {
          report.file = names[i];
        } else {
          again.push_back(unwritten[i]);
        }
      } catch (...) {
        unwritten[i]->error = CurrentError();
        log_.NoteFile(report.number, {});
      }
    }
    unwritten = std::move(again);
  }
}

NameWish LetterFiles::WishOf(const Unnamed& letter) const {
  const bool held = letter.report.result == LetterReport::Result::kHeld;
  NameWish wish{.number = letter.report.number,
                .series = letter.series,
                .place = 0,
                .state = held ? LetterState::kHolding : LetterState::kSaving,
                .fingerprint = letter.fingerprint};
  const auto taken = [&](const char* ending) {
    const std::string place = wish.place == 0 ? "" : "(" + std::to_string(wish.place) + ")";
    return NameTaken(letter.series.string() + place + ending);
  };
  while (taken(".rtf") || (log_.request().pdf && taken(".pdf"))) ++wish.place;
  return wish;
}

// The name is in the log before the letter takes it: after a kill the letter is found again rather
// than saved twice.
void LetterFiles::SaveByLog(frmLetter& letter, LetterReport& report, const std::string& name) {
  const bool held = report.result == LetterReport::Result::kHeld;
  SaveWay way;
  way.name = name;
  way.durability = log_.request().destination == Destination::kEmail || held
                       ? Durability::kSynced
                       : Durability::kUntilSync;
  way.pdf_name_free = log_.request().pdf;
  const std::string fingerprint = Fingerprint(letter.rtfLetter.TextRTF());
  way.before_write = [&](const fs::path& path) {
    log_.NoteFile(report.number, path);
    log_.Note(report.number, held ? LetterState::kHolding : LetterState::kSaving, fingerprint);
    log_.Write();
  };
  try {
    letter.SaveGenerated(way);
  } catch (...) {
    log_.NoteFile(report.number, {});
    throw;
  }
  report.file = letter.members().FilePath;
  if (held) log_.Note(report.number, LetterState::kHeld, report.problem, fingerprint);
}

bool LetterFiles::ChangedByHand(const LetterReport& report) {
  const LoggedLetter logged = log_.letter(report.number);
  if (logged.state == LetterState::kHolding) {
    // The run ended before it could say why; until the letter is merged again it stays held.
    log_.Note(report.number, LetterState::kHeld, "held back by a run that was cut short",
              logged.detail);
  }
  return !IsAsWritten(logged, report.file);
}

// With the fingerprint from before: what a person has changed is never merged over.
void LetterFiles::NoteHeld(const LetterReport& report) {
  if (report.result != LetterReport::Result::kHeld) return;
  const std::string fingerprint = log_.letter(report.number).fingerprint;
  log_.Note(report.number, LetterState::kHeld, report.problem, fingerprint);
}

// Until the new letter is noted, the log knows both contents as the program's own: whichever of
// them a kill leaves is merged again rather than taken for a person's correction.
bool LetterFiles::ReplaceHeld(const frmLetter& letter, const LetterReport& report) {
  const std::string fingerprint_before = Fingerprint(ReadWholeFile(report.file));
  const std::string fingerprint = Fingerprint(letter.rtfLetter.TextRTF());
  const bool other = fingerprint != fingerprint_before;
  if (other) {
    const std::string reason = log_.letter(report.number).detail;
    log_.Note(report.number, LetterState::kHeld, reason, fingerprint_before + "; " + fingerprint);
    log_.Sync();
    WriteWholeFile(report.file, letter.rtfLetter.TextRTF());
  }
  if (report.result == LetterReport::Result::kHeld) {
    log_.Note(report.number, LetterState::kHeld, report.problem, fingerprint);
  } else {
    log_.Note(report.number, LetterState::kSaving, fingerprint);
  }
  log_.Write();
  return other;
}

}  // namespace tenora
