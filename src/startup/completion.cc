#include "startup/completion.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <ostream>
#include <sstream>

#include "letters/named_filters.h"
#include "letters/recipient_table.h"
#include "letters/recipients.h"
#include "letters/template_library.h"
#include "letters/unfinished_runs.h"
#include "startup/command_session.h"
#include "startup/option_choices.h"
#include "startup/shell_line.h"

namespace tenora {
namespace {

using Names = std::vector<std::string>;

bool Contains(const Names& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

std::string OptionName(const CLI::Option& option) {
  return option.get_name(option.get_positional());
}

// The name by which `generate --recipient` finds each row: the recipient's; for namesakes the
// list's line; where that is the same too, the code.
Names RecipientNames(const std::vector<RecipientRow>& rows) {
  std::map<std::string, std::size_t> with_name, with_text;
  for (const RecipientRow& row : rows) {
    ++with_name[row.recipient.name];
    ++with_text[row.text];
  }
  Names names;
  for (const RecipientRow& row : rows) {
    names.push_back(with_name[row.recipient.name] == 1 ? row.recipient.name
                    : with_text[row.text] == 1         ? row.text
                                                       : row.key);
  }
  return names;
}

class Completion {
 public:
  explicit Completion(const ShellLine& line) : line_(line) {}

  // Everything that can stand at the cursor; what is typed there already is not looked at.
  Names Candidates() {
    if (line_.words().size() <= 1) return FirstWords();
    command_ = &parser_.app;
    for (; command_words_ < line_.words().size() && !Below(*command_).empty(); ++command_words_) {
      const std::vector<const CLI::App*> below = Below(*command_);
      const auto named = std::ranges::find_if(below, [&](const CLI::App* command) {
        return command->get_name() == line_.words()[command_words_];
      });
      if (named == below.end()) return {};
      command_ = *named;
    }
    if (!Commands(*command_).empty()) return Commands(*command_);
    const std::string& current = line_.current();
    const std::size_t equals = current.find('=');
    if (current.starts_with("--") && equals != std::string::npos) {
      const CLI::Option* option = command_->get_option_no_throw(current.substr(0, equals));
      if (!TakesValue(option)) return {};
      Names values = Values(*option);
      for (std::string& value : values) value.insert(0, current, 0, equals + 1);
      return values;
    }
    if (const CLI::Option* option = command_->get_option_no_throw(line_.words().back());
        line_.words().back().starts_with('-') && TakesValue(option)) {
      return Values(*option);
    }
    Names candidates;
    if (!current.starts_with('-')) candidates = PositionalValues();
    const bool options = current.starts_with('-') || (candidates.empty() && !files_);
    return options ? Options(*command_) : candidates;
  }

  bool files() const { return files_; }

 private:
  static bool TakesValue(const CLI::Option* option) {
    return option != nullptr && option->get_items_expected_max() > 0;
  }

  static std::vector<const CLI::App*> Below(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
  }

  static Names Commands(const CLI::App& app) {
    Names names;
    for (const CLI::App* command : Below(app)) names.push_back(command->get_name());
    return names;
  }

  Names FirstWords() const {
    Names words = Commands(parser_.app);
    const Names options = Options(parser_.app);
    words.insert(words.end(), options.begin(), options.end());
    return words;
  }

  static Names Options(const CLI::App& app) {
    Names names;
    for (const CLI::Option* option : app.get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
  }

  // Of the first positional that is not yet given; the last one may take many.
  Names PositionalValues() {
    std::size_t given = 0;
    for (std::size_t i = command_words_; i < line_.words().size(); ++i) {
      const std::string& word = line_.words()[i];
      const bool value = line_.words()[i - 1].starts_with('-') &&
                         TakesValue(command_->get_option_no_throw(line_.words()[i - 1]));
      if (!word.starts_with('-') && !value) ++given;
    }
    for (const CLI::Option* option : command_->get_options()) {
      if (!option->get_positional()) continue;
      const auto most = static_cast<std::size_t>(option->get_items_expected_max());
      if (given < most) return Values(*option);
      given -= most;
    }
    return {};
  }

  Names Values(const CLI::Option& option) {
    if (const Names choices = OptionChoices(option); !choices.empty()) return choices;
    const std::string name = OptionName(option);
    files_ = Contains({"DATABASE", "FILE", "TEMPLATE", "--database", "--resume", "--forget"}, name);
    if (name == "--template") return TemplateNames({Kind()});
    if (name == "TEMPLATE") return TemplateNames({kTemplates, kOwnerTemplates, "Cheque", "Check"});
    if (name == "--recipient") return Recipients();
    if (name == "--columns" || name == "--sort") return FactsOf(name == "--columns");
    if (name == "--filter") return FilterNames();
    if (name == "--resume" || name == "--forget") return UnfinishedLogs();
    return {};
  }

  std::string_view Kind() const {
    return Contains(line_.words(), "--owners") ? kOwnerTemplates : kTemplates;
  }

  Names TemplateNames(const std::vector<std::string_view>& folders) {
    Names names;
    const TemplateLibrary library(session().database.DataFolder());
    for (const std::string_view folder : folders) {
      const Names in_folder = library.Names(folder);
      names.insert(names.end(), in_folder.begin(), in_folder.end());
    }
    return names;
  }

  Names FactsOf(bool with_words) const {
    Names names;
    if (with_words) names = {"all", "help"};
    const bool by_property = Contains(line_.words(), "--by-property");
    for (const std::string_view fact : RecipientFactNames(Kind())->All()) {
      if (by_property || !IsPropertyFact(Kind(), fact)) names.emplace_back(fact);
    }
    return names;
  }

  Names FilterNames() {
    Names names;
    for (const NamedFilter& filter : NamedFilters(session().platform.registry).List(Kind())) {
      names.push_back(filter.name);
    }
    return names;
  }

  // Codes where no name fits.
  Names Recipients() {
    if (!session().database.CanBeRead()) return {};
    if (!session().ReloadRentalData()) return {};
    const RecipientFilter filter{.closed = Contains(line_.words(), "--closed"),
                                 .by_property = Contains(line_.words(), "--by-property")};
    const std::vector<RecipientRow> rows = ListRecipients(session().caches, Kind(), filter);
    Names names = RecipientNames(rows);
    if (std::ranges::none_of(names, [&](const std::string& name) {
          const std::string& typed = line_.current();
          return name.starts_with(typed.substr(typed.starts_with("--") ? typed.find('=') + 1 : 0));
        })) {
      std::ranges::transform(rows, names.begin(), &RecipientRow::key);
    }
    return names;
  }

  // Relative to the data folder, as --resume takes them too.
  Names UnfinishedLogs() {
    Names names;
    for (const UnfinishedRun& run : FindUnfinishedRuns(session().database.DataFolder())) {
      names.push_back(run.log.filename().string());
    }
    return names;
  }

  Session& session() {
    if (!command_session_) command_session_.emplace(messages_);
    return command_session_->session();
  }

  const ShellLine& line_;
  OwnParser parser_;
  const CLI::App* command_ = nullptr;
  std::size_t command_words_ = 1;  // with the program's name
  bool files_ = false;
  std::ostringstream messages_;  // not shown in the middle of what is typed
  std::optional<CommandSession> command_session_;
};

}  // namespace

int PrintCompletions(const std::vector<std::string>& arguments, std::ostream& output) {
  if (arguments.size() != 3) return 2;
  const ShellLine line(arguments[1], arguments[2]);
  Completion completion(line);
  Names completions;
  try {
    completions = line.Completions(completion.Candidates());
  } catch (...) {
    return 0;  // nobody waits for the reason; the command itself will give it
  }
  for (const std::string& text : completions) output << text << '\n';
  output.flush();
  return completions.empty() && completion.files() ? 1 : 0;
}

}  // namespace tenora
