// What the program's own command-line words take. The parser reads calls by it, and the help, the
// manual page and the shell's completion are made of it.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "startup/generate_call.h"
#include "startup/import_command.h"
#include "startup/lint_command.h"
#include "startup/server_call.h"
#include "startup/status_command.h"
#include "startup/work_command.h"

namespace tenora {

// What the help says after the commands and options.
struct HelpEntry {
  std::string_view term, text;
  bool nested = false;  // belongs to the entry above it
};
struct HelpSection {
  std::string_view title, introduction;
  std::vector<HelpEntry> entries;
};
const std::vector<HelpSection>& HelpSections();

// A command as it is typed: "generate", and for one that has commands of its own each of these,
// "server import".
struct CommandName {
  std::string name;
  const CLI::App* app;
};
std::vector<CommandName> CommandsOf(const CLI::App& app);

struct OwnParser {
  OwnParser();

  CLI::App app;
  CLI::App *tables, *query, *check, *html, *lint, *import_documents, *server, *status;
  // Called before this parser is reached; here for the help and what is made like it.
  CLI::App *generate, *work;

  // What was asked for.
  std::string database, sql, letter, html_options;
  bool write = false, as_document = false;
  LintRequest lint_request;
  ImportRequest import_request;
  GenerateCall generate_call;
  WorkCall work_call;
  ServerCall server_call;
  StatusCall status_call;
};

}  // namespace tenora
