#include "startup/own_parser.h"

#include "platform/runtime/version.h"

namespace tenora {
namespace {

constexpr std::size_t kColumns = 92;
constexpr const char* kFileOrBranch = "The .mdb or .accdb file, or \"service=NAME branch=NAME\"";

// The section's text, its terms in a column of this width.
void AppendWrapped(std::string& help, std::string_view text, std::size_t indent,
                   std::size_t column) {
  while (!text.empty()) {
    const std::size_t word = text.find(' ');
    const std::string_view first = text.substr(0, word);
    if (column > indent && column + 1 + first.size() > kColumns) {
      help += '\n' + std::string(indent, ' ');
      column = indent;
    } else if (column > indent) {
      help += ' ';
      ++column;
    }
    help += first;
    column += first.size();
    text.remove_prefix(word == std::string_view::npos ? text.size() : word + 1);
  }
  help += '\n';
}

void AppendEntry(std::string& help, const HelpEntry& entry, std::size_t term_width) {
  const std::string margin(entry.nested ? 6 : 2, ' ');
  help += margin + std::string(entry.term);
  std::size_t column = margin.size() + entry.term.size();
  const std::size_t text_column = margin.size() + term_width + 2;
  if (column + 2 > text_column) {
    help += '\n';
    column = 0;
  }
  help += std::string(text_column - column, ' ');
  AppendWrapped(help, entry.text, text_column, text_column);
}

std::string HelpFooter() {
  constexpr std::size_t kTermWidth = 15;
  std::string footer;
  for (const HelpSection& section : HelpSections()) {
    if (!footer.empty()) footer += '\n';
    footer += std::string(section.title) + ":\n";
    if (!section.introduction.empty()) {
      footer += "  ";
      AppendWrapped(footer, section.introduction, 2, 2);
    }
    for (const HelpEntry& entry : section.entries) {
      const bool long_term = !entry.nested && entry.term.size() > kTermWidth;
      AppendEntry(footer, entry, long_term ? 2 : kTermWidth);
    }
  }
  footer.pop_back();
  return footer;
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

const std::vector<HelpSection>& HelpSections() {
  static const std::vector<HelpSection> kSections{
      {"Window",
       "Without a command the window is shown.",
       {{"FILE...", "opens these letters (.rtf, .txt), and offers other documents for import."}}},
      {"Command words",
       "The management package's, each parameter as NAME=\"value\". Typed in a shell, the inner "
       "quotes may be left out: PRINTRECEIPT=T00001 FORMAT=\"Rent review\"",
       {{"PRINTRECEIPT=\"tenant code\" FORMAT=\"template name\"",
         "prints the receipt of the tenant's latest payment."},
        {"DEFAULT=\"False\"", "choose a printer (a list on the terminal)", true},
        {"TOPRINTER=\"False\"", "do not print, only keep a copy where the settings say so", true},
        {"TOEMAIL=\"True\"", "send it to the tenant by e-mail", true},
        {"REPRINT=\"number\"",
         "the receipt of an earlier payment, by its record number; the tenant is then found by the "
         "payment",
         true},
        {"PRINTCHEQUE=\"\" VALUE=\"amount\" FORMAT=\"template name\" PAYEE=\"name\"",
         "prints a cheque on a printer chosen from the list (a list on the terminal). The template "
         "is in the data folder's \"Cheque\", or in \"Check\" where the locale's short date begins "
         "with the month."},
        {"DOLLARS=\"word\" CENTS=\"word\"", "the currency's words, kept for later cheques", true}}},
      {"Environment",
       "",
       {{"TENORA_HOME",
         "the program folder: property.mdb, Templates and the letters. Without it the folder of "
         "this program where that holds property.mdb, else the user's data folder for Tenora."},
        {"TENORA_SETTINGS", "the folder of the settings. Without it the system's and the user's."},
        {"TENORA_NOW", "stops the clock at this time, as \"2026-11-21 09:30:00\"."},
        {"TENORA_PDF",
         "where \"Print to PDF\" writes: a folder, or a file when it ends in \".pdf\". Without it, "
         "\"Printed\" under the data folder."},
        {"TENORA_PRINTER", "the default printer. Without it, the system's."}}},
      {"Exit status",
       "",
       {{"0", "what was asked was done."}, {"1", "it failed."}, {"2", "a usage error."}}}};
  return kSections;
}

std::vector<CommandName> CommandsOf(const CLI::App& app) {
  const auto any = [](const CLI::App*) { return true; };
  std::vector<CommandName> commands;
  for (const CLI::App* command : app.get_subcommands(any)) {
    const std::vector<CommandName> below = CommandsOf(*command);
    for (const CommandName& one : below) {
      commands.push_back({command->get_name() + " " + one.name, one.app});
    }
    if (below.empty()) commands.push_back({command->get_name(), command});
  }
  return commands;
}

OwnParser::OwnParser()
    : app("Prints letters and receipts from a rental agency's database.", "tenora") {
  app.set_version_flag("--version", std::string("Tenora Mail Merge Facility ") + kVersion);
  app.require_subcommand(1);
  tables = app.add_subcommand(
      "tables",
      "List the tables of an Access file with their row counts, then its linked tables and saved "
      "queries");
  tables->add_option("DATABASE", database, kFileOrBranch)->required();
  query = app.add_subcommand("query",
                             "Run a select statement and print the result as tab-separated text. "
                             "docs/sql.md says which SQL it takes");
  query->add_option("DATABASE", database, kFileOrBranch)->required();
  query
      ->add_option("SQL", sql,
                   "The statement; \"explain select ...\" says how a select would read its tables")
      ->required();
  query->add_flag("--write", write,
                  "Run an insert, update or delete statement instead. Status 0 when the change "
                  "was made, whatever becomes of the output");

  check = app.add_subcommand(
      "check", "Walk every page, table and index of an Access file and say what disagrees");
  check->add_option("DATABASE", database, "The .mdb or .accdb file")->required();
  html = app.add_subcommand(
      "html",
      "Print a letter as HTML: rebuilt from its control words by the classic rules, or with "
      "--document as e-mails carry it");
  html->add_option("FILE", letter, "The .rtf file")->required();
  html->add_flag(
      "--document", as_document,
      "Convert the parsed letter, with its lists, tables, links and pictures, as e-mails "
      "carry it; the same as the switch +D");
  html->add_option(
      "--options", html_options,
      "Switches: +CR line ends, +F=3 default font size, -FF no font faces, +U Unicode "
      "escapes as character references, +E angle brackets and & as entities; +D as --document, "
      "where +CR, -FF and +U count");
  lint = AddLint(&app, &lint_request);

  import_documents = AddImport(&app, &import_request);

  generate = app.add_subcommand("generate");
  DeclareGenerate(*generate, generate_call);
  work = app.add_subcommand("work");
  DeclareWork(*work, work_call);
  status = app.add_subcommand("status");
  DeclareStatus(*status, status_call);
  server = app.add_subcommand("server");
  DeclareServer(*server, server_call);
  app.footer(HelpFooter());  // last: commands made after it would take it over
}

}  // namespace tenora
