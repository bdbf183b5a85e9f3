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

struct OwnParser {
  OwnParser();

  CLI::App app;
  CLI::App *tables, *query, *check, *html, *lint, *import_documents;
  // Called before this parser is reached; here for the help and what is made like it.
  CLI::App* generate;

  // What was asked for.
  std::string database, sql, letter, html_options;
  bool write = false, as_document = false;
  LintRequest lint_request;
  ImportRequest import_request;
  GenerateCall generate_call;
};

}  // namespace tenora
