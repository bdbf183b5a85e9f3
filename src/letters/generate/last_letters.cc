#include "letters/generate/last_letters.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <system_error>
#include <vector>

#include "letters/file_names.h"
#include "letters/generate/run_log.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtension = ".rtf";

// Whether a letter left, or may have left: one that is in doubt counts.
bool WasWritten(LetterState state, Destination destination) {
  return IsDone(state, destination) || InDoubt(state);
}

// "Notice.rtf" and "Notice(12).rtf" for the title "Notice", letter case aside.
bool IsLetterOf(std::string_view file, std::string_view title) {
  if (file.size() < title.size() + kExtension.size()) return false;
  if (!EqualsNoCase(file.substr(0, title.size()), title)) return false;
  if (!EqualsNoCase(file.substr(file.size() - kExtension.size()), kExtension)) return false;
  std::string_view number = file.substr(title.size());
  number.remove_suffix(kExtension.size());
  if (number.empty()) return true;
  if (number.size() < 3 || number.front() != '(' || number.back() != ')') return false;
  return number.substr(1, number.size() - 2).find_first_not_of("0123456789") ==
         std::string_view::npos;
}

// The local day of a file's last change.
std::optional<Date> ChangeOf(const fs::directory_entry& entry) {
  std::error_code error;
  const fs::file_time_type changed = entry.last_write_time(error);
  if (error) return std::nullopt;
  const std::time_t time =
      std::chrono::system_clock::to_time_t(std::chrono::file_clock::to_sys(changed));
  std::tm local{};
  if (::localtime_r(&time, &local) == nullptr) return std::nullopt;
  try {
    return Date::FromCalendar(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  } catch (const RuntimeError&) {
    return std::nullopt;  // a year that nobody writes letters in
  }
}

std::set<std::string> FoldersIn(const fs::path& data_folder) {
  std::set<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(data_folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;
    if (entry->is_directory(unknown)) names.insert(entry->path().filename().string());
  }
  return names;
}

}  // namespace

LastLetters::LastLetters(const fs::path& data_folder, std::string_view template_kind,
                         std::string_view template_name, std::span<const RecipientRow> recipients,
                         const std::stop_token& stop) {
  ReadLogs(data_folder, template_kind, template_name, stop);
  ReadFolders(data_folder, template_name, recipients, stop);
}

std::optional<Date> LastLetters::Of(const Recipient& recipient) const {
  std::optional<Date> last;
  for (const std::string& code : {recipient.code, std::string()}) {
    const auto found = last_.find({recipient.name, code});
    if (found != last_.end() && (!last || found->second > *last)) last = found->second;
  }
  return last;
}

void LastLetters::Note(const std::string& name, const std::string& code, Date day) {
  Date& last = last_.try_emplace({name, code}, day).first->second;
  last = std::max(last, day);
}

void LastLetters::ReadLogs(const fs::path& data_folder, std::string_view template_kind,
                           std::string_view template_name, const std::stop_token& stop) {
  for (const fs::path& path : RunLogsIn(data_folder)) {
    if (stop.stop_requested()) return;
    const std::optional<LoggedRun> run = RunLog::History(path, template_kind, template_name);
    if (!run) continue;
    for (std::size_t i = 0; i < run->letters.size(); ++i) {
      const LoggedLetter& letter = run->letters[i];
      // The file says nothing more, whether the letter left or is still held.
      if (!letter.file.empty()) of_runs_.insert(letter.file);
      if (!WasWritten(letter.state, run->request.destination)) continue;
      const Recipient& recipient = run->request.recipients[i];
      try {
        Note(recipient.name, recipient.code, ToDate(Value(letter.attempt)).DateOnly());
      } catch (const RuntimeError&) {
        // A log whose times somebody has changed says nothing.
      }
    }
  }
}

// Letters that were made one by one. A folder that namesakes share does not say whose they are.
void LastLetters::ReadFolders(const fs::path& data_folder, std::string_view template_name,
                              std::span<const RecipientRow> recipients,
                              const std::stop_token& stop) {
  std::map<std::string, std::set<std::string>> owners_of;  // folder: the recipients' keys
  for (const RecipientRow& row : recipients) {
    for (const std::string& folder : {RecipientFolderName(row.recipient.name),
                                      EarlierRecipientFolderName(row.recipient.name)}) {
      if (!folder.empty()) owners_of[folder].insert(row.recipient.name + '\t' + row.recipient.code);
    }
  }
  const std::set<std::string> there = FoldersIn(data_folder);
  const std::string title = SafeFileName(template_name, kLongestGeneratedTitle);
  for (const RecipientRow& row : recipients) {
    for (const std::string& folder : {RecipientFolderName(row.recipient.name),
                                      EarlierRecipientFolderName(row.recipient.name)}) {
      if (stop.stop_requested()) return;
      if (!there.contains(folder) || owners_of[folder].size() > 1) continue;
      std::error_code error;
      for (fs::directory_iterator entry(data_folder / folder, error), end; !error && entry != end;
           entry.increment(error)) {
        const std::string file = entry->path().filename().string();
        if (!IsLetterOf(file, title) || of_runs_.contains(folder + "/" + file)) continue;
        if (const std::optional<Date> day = ChangeOf(*entry)) {
          Note(row.recipient.name, row.recipient.code, *day);
        }
      }
    }
  }
}

}  // namespace tenora
