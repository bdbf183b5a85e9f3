// Batches of letters through the built program.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <set>
#include <thread>

#include "agency.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/sample_rows.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class Generate : public test::Agency {
 protected:
  Generate() { WriteTemplate("Note", "Dear <<Tenant Name>> (<<Tenant Code>>)"); }

  test::ProcessResult Make(std::vector<std::string> arguments,
                           const std::string& input = {}) const {
    arguments.insert(arguments.begin(), "generate");
    return Run(arguments, input);
  }
  std::string Letter(const std::string& file) const {
    return fs::exists(Home() / file) ? ReadWholeFile(Home() / file) : "no " + file;
  }
  fs::path Log() const {
    fs::path log;
    for (const auto& entry : fs::directory_iterator(Home())) {
      if (entry.path().extension() == ".log" && entry.path().stem().string().starts_with("Letters"))
        log = entry.path();
    }
    return log;
  }
  // How many letters are in the folders of the recipients.
  std::size_t Letters() const {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(Home())) {
      const bool letter = entry.path().extension() == ".rtf" &&
                          !entry.path().parent_path().string().ends_with("Templates");
      if (letter) ++count;
    }
    return count;
  }
};

// The independent reader names the tenants; what stands in a letter is the merge's own test.
TEST_F(Generate, EveryTenantOfTheAgencyGetsTheirOwnLetter) {
  const test::ProcessResult result = Make({"--template", "Note", "--all", "--closed"});
  EXPECT_EQ(result.status, 0) << result.errors;
  const std::vector<std::string> files = Split(result.output, "\n");
  std::set<std::string> properties;
  for (const auto& row : test::SampleTable("property")) properties.insert(row.at("code"));
  std::size_t tenants = 0;
  for (const auto& row : test::SampleTable("tenancy")) {
    if (!properties.contains(row.at("Property Code"))) continue;
    ++tenants;
    std::string name(TrimBlanks(row.at("name")));
    name = ReplaceAll(ReplaceAll(ReplaceAll(name, "/", "-"), "\\", "-"), "\"", "`");
    const std::size_t found = std::ranges::count_if(files, [&](const fs::path& file) {
      return file.parent_path() == Home() / name &&
             ReadWholeFile(file).find("(" + row.at("reference") + ")") != std::string::npos;
    });
    EXPECT_EQ(found, 1U) << name;
  }
  EXPECT_EQ(files.size() - 1, tenants);
  EXPECT_EQ(Letters(), tenants);
}

TEST_F(Generate, NamesakesShareAFolderAndEachGetsTheirOwn) {
  const test::ProcessResult result =
      Make({"--template", "Note", "--closed", "--all", "--search", "tama o'brien"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(Letter("Tama O'Brien/Note.rtf"), HasSubstr("(T00005)"));
  EXPECT_THAT(Letter("Tama O'Brien/Note(1).rtf"), HasSubstr("(T00006)"));
  EXPECT_EQ(Letters(), 2U);
}

TEST_F(Generate, ChoosesRecipientsByNameOrCodeAndSaysWhoMayBeMeant) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* said;
  } cases[] = {
      {{"--recipient", "T00003", "--recipient", "mei huang"}, 0, "2 of 2 letters saved."},
      {{"--recipient", "élodie EVANS-PIKE"}, 0, "1 of 1 letter saved."},
      {{"--recipient", "Tama O'Brien", "--recipient", "T00005"}, 0, "1 of 1 letter saved."},
      {{"--recipient", "Tama O'Brien", "--closed"}, 1, "may mean 2 recipients; name one by its"},
      {{"--recipient", "T00006"},
       1,
       "\"T00006\" is closed; add --closed to write to (Closed) Tama"},
      {{"--recipient", "Ben Yuong"}, 1, "Is it Ben Young (PR00022), code T00028?"},
      {{"--recipient", "Huang"}, 1, "Is it Mei Huang (PR00018), code T00007; Ben Huang"},
      {{"--recipient", "Nobody at all"}, 1, "--list shows all of them"},
      {{"--all", "--search", "zzz"}, 1, "Nothing selected: the list is empty."},
      {{}, 2, "Nothing selected: name each --recipient, or give --all"},
      {{"--all", "--recipient", "T00001"}, 2, "exclude each other"},
      {{"--all", "--to", "email"}, 2, "--to email needs a --subject"},
      {{"--all", "--answer", "yes"}, 2, "does not have the form"},
      {{"--all", "--to", "moon"}, 2, "moon"},
      {{"--all", "--by-property"}, 2, "--by-property goes with --owners"},
      {{"--resume", "x.log"}, 2, "--resume takes everything from the run log"},
      {{"--all", "--send-held"}, 2, "--send-held goes with --resume"},
  };
  for (const auto& call : cases) {
    std::vector<std::string> arguments{"--template", "Note"};
    arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
    const test::ProcessResult result = Make(arguments);
    EXPECT_EQ(result.status, call.status) << call.said;
    EXPECT_THAT(result.errors, HasSubstr(call.said));
  }
  EXPECT_THAT(Letter("Smith-Jones, flat 2-rear `Red`/Note.rtf"), HasSubstr("(T00003)"));
  EXPECT_EQ(Letters(), 4U);
  EXPECT_THAT(Make({"--list", "--search", "mei"}).output, "Mei Huang (PR00018)\n");
  EXPECT_THAT(Make({"--list", "--owners"}).output, HasSubstr("Rimu-Kauri Trust\n"));
}

TEST_F(Generate, OwnersGetALetterForEachPropertyThatIsChosen) {
  WriteFile(Home() / "Owner Templates/Statement.rtf", test::RtfDocument("To <<Name>>, <<Code>>"));
  const test::ProcessResult result = Make({"--template", "Statement", "--owners", "--by-property",
                                           "--all", "--search", "quinn mahuta"});
  EXPECT_EQ(result.status, 0) << result.errors;
  std::size_t properties = 0;
  for (const auto& row : test::SampleTable("property"))
    properties += row.at("ownercode") == "OW0001";
  EXPECT_GT(properties, 0U);
  EXPECT_EQ(Letters(), properties);
  EXPECT_THAT(Letter("Quinn Māhuta/Statement.rtf"), HasSubstr("OW0001"));
}

TEST_F(Generate, AsksPromptsForEachLetterUnlessTheyAreAnswered) {
  WriteTemplate("Ask", "<<Tenant Code>>: <<?Which day?>> at <<?What time?>>");
  const std::vector<std::string> both{"--template", "Ask",         "--recipient",
                                      "T00001",     "--recipient", "T00002"};
  std::vector<std::string> answered = both;
  answered.insert(answered.end(), {"--answer", "What time=10 = <<?What time?>>ten"});
  // An answer that holds its own prompt is given once; then it is the user's to answer, and the
  // letter, which does not show what was given, is held back.
  const test::ProcessResult asked = Make(answered, "Monday\n\nTuesday\n\n");
  EXPECT_EQ(asked.status, 1);
  EXPECT_THAT(asked.errors, HasSubstr("0 of 2 letters saved, 2 held back."));
  EXPECT_THAT(asked.errors, HasSubstr("Which day\n  Tenant : Élodie Evans-Pike"));
  EXPECT_THAT(Letter("Noor Whaanga/Ask.rtf"), HasSubstr("T00001: Monday at 10 = ten"));
  EXPECT_THAT(Letter("Élodie Evans-Pike/Ask.rtf"), HasSubstr("T00002: Tuesday at 10 = ten"));

  WriteTemplate("Ask", "<<Tenant Code>>: <<?Which day?>> at <<?Time = what?>>");
  std::vector<std::string> unasked = both;
  unasked.insert(unasked.end(), {"--answer", "Time = what=10 = ten", "--answer", "which day=1"});
  const test::ProcessResult refused = Make(unasked);
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors, HasSubstr("\"which day=1\" fits no prompt: the template asks "
                                        "\"Which day\", \"Time = what\"."));
  unasked.resize(unasked.size() - 2);
  EXPECT_EQ(Make(unasked, "Monday\nTuesday\n").status, 0);
  EXPECT_THAT(Letter("Noor Whaanga/Ask(1).rtf"), HasSubstr("T00001: Monday at 10 = ten"));

  const test::ProcessResult silent = Make(both);
  EXPECT_EQ(silent.status, 0);
  EXPECT_THAT(silent.errors, HasSubstr("(T00001): 2 prompts were left without an answer"));
  EXPECT_THAT(Letter("Noor Whaanga/Ask(2).rtf"), HasSubstr("T00001:  at "));
}

TEST_F(Generate, OneJobTakesAllLettersAndEachMayHaveAPdfBesideIt) {
  const test::ProcessResult result = Make({"--template", "Note", "--to", "printer", "--pdf",
                                           "--recipient", "T00001", "--recipient", "T00007"});
  EXPECT_EQ(result.status, 0) << result.errors;
  const std::string text = PrintedText();
  EXPECT_THAT(text, HasSubstr("Noor Whaanga (T00001)"));
  EXPECT_THAT(text, HasSubstr("Mei Huang (T00007)"));
  EXPECT_TRUE(fs::exists(Home() / "Mei Huang/Note.pdf"));
  EXPECT_EQ(Split(result.output, "\n").size(), 6U) << result.output;
  // A job that cannot be handed on is not noted as printed, and its letters are printed later.
  WriteFile(Home() / "blocked", "a file where the folder should be");
  const std::string job = (Home() / "blocked/x.pdf").string();
  fs::remove(Log());
  const auto failed =
      Run({"generate", "--template", "Note", "--to", "printer", "--recipient", "T00001"}, {},
          {"TENORA_PDF=" + job});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.errors, HasSubstr("0 of 1 letter printed, 1 failed."));
  EXPECT_THAT(failed.errors, HasSubstr("--resume '" + Log().string() + "'"));
  const auto resumed = Run({"generate", "--resume", Log().string()}, {}, {"TENORA_PDF="});
  EXPECT_EQ(resumed.status, 0) << resumed.errors;
  EXPECT_EQ(Printed().size(), 2U);
  EXPECT_EQ(Letters(), 3U) << "a letter was saved twice";
}

TEST_F(Generate, AFailedLetterIsNamedAndLeavesNothingAndTheOthersAreMade) {
  // No room for a letter of this size, as on a full disk, yet for the log's lines.
  WriteTemplate("Long", "<<Tenant Code>>" + std::string(60'000, 'x'));
  const std::string shell =
      "ulimit -f 40; exec \"$0\" generate --template \"$1\" --all --search huang";
  const std::string program = (test::BinaryDir() / "tenora").string();
  const std::vector<std::string> home{"TENORA_HOME=" + Home().string(),
                                      "TENORA_SETTINGS=" + (Home() / "s").string()};
  const auto full = test::RunProcess({"bash", "-c", shell, program, "Long"}, home);
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.errors, HasSubstr("Mei Huang (T00007): "));
  EXPECT_THAT(full.errors, HasSubstr("Ben Huang (T00032): "));
  EXPECT_THAT(full.errors, HasSubstr("0 of 2 letters saved, 2 failed."));
  EXPECT_TRUE(fs::is_empty(Home() / "Mei Huang"));
  // With room again only these are made; a folder in the way stops one, not the other.
  WriteFile(Home() / "Ben Huang", "in the way");
  const auto resumed = Make({"--resume", Log().string()});
  EXPECT_EQ(resumed.status, 1);
  EXPECT_THAT(resumed.errors, HasSubstr("1 of 2 letters saved, 1 failed."));
  EXPECT_THAT(Letter("Mei Huang/Long.rtf"), HasSubstr("T00007"));
  EXPECT_THAT(ReadWholeFile(Log()), HasSubstr("failed\t2\tBen Huang"));
}

TEST_F(Generate, ALetterHeldBackIsSavedButNeitherPrintedNorMadeAPdf) {
  WriteTemplate("Ask", "<<Tenant Code>> <<?Which day?>>");
  for (const std::string destination : {"folder", "printer"}) {
    SCOPED_TRACE(destination);
    const auto held = Make({"--template", "Ask", "--to", destination, "--pdf", "--recipient",
                            "T00001", "--recipient", "T00007"},
                           "Mon } day\nTuesday\n");
    EXPECT_EQ(held.status, 1);
    EXPECT_THAT(held.errors, HasSubstr("1 of 2 letters "));
    EXPECT_THAT(held.errors, HasSubstr(", 1 held back.\nHeld back: Noor Whaanga (T00001): Which"));
    EXPECT_THAT(held.output, HasSubstr("Noor Whaanga/Ask.rtf\n"));
    EXPECT_FALSE(fs::exists(Home() / "Noor Whaanga/Ask.pdf"));
    EXPECT_EQ(Printed().size(), destination == "printer" ? 1U : 0U);
    const auto sent = Make({"--resume", Log().string(), "--send-held"});
    EXPECT_EQ(sent.status, 0) << sent.errors;
    EXPECT_THAT(sent.errors, HasSubstr(" (1 of them before)."));
    EXPECT_TRUE(fs::exists(Home() / "Noor Whaanga/Ask.pdf"));
    EXPECT_EQ(Printed().size(), destination == "printer" ? 2U : 0U);
    EXPECT_EQ(Letters(), 2U);
    for (const char* name : {"Noor Whaanga", "Mei Huang"}) fs::remove_all(Home() / name);
    fs::remove(Log());
  }
}

TEST_F(Generate, CtrlCEndsTheRunBehindTheLetterInHandAlsoAtAQuestion) {
  WriteTemplate("Ask", "<<Tenant Code>> <<?Which day?>>");
  // The first answer comes, the second never: the process waits at its question.
  const fs::path pipe = Home() / "answers";
  const std::string shell =
      "mkfifo \"$1\"; exec 3<>\"$1\"; echo Monday >&3; exec \"$0\" generate --template Ask --all "
      "<&3 2>\"$2\"";
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("TENORA_HOME", Home().c_str(), 1);
    ::setenv("TENORA_SETTINGS", (Home() / "s").c_str(), 1);
    ::execlp("bash", "bash", "-c", shell.c_str(), (test::BinaryDir() / "tenora").c_str(),
             pipe.c_str(), (Home() / "errors").c_str(), nullptr);
    ::_exit(127);
  }
  const auto errors = [&] { return Letter("errors"); };
  while (errors().find("Ben Huang") == std::string::npos) {
    ASSERT_EQ(::waitpid(child, nullptr, WNOHANG), 0) << errors();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ::kill(child, SIGINT);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_THAT(errors(), HasSubstr("Stopping after the current letter"));
  EXPECT_THAT(errors(), HasSubstr("Stopped. 1 of 36 letters saved, 35 not begun."));
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(Letters(), 1U);
  EXPECT_THAT(Letter("Mei Huang/Ask.rtf"), HasSubstr("Monday"));
  const auto resumed = Make({"--resume", Log().string()}, "Tuesday\n");
  EXPECT_THAT(resumed.errors, HasSubstr("36 of 36 letters saved (1 of them before)."));
  EXPECT_EQ(Letters(), 36U);
  EXPECT_THAT(Letter("Ben Huang/Ask.rtf"), HasSubstr("Tuesday"));
}

}  // namespace
}  // namespace tenora
