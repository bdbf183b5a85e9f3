#include "letters/generate/letter_files.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/runtime/files.h"

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

// The name is in the log before the letter takes it: after a kill the letter is found again rather
// than saved twice.
void LetterFiles::Save(frmLetter& letter, LetterReport& report, const std::string& name) {
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
