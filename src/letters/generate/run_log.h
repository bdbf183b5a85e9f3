// A run log on the disk, open and locked for the duration of its run, so that nobody resumes a run
// that is still in progress.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "letters/generate/run_ledger.h"
#include "letters/generate/run_log_format.h"
#include "platform/runtime/clock.h"

namespace tenora {

// What the name of every run log begins with.
inline constexpr std::string_view kRunLogPrefix = "Letters ";

// The files in a data folder that may be run logs, in the order of their names; none where it
// cannot be listed. Raises nothing.
std::vector<std::filesystem::path> RunLogsIn(const std::filesystem::path& data_folder);

class RunLog final : public RunLedger {
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
  ~RunLog() override;

  std::filesystem::path path() const override { return path_; }
  // Nothing reaches the log before Write.
  void Note(RunRemark remark);
  using RunLedger::Note;
  void Write() override;
  void Sync() override;
  void Close(RunRemark remark) override;

 private:
  RunLog(std::filesystem::path path, const std::filesystem::path& data_folder, const Clock& clock)
      : RunLedger(data_folder), path_(std::move(path)), clock_(clock) {}
  void LetterNoted(std::size_t number) override;
  void AnswerNoted(const std::string& prompt, const std::string& answer) override;
  void Open();
  void LockNew();
  // False for a run in progress.
  bool LockOld(int kind);
  void LockForChange();
  // Reads what whole lines the file has; the result is their length.
  std::size_t Read();
  void CheckOrigin(const std::filesystem::path& data_folder) const;

  std::filesystem::path path_;
  const Clock& clock_;
  int fd_ = -1;
  std::string noted_;
};

}  // namespace tenora
