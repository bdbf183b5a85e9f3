// The help, the manual page and the completion, through the built program, groff and a real bash.
#include "agency.h"
#include "platform/runtime/text.h"
#include "startup/manual_page.h"
#include "startup/own_parser.h"

namespace tenora {
namespace {

using testing::Contains;
using testing::HasSubstr;

class CommandHelp : public test::Agency {
 protected:
  // What man shows, with single blanks and straight apostrophes.
  std::string ShownPage() const {
    const std::filesystem::path page = Home() / "tenora.1";
    WriteFile(page, Run({std::string(kManualPageWord)}).output);
    const test::ProcessResult shown =
        test::RunProcess({"groff", "-man", "-Tutf8", "-ww", "-rHY=0", "-P-cbou", page.string()});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors, "");
    std::string text;
    for (const char c : ReplaceAll(shown.output, "’", "'")) {
      const bool blank = c == ' ' || c == '\n';
      if (!blank || !text.ends_with(' ')) text += blank ? ' ' : c;
    }
    return text;
  }

  std::vector<std::string> Offered(const std::string& line, const std::string& word = "") const {
    return Split(Run({"complete", line, word}).output, "\n");
  }

  // Types the lines into a bash on a terminal of its own, where `tenora` prints its arguments.
  std::string TypeInBash(const std::string& lines) const {
    const std::string script = (test::SourceDir() / "packaging/tenora.bash-completion").string();
    return test::RunProcess(
               {"timeout", "60", "script", "-qec", "bash --noprofile --norc -i", "/dev/null"},
               {"TENORA_HOME=" + Home().string(), "HOME=" + Home().string(), "TERM=dumb",
                "INPUTRC=/dev/null", "PATH=" + test::BinaryDir().string() + ":/usr/bin:/bin"},
               "cd; . '" + script +
                   "'; tenora() { if [ $1 = complete ]; then command tenora \"$@\"; else "
                   "printf '<%s>' \"$@\"; echo; fi; }\n" +
                   lines + "exit\n")
        .output;
  }
};

TEST_F(CommandHelp, EveryOptionIsExplainedInTheManualAndOffered) {
  const OwnParser parser;
  const std::string page = ShownPage();
  for (const auto& [name_typed, command] : CommandsOf(parser.app)) {
    EXPECT_FALSE(command->get_description().empty()) << name_typed;
    EXPECT_THAT(page, HasSubstr(command->get_description()));
    EXPECT_THAT(
        Offered("tenora " + name_typed.substr(0, name_typed.size() - command->get_name().size())),
        Contains(command->get_name()));
    const std::vector<std::string> offered = Offered("tenora " + name_typed + " -", "-");
    for (const CLI::Option* option : command->get_options()) {
      const std::string name = option->get_name(option->get_positional());
      EXPECT_FALSE(option->get_description().empty()) << command->get_name() << ' ' << name;
      EXPECT_THAT(page, HasSubstr(option->get_description()));
      for (const std::string& word : option->get_lnames()) {
        EXPECT_THAT(offered, Contains("--" + word)) << command->get_name();
      }
    }
  }
  const std::string help = Run({"--help"}).output;
  for (const HelpSection& section : HelpSections()) {
    for (const HelpEntry& entry : section.entries) {
      EXPECT_THAT(page, HasSubstr(std::string(entry.term) + " " + std::string(entry.text)));
      EXPECT_THAT(help, HasSubstr(entry.term));
    }
  }
  for (const char* hidden : {"complete", "manual-page"}) {
    EXPECT_THAT(help + page, testing::Not(HasSubstr("\n  " + std::string(hidden))));
    EXPECT_THAT(Offered("tenora "), testing::Not(Contains(hidden)));
  }
}

TEST_F(CommandHelp, BashCompletesCommandsOptionsTemplatesAndRecipients) {
  WriteTemplate("Rent review", test::RtfDocument(""));
  WriteTemplate("Odd 'n' \"q\" $5 `!", test::RtfDocument(""));
  WriteFile(Home() / "Owner Templates/Fee change.rtf", test::RtfDocument(""));
  const struct {
    const char *typed, *arguments;
  } cases[] = {
      {"gen", "<generate>"},
      {"query --wr", "<query><--write>"},
      {"generate --to fo", "<generate><--to><folder>"},
      {"generate --to=em", "<generate><--to=email>"},
      {"generate --template Rent", "<generate><--template><Rent review>"},
      {"generate --template=Rent\\ r", "<generate><--template=Rent review>"},
      {"generate --template \"Rent r", "<generate><--template><Rent review>"},
      {"generate --template Od", "<generate><--template><Odd 'n' \"q\" $5 `!>"},
      {"generate --template \"Od", "<generate><--template><Odd 'n' \"q\" $5 `!>"},
      {"generate --template='Od", "<generate><--template=Odd 'n' \"q\" $5 `!>"},
      {"generate --owners --template F", "<generate><--owners><--template><Fee change>"},
      {"generate --recipient Élodie\\ E", "<generate><--recipient><Élodie Evans-Pike>"},
      {"generate --recipient T00002", "<generate><--recipient><T00002>"},
      {"lint --kind own", "<lint><--kind><owner>"},
      {"lint Receipt F", "<lint><Receipt><Fee change>"},
      {"tables prop", "<tables><property.mdb>"},
      {"server st", "<server><status>"},
      {"server status --format j", "<server><status><--format><json>"},
      {"server import prop", "<server><import><property.mdb>"},
  };
  std::string lines;
  for (const auto& c : cases) lines += "tenora " + std::string(c.typed) + "\t\n";
  const std::string output = TypeInBash(lines);
  for (const auto& c : cases) {
    EXPECT_THAT(output, HasSubstr("\n" + std::string(c.arguments) + "\r")) << c.typed;
  }
}

}  // namespace
}  // namespace tenora
