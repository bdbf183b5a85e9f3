#include "startup/manual_page.h"

#include <algorithm>

#include "platform/runtime/text.h"
#include "platform/runtime/version.h"
#include "startup/option_choices.h"
#include "startup/own_parser.h"

namespace tenora {
namespace {

// Text that man shows as it is: a backslash, a hyphen and, at the start of a line, a full stop or
// an apostrophe mean something to it.
std::string Escaped(std::string_view text) {
  std::string escaped;
  bool line_start = true;
  for (const char c : text) {
    if (line_start && (c == '.' || c == '\'')) escaped += "\\&";
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else {
      escaped += c;
    }
    line_start = c == '\n';
  }
  return escaped;
}

std::string Bold(std::string_view text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(std::string_view text) { return "\\fI" + Escaped(text) + "\\fR"; }

// "--to folder|printer|email", "-h, --help", "DATABASE".
std::string Term(const CLI::Option& option) {
  if (option.get_positional()) return Italic(option.get_name(true));
  std::string term;
  for (const std::string& name : Split(option.get_name(false, true), ",")) {
    term += (term.empty() ? "" : ", ") + Bold(name);
  }
  if (option.get_items_expected_max() == 0) return term;
  std::string choices;
  for (const std::string& choice : OptionChoices(option)) {
    choices += (choices.empty() ? "" : "|") + Bold(choice);
  }
  return term + ' ' + (choices.empty() ? Italic("TEXT") : choices);
}

std::string Entry(const std::string& term, std::string_view text) {
  return ".TP\n" + term + '\n' + Escaped(text) + '\n';
}

std::string OptionEntries(const CLI::App& app) {
  std::string entries;
  for (const CLI::Option* option : app.get_options()) {
    const std::string& standard = option->get_default_str();
    std::string text = option->get_description();
    if (!standard.empty()) text += " (without it: " + standard + ")";
    entries += Entry(Term(*option), text);
  }
  return entries;
}

// "tenora query [OPTIONS] DATABASE SQL"
std::string Usage(const CommandName& called) {
  const CLI::App& command = *called.app;
  std::string usage = Bold("tenora " + called.name) + " [" + Italic("OPTIONS") + "]";
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_positional()) continue;
    const bool many = option->get_items_expected_max() > 1;
    const std::string name = Italic(option->get_name(true)) + (many ? "..." : "");
    usage += option->get_required() ? ' ' + name : " [" + name + ']';
  }
  return usage;
}

std::string Command(const CommandName& name) {
  const CLI::App& command = *name.app;
  std::string footer = command.get_footer();
  std::ranges::replace(footer, '\n', ' ');
  return ".SS " + name.name + '\n' + Usage(name) + "\n.PP\n" + Escaped(command.get_description()) +
         ".\n" + OptionEntries(command) + (footer.empty() ? "" : ".PP\n" + Escaped(footer) + '\n');
}

std::string Section(const HelpSection& section) {
  std::string text = ".SH " + ToUpper(section.title) + '\n';
  if (!section.introduction.empty()) text += Escaped(section.introduction) + '\n';
  bool nested = false;
  for (const HelpEntry& entry : section.entries) {
    if (entry.nested != nested) text += entry.nested ? ".RS\n" : ".RE\n";
    nested = entry.nested;
    text += Entry(Bold(entry.term), entry.text);
  }
  return text + (nested ? ".RE\n" : "");
}

}  // namespace

std::string ManualPage(const CLI::App& app, const std::vector<HelpSection>& sections) {
  std::string page =
      ".TH TENORA 1 \"\" \"Tenora " + std::string(kVersion) + "\" \"User Commands\"\n";
  page += ".SH NAME\ntenora \\- letters, receipts and cheques of a rental property agency\n";
  page += ".SH SYNOPSIS\n" + Bold("tenora") + "\n.br\n";
  const std::vector<CommandName> commands = CommandsOf(app);
  for (const CommandName& command : commands) page += Usage(command) + "\n.br\n";
  page += Bold("tenora") + ' ' + Italic("NAME") + "=\"" + Italic("value") + "\" ...\n";
  page += ".SH DESCRIPTION\n" + Escaped(app.get_description()) + '\n' +
          "Without arguments it opens the window.\n";
  page += ".SH OPTIONS\n" + OptionEntries(app) + ".SH COMMANDS\n";
  for (const CommandName& command : commands) page += Command(command);
  for (const HelpSection& section : sections) page += Section(section);
  return page + ".SH SEE ALSO\nThe user guide and the other documents in " +
         Italic("/usr/share/doc/tenora") + ".\n";
}

}  // namespace tenora
