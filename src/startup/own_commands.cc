#include "startup/own_commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <csignal>
#include <ostream>

#include "output/embedded_picture.h"
#include "output/rtf_to_html.h"
#include "platform/access/check.h"
#include "platform/access/engine_error.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/query/engine.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/version.h"
#include "startup/import_command.h"
#include "startup/lint_command.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 9> kOwnWords{
    "query", "tables", "check", "html", "import", "lint", "--help", "-h", "--version"};

constexpr const char* kHelpFooter =
    R"(The management package's command words, each parameter as NAME="value":
  PRINTRECEIPT="tenant code" FORMAT="template name"
      prints the receipt of the tenant's latest payment.
      DEFAULT="False"     choose a printer (a list on the terminal)
      TOPRINTER="False"   do not print, only keep a copy where the settings say so
      TOEMAIL="True"      send it to the tenant by e-mail
      REPRINT="number"    the receipt of an earlier payment, by its record number;
                          the tenant is then found by the payment
  PRINTCHEQUE="" VALUE="amount" FORMAT="template name" PAYEE="name"
      prints a cheque on a printer chosen from the list (a list on the terminal). The
      template is in the data folder's "Cheque", or in "Check" where the locale's short
      date begins with the month.
      DOLLARS="word" CENTS="word"   the currency's words, kept for later cheques
  Typed in a shell, the inner quotes may be left out: PRINTRECEIPT=T00001 FORMAT="Rent review"

Environment:
  TENORA_HOME      the program folder: property.mdb, Templates and the letters. Without it the
                   folder of this program where that holds property.mdb, else the user's data
                   folder for Tenora.
  TENORA_SETTINGS  the folder of the settings. Without it the system's and the user's.
  TENORA_NOW       stops the clock at this time, as "2026-11-21 09:30:00".
  TENORA_PDF       where "Print to PDF" writes: a folder, or a file when it ends in ".pdf".
                   Without it, "Printed" under the data folder.
  TENORA_PRINTER   the default printer. Without it, the system's.

Exit status: 0 when what was asked was done, 1 when it failed, 2 for a usage error.)";

void ListTables(const std::string& path, std::ostream& output) {
  const auto workspace = query::Workspace::Create();
  for (const query::TableSummary& table : workspace->OpenDatabase(path)->Tables()) {
    output << TerminalLine(table.name) << '\t' << table.rows << '\n';
  }
}

// Returns when the change was made, whatever has become of the output since: a full disk, or a
// reader that has gone.
void RunChange(const std::string& path, const std::string& sql, std::ostream& output,
               std::ostream& errors) {
  std::signal(SIGPIPE, SIG_IGN);
  const Clock clock = Clock::FromEnvironment();
  const auto workspace = query::Workspace::Create([&clock] { return clock.Now(); });
  const std::int64_t rows = workspace->OpenDatabase(path)->Execute(sql);
  const std::string changed = std::to_string(rows) + (rows == 1 ? " row" : " rows") + " changed";
  output << changed << std::endl;
  if (!output) {
    errors << "Warning: " << changed << ", but standard output could not be written." << std::endl;
  }
}

// Changes need a switch, so that a technician cannot change the office's data by mistake.
void RunQuery(const std::string& path, const std::string& sql, std::ostream& output) {
  const Clock clock = Clock::FromEnvironment();
  const auto workspace = query::Workspace::Create([&clock] { return clock.Now(); });
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

void ConvertToHtml(const std::string& path, const std::string& options, std::ostream& output) {
  const std::string rtf = ReadWholeFile(path);
  if (!richtext::IsRtf(rtf)) throw StandardError(error_number::kInvalidFileFormat, path);
  output << RtfToHtml(rtf, options, EmbeddedPicture);
}

CLI::App* AddLint(CLI::App* app, LintRequest* request) {
  CLI::App* const lint = app->add_subcommand(
      "lint",
      "Report what would go wrong with templates: codes that no merge fills, codes split by "
      "formatting, prompts that are not asked, pictures that paper does not show. Status 1 when "
      "anything is found");
  lint->add_option("TEMPLATE", request->templates,
                   "The .rtf file, or the name of a template in the data folder");
  lint->add_flag("--all", request->all, "Every template of the data folder");
  lint->add_option("--kind", request->kind,
                   "Which merge fills them; without it the folder decides: Templates, Owner "
                   "Templates, Cheque, Check")
      ->check(CLI::IsMember({"tenant", "owner", "cheque"}));
  lint->add_option("--database", request->database,
                   "Compare custom fields with those of this file; without it with the agency's");
  return lint;
}

CLI::App* AddImport(CLI::App* app, ImportRequest* request) {
  CLI::App* const command = app->add_subcommand(
      "import",
      "Make templates of a word processor's documents (.docx, .doc, .odt, .html through "
      "LibreOffice; .rtf), mend merge fields and codes, and report what lint finds in them");
  command->add_option("FILE", request->documents, "The documents")->required();
  command->add_option("--kind", request->kind, "Which templates they become")
      ->check(CLI::IsMember({"tenant", "owner", "cheque"}))
      ->capture_default_str();
  command->add_option("--name", request->name,
                      "The template's name; without it the document's. A name that is taken gets "
                      "\"(1)\"");
  return command;
}

}  // namespace

bool IsOwnCommand(std::string_view first_argument) {
  return std::ranges::find(kOwnWords, first_argument) != kOwnWords.end();
}

int RunOwnCommand(std::vector<std::string> arguments, std::ostream& output, std::ostream& errors) {
  CLI::App app("Prints letters and receipts from a rental agency's database.", "tenora");
  app.set_version_flag("--version", std::string("Tenora Mail Merge Facility ") + kVersion);
  app.footer(kHelpFooter);
  app.require_subcommand(1);
  std::string database, sql;
  bool write = false;
  CLI::App* const tables =
      app.add_subcommand("tables", "List the tables of an Access file with their row counts");
  tables->add_option("DATABASE", database, "The .mdb or .accdb file")->required();
  CLI::App* const run_query = app.add_subcommand(
      "query", "Run a select statement and print the result as tab-separated text");
  run_query->add_option("DATABASE", database, "The .mdb or .accdb file")->required();
  run_query->add_option("SQL", sql, "The statement")->required();
  run_query->add_flag("--write", write,
                      "Run an insert, update or delete statement instead. Status 0 when the change "
                      "was made, whatever becomes of the output");

  CLI::App* const check = app.add_subcommand(
      "check", "Walk every page, table and index of an Access file and say what disagrees");
  check->add_option("DATABASE", database, "The .mdb or .accdb file")->required();
  std::string letter, options;
  CLI::App* const html = app.add_subcommand(
      "html",
      "Print a letter as HTML: rebuilt from its control words by the classic rules, or with "
      "--document as e-mails carry it");
  html->add_option("FILE", letter, "The .rtf file")->required();
  bool as_document = false;
  html->add_flag(
      "--document", as_document,
      "Convert the parsed letter, with its lists, tables, links and pictures, as e-mails "
      "carry it; the same as the switch +D");
  html->add_option(
      "--options", options,
      "Switches: +CR line ends, +F=3 default font size, -FF no font faces, +U Unicode "
      "escapes as character references, +E angle brackets and & as entities; +D as --document, "
      "where +CR, -FF and +U count");
  LintRequest lint_request;
  CLI::App* const lint = AddLint(&app, &lint_request);

  ImportRequest import_request;
  CLI::App* const import_documents = AddImport(&app, &import_request);

  // Handled before this parser is reached; here it is only listed in the help.
  app.add_subcommand("generate", "Make a letter for each of many tenants or owners");

  std::ranges::reverse(arguments);  // CLI11 takes them from the back
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, output, errors) == 0 ? 0 : 2;
  }
  if (lint->parsed() && lint_request.templates.empty() && !lint_request.all) {
    errors << "Name the templates, or give --all for the whole library." << std::endl;
    return 2;
  }
  if (import_request.documents.size() > 1 && !import_request.name.empty()) {
    errors << "--name is for one document." << std::endl;
    return 2;
  }
  try {
    if (tables->parsed()) ListTables(database, output);
    if (run_query->parsed() && write) {
      RunChange(database, sql, output, errors);
      return 0;
    }
    if (run_query->parsed()) RunQuery(database, sql, output);
    if (html->parsed()) ConvertToHtml(letter, options + (as_document ? "+D" : ""), output);
    const bool sound =
        (!check->parsed() || CheckFile(database, output)) &&
        (!lint->parsed() || LintTemplates(lint_request, output, errors)) &&
        (!import_documents->parsed() || ImportTemplates(import_request, output, errors));
    output.flush();
    if (!output) throw StandardError(error_number::kDeviceIoError, "standard output");
    return sound ? 0 : 1;
  } catch (...) {
    errors << TerminalText(ErrorText(CurrentError())) << std::endl;
    return 1;
  }
}

}  // namespace tenora
