#include "startup/own_commands.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <memory>
#include <ostream>

#include "output/embedded_picture.h"
#include "output/rtf_to_html.h"
#include "platform/access/check.h"
#include "platform/access/engine_error.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/locale/locale.h"
#include "platform/query/engine.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "startup/completion.h"
#include "startup/import_command.h"
#include "startup/lint_command.h"
#include "startup/manual_page.h"
#include "startup/own_parser.h"
#include "startup/server_command.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 13> kOwnWords{
    "query",  "tables", "check", "html",      "import",      "lint",         "server",
    "status", "--help", "-h",    "--version", kCompleteWord, kManualPageWord};

void ListTables(const std::string& path, std::ostream& output) {
  const auto workspace = query::Workspace::Create();
  for (const query::TableSummary& table : workspace->OpenDatabase(path)->Tables()) {
    output << TerminalLine(table.name) << '\t';
    if (table.kind.empty()) {
      output << table.rows << '\n';
    } else {
      output << TerminalLine(table.kind) << '\n';
    }
  }
}

// The engine for a statement of the user's. Most statements need no locale, which takes a while to
// load.
std::unique_ptr<query::Workspace> MakeWorkspace(const Clock& clock) {
  const auto short_date = [locale = std::shared_ptr<Locale>()](Date date) mutable {
    if (locale == nullptr) locale = MakeLocale();
    return locale->ShortDate(date);
  };
  return query::Workspace::Create([&clock] { return clock.Now(); }, query::kTimeLimit, short_date);
}

// Returns when the change was made, whatever has become of the output since: a full disk, or a
// reader that has gone.
void RunChange(const std::string& path, const std::string& sql, std::ostream& output,
               std::ostream& errors) {
  std::signal(SIGPIPE, SIG_IGN);
  const Clock clock = Clock::FromEnvironment();
  const auto workspace = MakeWorkspace(clock);
  std::int64_t rows = 0;
  try {
    rows = workspace->OpenDatabase(path)->Execute(sql);
  } catch (const RuntimeError& error) {
    if (error.number() != access::engine_error::kExecutedSelect) throw;
    throw WithDetail(error, "a select is run without --write");
  }
  const std::string changed = std::to_string(rows) + (rows == 1 ? " row" : " rows") + " changed";
  output << changed << std::endl;
  if (!output) {
    errors << "Warning: " << changed << ", but standard output could not be written." << std::endl;
  }
}

// Changes need a switch, so that a technician cannot change the office's data by mistake.
void RunQuery(const std::string& path, const std::string& sql, std::ostream& output) {
  const Clock clock = Clock::FromEnvironment();
  const auto workspace = MakeWorkspace(clock);
  const auto database = workspace->OpenDatabase(path);
  try {
    query::PrintTabSeparated(*database->OpenRecordset(sql, query::kForwardOnly, query::kReadOnly),
                             output);
  } catch (const RuntimeError& error) {
    if (error.number() != access::engine_error::kInvalidOperation) throw;
    throw WithDetail(error, "insert, update and delete are run with --write");
  }
}

// Whether the file is sound; parts that cannot be checked are not faults.
bool CheckFile(const std::string& path, std::ostream& output) {
  bool sound = true;
  for (const access::Finding& finding : access::CheckDatabase(path)) {
    output << TerminalLine(finding.Text()) << '\n';
    if (finding.kind == access::Finding::Kind::kFault) sound = false;
  }
  return sound;
}

// For "--branch=" the parser would take the next argument as the value, which is empty.
void SplitEmptyValues(std::vector<std::string>& arguments) {
  for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
    std::string& option = arguments[i];
    const bool is_long =
        option.starts_with("--") && option.find_first_of("= ") + 1 == option.size();
    if (!is_long || option.back() != '=') continue;
    option.pop_back();
    arguments.insert(arguments.begin() + static_cast<std::ptrdiff_t>(++i), "");
  }
}

void ConvertToHtml(const std::string& path, const std::string& options, std::ostream& output) {
  const std::string rtf = ReadWholeFile(path);
  if (!richtext::IsRtf(rtf)) throw StandardError(error_number::kInvalidFileFormat, path);
  output << RtfToHtml(rtf, options, EmbeddedPicture);
}

}  // namespace

bool IsOwnCommand(std::string_view first_argument) {
  return std::ranges::find(kOwnWords, first_argument) != kOwnWords.end();
}

int RunOwnCommand(std::vector<std::string> arguments, std::ostream& output, std::ostream& errors) {
  if (arguments.front() == kCompleteWord) return PrintCompletions(arguments, output);
  if (arguments.front() == kManualPageWord) {
    output << ManualPage(OwnParser().app, HelpSections()) << std::flush;
    return output ? 0 : 1;
  }
  OwnParser call;
  SplitEmptyValues(arguments);
  std::ranges::reverse(arguments);  // CLI11 takes them from the back
  try {
    call.app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return call.app.exit(error, output, errors) == 0 ? 0 : 2;
  }
  if (call.lint->parsed() && call.lint_request.templates.empty() && !call.lint_request.all) {
    errors << "Name the templates, or give --all for the whole library." << std::endl;
    return 2;
  }
  if (call.import_request.documents.size() > 1 && !call.import_request.name.empty()) {
    errors << "--name is for one document." << std::endl;
    return 2;
  }
  if (call.server->parsed() && !call.server_call.Complaint().empty()) {
    errors << TerminalLine(call.server_call.Complaint()) << std::endl;
    return 2;
  }
  if (call.status->parsed() && !call.status_call.Complaint().empty()) {
    errors << TerminalLine(call.status_call.Complaint()) << std::endl;
    return 2;
  }
  try {
    if (call.tables->parsed()) ListTables(call.database, output);
    if (call.query->parsed() && call.write) {
      RunChange(call.database, call.sql, output, errors);
      return 0;
    }
    if (call.query->parsed()) RunQuery(call.database, call.sql, output);
    if (call.html->parsed())
      ConvertToHtml(call.letter, call.html_options + (call.as_document ? "+D" : ""), output);
    const bool sound =
        (!call.check->parsed() || CheckFile(call.database, output)) &&
        (!call.lint->parsed() || LintTemplates(call.lint_request, output, errors)) &&
        (!call.import_documents->parsed() ||
         ImportTemplates(call.import_request, output, errors)) &&
        (!call.server->parsed() || RunServerCommand(call.server_call, output, errors)) &&
        (!call.status->parsed() || RunStatus(call.status_call, output, errors));
    output.flush();
    if (!output) throw StandardError(error_number::kDeviceIoError, "standard output");
    return sound ? 0 : 1;
  } catch (...) {
    errors << TerminalText(ErrorText(CurrentError())) << std::endl;
    return 1;
  }
}

}  // namespace tenora
