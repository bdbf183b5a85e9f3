#include "startup/generate_call.h"

#include <CLI/CLI.hpp>
#include <charconv>

#include "letters/template_library.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr const char* kFooter =
    R"(The files made are printed on standard output, progress and problems on standard error.
A letter that fails does not stop the others; the run log beside the letters says what became of
each. A letter in which something is wrong is saved and held back; --resume looks at it again.
At a question, "/all TEXT" answers for all letters from there on, "/stop" ends the run.
Ctrl-C stops after the current letter (a print job ends with the letters in it).
Exit status: 0 when every letter was made and none is held back, 1 when not, 2 for a usage error.)";

// An option with one value each time it is given.
void AddRepeated(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                 const std::string& description) {
  app.add_option(name, values, description)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

// Refuses a text of blanks, or of nothing, as what a script makes of a variable that is not set.
CLI::Option* NotBlank(CLI::Option* option, const std::string& problem) {
  return option->check(
      [problem](const std::string& text) { return TrimBlanks(text).empty() ? problem : ""; });
}

// "90m", "4h", "2d"; none for any other text, and for ages of a year and more.
std::optional<std::chrono::minutes> ReadAge(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
  constexpr int kMinutesOfYear = 366 * 24 * 60;
  if (error != std::errc() || number < 0 || number > kMinutesOfYear) return std::nullopt;
  if (unit == "m") return std::chrono::minutes(number);
  if (unit == "h") return std::chrono::hours(number);
  if (unit == "d") return std::chrono::days(number);
  return std::nullopt;
}

}  // namespace

std::vector<std::string> GenerateCall::BranchNames() const {
  std::vector<std::string> names;
  for (const std::string& given : branches) {
    for (const std::string& name : Split(given, ",")) names.emplace_back(TrimBlanks(name));
  }
  return names;
}

std::optional<std::chrono::minutes> GenerateCall::NoOlderThan() const {
  return ReadAge(no_older_than);
}

std::string_view GenerateCall::Kind() const { return owners ? kOwnerTemplates : kTemplates; }

Destination GenerateCall::To() const {
  if (destination == "printer") return Destination::kPrinter;
  return destination == "email" ? Destination::kEmail : Destination::kFolder;
}

ListingFormat GenerateCall::Format() const { return ListingFormatOf(format); }

std::string GenerateCall::Complaint() const {
  const bool to_email = To() == Destination::kEmail;
  const bool choosing = all || !recipients.empty() || ByFacts();
  if (!list && (AsTable() || !sort.empty())) {
    return "--columns, --format and --sort go with --list";
  }
  if (descending && sort.empty()) return "--descending goes with --sort";
  if (unfinished || !forget.empty()) {
    const bool more = choosing || list || queue || !template_name.empty() || !resume.empty() ||
                      AcrossBranches() || (unfinished && !forget.empty());
    return more ? "--unfinished and --forget are given alone" : "";
  }
  if (all_branches && !branches.empty()) return "--branch and --all-branches exclude each other";
  if (filter.by_property && !owners) return "--by-property goes with --owners";
  if (!resume.empty()) {
    const bool more = choosing || list || queue || !template_name.empty() || !subject.empty() ||
                      !answers.empty() || pdf || !name_pattern.empty() || !one_pdf.empty() ||
                      duplex || !post_list.empty() || AcrossBranches();
    return more ? "--resume takes everything from the run log; "
                  "only --printer and --send-held may be given with it"
                : "";
  }
  if (send_held) return "--send-held goes with --resume";
  if (list) return queue ? "--queue and --list exclude each other" : "";
  if (queue && (!one_pdf.empty() || !post_list.empty())) {
    return "--one-pdf and --csv cannot be given with --queue: many programs make the letters, and "
           "none of them has all";
  }
  if (template_name.empty()) return "--template is missing";
  if (all && !recipients.empty()) return "--all and --recipient exclude each other";
  if (ByFacts() && !recipients.empty()) {
    return "--where or --filter and --recipient exclude each other";
  }
  if (!choosing) return "Nothing selected: name each --recipient, or give --all or --where";
  if (!filter.search.empty() && !all && !ByFacts()) return "--search goes with --all or --list";
  if (to_email && TrimBlanks(subject).empty()) return "--to email needs a --subject";
  if (!to_email && !subject.empty()) return "--subject goes with --to email";
  if (!printer.empty() && To() != Destination::kPrinter) {
    return "--printer goes with --to printer";
  }
  if (duplex && one_pdf.empty()) return "--duplex goes with --one-pdf";
  if (!one_pdf.empty() && !EndsWithNoCase(one_pdf, ".pdf")) {
    return "--one-pdf needs a name that ends in \".pdf\"";
  }
  if (!post_list.empty() && !EndsWithNoCase(post_list, ".csv")) {
    return "--csv needs a name that ends in \".csv\"";
  }
  for (const std::string& answer : answers) {
    if (answer.find('=') == 0 || answer.find('=') == std::string::npos) {
      return "--answer \"" + answer + "\" does not have the form \"prompt=text\"";
    }
  }
  return "";
}

void DeclareGenerate(CLI::App& app, GenerateCall& call) {
  RecipientFilter& filter = call.filter;
  app.description("Make a letter from a template for each of many tenants or owners");
  app.footer(kFooter);
  app.add_option("--template", call.template_name, "The template's name, without \".rtf\"");
  app.add_flag("--owners", call.owners, "Write to owners, from \"Owner Templates\"");
  app.add_flag("--by-property", filter.by_property,
               "List owners once for each of their properties");
  app.add_option("--to", call.destination, "Where the letters go; they are saved in any case")
      ->check(CLI::IsMember({"folder", "printer", "email"}))
      ->capture_default_str();
  AddRepeated(app, "--recipient", call.recipients,
              "A recipient by name or code; may be given many times");
  app.add_flag("--all", call.all, "Every recipient of the list");
  app.add_flag("--closed", filter.closed, "Closed ones too");
  app.add_flag("--with-email-only", filter.exclude_no_email_ticked,
               "Only recipients with an e-mail address");
  app.add_option("--search", filter.search,
                 "Only recipients whose line in the list holds the words");
  NotBlank(app.add_option(
               "--where", call.where,
               "Everyone of whom this holds, as \"Days Behind >= 14 and Balance Owing > 50\"; "
               "\"--list --columns help\" prints the names"),
           "there is no condition, for example Balance Owing > 0");
  NotBlank(app.add_option("--filter", call.named_filter,
                          "Everyone of whom the condition saved under this name holds"),
           "it names no filter");
  app.add_option("--subject", call.subject, "Of the e-mails");
  AddRepeated(app, "--answer", call.answers,
              "\"prompt=text\": the answer to a prompt for all letters; others are asked");
  app.add_flag("--pdf", call.pdf, "Save a PDF beside each letter");
  app.add_option("--name-pattern", call.name_pattern,
                 "Of the letters' files, as \"{Tenant Name} - {Template} - {Print Date}\": the "
                 "names of --where, {Template} and {Number}");
  app.add_option("--one-pdf", call.one_pdf,
                 "A new PDF file of all letters, in the order of the list, with a bookmark each");
  app.add_flag(
      "--duplex", call.duplex,
      "With --one-pdf: each letter begins on a front side, after an empty page if need be");
  app.add_option("--csv", call.post_list,
                 "A new file that lists the letters, with addresses and what became of each");
  app.add_option("--printer", call.printer, "The printer; without it, the default one");
  AddRepeated(app, "--branch", call.branches,
              "Of these branches on the server, with commas between, instead of the one that the "
              "settings name; each one's letters are in a folder of its own below \"Branches\"");
  app.add_flag("--all-branches", call.all_branches, "Of all branches that this login sees");
  app.add_option("--no-older-than", call.no_older_than,
                 "Do nothing when a branch's data are older, as 90m, 4h or 2d")
      ->check([](const std::string& text) {
        return ReadAge(text) ? "" : "\"" + text + "\" is no age such as 90m, 4h or 2d";
      });
  app.add_flag("--queue", call.queue,
               "Put the letters into the queue on the server, for the workers (\"tenora work\"), "
               "and make none here; \"tenora status\" shows how they stand");
  app.add_flag("--list", call.list, "Print the recipients and make nothing");
  NotBlank(app.add_option("--columns", call.columns,
                          "With --list: a table of these, with commas between; \"all\" for every "
                          "one, \"help\" prints their names"),
           "it names no column; \"help\" prints the names there are");
  app.add_option("--format", call.format, "With --list: of the table")
      ->check(CLI::IsMember({"table", "csv", "json"}));
  NotBlank(app.add_option("--sort", call.sort, "With --list: by the values of this column"),
           "it names no column; \"--columns help\" prints the names there are");
  app.add_flag("--descending", call.descending, "With --sort: the last first");
  app.add_option("--resume", call.resume, "Make what the run of this log left undone");
  app.add_flag("--unfinished", call.unfinished,
               "Print the runs that have not done all they were asked, and make nothing");
  app.add_option("--forget", call.forget,
                 "Strike the run of this log from that list; no file is removed");
  app.add_flag("--send-held", call.send_held,
               "With --resume: hand over the letters held back, as they are");
}

}  // namespace tenora
