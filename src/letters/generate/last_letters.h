// When recipients were last written to with a template, from the run logs and the saved letters of
// a data folder. docs/generating.md has the rule.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>

#include "letters/recipients.h"
#include "platform/runtime/date.h"

namespace tenora {

class LastLetters {
 public:
  // Reads the run logs of this template, and lists the folders of these recipients. What cannot be
  // read or listed counts as not there. Ends soon when a stop is asked for, incomplete then.
  LastLetters(const std::filesystem::path& data_folder, std::string_view template_kind,
              std::string_view template_name, std::span<const RecipientRow> recipients,
              const std::stop_token& stop);

  // The day. None for one who was never written to with it.
  std::optional<Date> Of(const Recipient& recipient) const;

 private:
  void ReadLogs(const std::filesystem::path& data_folder, std::string_view template_kind,
                std::string_view template_name, const std::stop_token& stop);
  void ReadFolders(const std::filesystem::path& data_folder, std::string_view template_name,
                   std::span<const RecipientRow> recipients, const std::stop_token& stop);
  void Note(const std::string& name, const std::string& code, Date day);

  // By name and, where that is known, code.
  std::map<std::pair<std::string, std::string>, Date> last_;
  // Letters of runs, below the data folder.
  std::set<std::string> of_runs_;
};

}  // namespace tenora
