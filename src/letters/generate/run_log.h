// A run log on the disk, open and locked for the duration of its run, so that nobody resumes a run
// that is still in progress.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/generate/run_log_format.h"
#include "platform/runtime/clock.h"

namespace tenora {

// What the name of every run log begins with.
inline constexpr std::string_view kRunLogPrefix = "Letters ";

// The files in a data folder that may be run logs, in the order of their names; none where it
// cannot be listed. Raises nothing.
std::vector<std::filesystem::path> RunLogsIn(const std::filesystem::path& data_folder);

class RunLog {
 public:
  // A new log in the data folder, "Letters 2026-11-21 093000.log" or "… (1).log" where that is
  // taken; its head is on the disk when this returns. Raises the errors of FileError.
  RunLog(const std::filesystem::path& data_folder, GenerationRequest request, const Clock& clock);
  // Opens the log of a run that did not finish; nothing is added to it yet. Raises 70 (Permission
  // denied) for a run in progress, 321 (Invalid file format) for what ReadRunLog refuses, for the
  // log of another data folder, and for a copy: the letters mailed since would be mailed again.
  static RunLog Resume(const std::filesystem::path& path, const std::filesystem::path& data_folder,
                       const Clock& clock);
  // What a log says, in whatever state its run is. Raises 321 as Resume does, and the errors of
  // FileError.
  static LoggedRun Contents(const std::filesystem::path& path);
  // What a log says, without taking part in its run; nothing where that is in progress, complete or
  // forgotten, and for another file. Raises what Resume raises.
  static std::optional<LoggedRun> Look(const std::filesystem::path& path,
                                       const std::filesystem::path& data_folder);
  // What a log of this template says, also of a run in progress or of another data folder; nothing
  // for any other file, and where it cannot be read. Raises nothing.
  static std::optional<LoggedRun> History(const std::filesystem::path& path,
                                          std::string_view template_kind,
                                          std::string_view template_name);
  // What a log says in which this text occurs; nothing for any other, and where it cannot be read.
  // The text has no characters that are escaped in a log. Raises nothing.
  static std::optional<LoggedRun> Holding(const std::filesystem::path& path, std::string_view text);
  // Notes that a person has settled the run, also in a log that cannot be resumed. Raises 70 and
  // 321 as Resume does, and the errors of FileError.
  static void Forget(const std::filesystem::path& path, const Clock& clock);
  RunLog(RunLog&& other) noexcept;
  RunLog& operator=(RunLog&&) = delete;
  ~RunLog();

  const std::filesystem::path& path() const { return path_; }
  const LoggedRun& run() const { return run_; }
  const GenerationRequest& request() const { return run_.request; }
  const Recipient& recipient(std::size_t number) const {
    return run_.request.recipients[number - 1];
  }
  const LoggedLetter& letter(std::size_t number) const { return run_.letters[number - 1]; }
  std::size_t count() const { return run_.letters.size(); }

  // Notes what is to be written on a letter; the file is kept where none is given. Nothing reaches
  // the log before Write.
  void Note(std::size_t number, LetterState state, const std::string& detail = {},
            const std::string& fingerprint = {});
  void NoteFile(std::size_t number, const std::filesystem::path& file);
  // Keeps an answer for every letter from now on.
  void NoteAnswer(const std::string& prompt, const std::string& answer);
  void Note(RunRemark remark);
  // Writes the pending lines: they survive the end of this process.
  void Write();
  // Writes and waits for the disk: they survive a power cut too.
  void Sync();

 private:
  RunLog(std::filesystem::path path, const Clock& clock) : path_(std::move(path)), clock_(clock) {}
  void Open();
  void LockNew();
  // False for a run in progress.
  bool LockOld(int kind);
  void LockForChange();
  // Reads what whole lines the file has; the result is their length.
  std::size_t Read();
  void CheckOrigin(const std::filesystem::path& data_folder) const;

  std::filesystem::path path_;
  std::filesystem::path data_folder_;
  const Clock& clock_;
  int fd_ = -1;
  LoggedRun run_;
  std::string noted_;
};

}  // namespace tenora
