// A batch of e-mails that is killed at every step of its run log and taken up again: nobody gets a
// letter twice.
#include <map>

#include "agency.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/mail_options.h"
#include "support/smtp_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class GenerateResume : public test::Agency {
 protected:
  void SetUp() override {
    WriteTemplate("Note", "Dear <<Tenant Name>> (<<Tenant Code>>)");
    ToServer(server_);
  }
  void ToServer(const test::SmtpServer& server) const {
    fs::copy_file(test::SampleDatabase(), Database(), fs::copy_options::overwrite_existing);
    test::SendMailTo(server.port(), Database());
  }
  test::ProcessResult Mail(const std::string& codes,
                           const std::vector<std::string>& environment = {},
                           const std::string& answers = {}) const {
    std::vector<std::string> call{"generate", "--template", "Note",     "--to",
                                  "email",    "--subject",  "Your rent"};
    for (const std::string& code : Split(codes, " ")) {
      call.insert(call.end(), {"--recipient", code});
    }
    return Run(call, answers, environment);
  }
  test::ProcessResult Resume(const std::string& answers = {},
                             const std::vector<std::string>& environment = {}) const {
    return Run({"generate", "--resume", Log().string()}, answers, environment);
  }
  // Kills the program before it writes to its log for the step-th time.
  static std::vector<std::string> KillAt(int step) {
    return {"LD_PRELOAD=" + (test::BinaryDir() / "kill_at_log_step.so").string(),
            "KILL_AT=" + std::to_string(step), "ASAN_OPTIONS=verify_asan_link_order=0"};
  }
  static bool NothingWasBegun(const test::ProcessResult& resumed) {
    return resumed.errors.find("nothing of that run was done") != std::string::npos;
  }
  fs::path Log() const { return Home() / "Letters 2026-11-21 093000.log"; }
  // Letters by their folder; everything made is removed.
  std::map<std::string, int> TakeLetters() const {
    std::map<std::string, int> letters;
    for (const auto& entry : fs::directory_iterator(Home())) {
      if (!entry.is_directory() || entry.path().filename() == "Templates") continue;
      for (const auto& file : fs::directory_iterator(entry)) {
        if (file.path().extension() == ".rtf") ++letters[entry.path().filename()];
      }
      fs::remove_all(entry);
    }
    fs::remove(Log());
    return letters;
  }

  test::SmtpServer server_{"plain"};
};

TEST_F(GenerateResume, AfterAKillAtAnyStepOfTheLogNobodyIsMailedTwice) {
  const char* const kNames[] = {"Noor Whaanga", "Élodie Evans-Pike"};
  int step = 1, in_doubt = 0, before = 0;
  for (;; ++step) {
    SCOPED_TRACE("killed at step " + std::to_string(step));
    const test::ProcessResult killed = Mail("T00001 T00002", KillAt(step));
    if (killed.status == 0) break;
    ASSERT_EQ(killed.status, 128 + SIGKILL) << killed.errors;
    const test::ProcessResult resumed = Resume();
    const int sent = static_cast<int>(server_.Messages().size()) - before;
    if (NothingWasBegun(resumed)) {
      EXPECT_EQ(resumed.status, 1);
      EXPECT_EQ(sent, 0);
      EXPECT_TRUE(TakeLetters().empty());
      continue;
    }
    const bool doubt = resumed.errors.find("1 of 2 letters mailed") != std::string::npos;
    EXPECT_THAT(resumed.errors, HasSubstr(doubt ? ", 1 in doubt." : "2 of 2 letters mailed"));
    EXPECT_EQ(resumed.status, doubt ? 1 : 0);
    std::map<std::string, int> mailed;
    for (int i = before + 1; i <= before + sent; ++i) ++mailed[server_.Envelope(i)];
    for (const auto& [envelope, count] : mailed) EXPECT_EQ(count, 1) << envelope << " got two";
    EXPECT_TRUE(sent == 2 || (doubt && sent == 1)) << sent;
    in_doubt += doubt ? 1 : 0;

    const test::ProcessResult again = Resume();
    EXPECT_EQ(again.status, doubt ? 1 : 0);
    EXPECT_EQ(static_cast<int>(server_.Messages().size()), before + sent);
    before += sent;
    const auto letters = TakeLetters();
    for (const char* name : kNames)
      EXPECT_EQ(letters.count(name) ? letters.at(name) : 0, 1) << name;
  }
  // Two letters take at least these steps; each can be caught between server and log.
  EXPECT_GE(step, 14);
  EXPECT_GE(in_doubt, 2);
}

TEST_F(GenerateResume, MailsOnlyWhomTheServerRefusedAndNamesTheReason) {
  test::SmtpServer refusing("plain", {"refuse=tenant2@example.test"});
  ToServer(refusing);
  // T00006 has no address.
  const test::ProcessResult first =
      Run({"generate", "--template", "Note", "--to", "email", "--subject", "Rent", "--closed",
           "--recipient", "T00006", "--recipient", "T00002", "--recipient", "T00001"});
  EXPECT_EQ(first.status, 1);
  EXPECT_THAT(first.errors, HasSubstr("1 has no e-mail address:\n  Tama O'Brien (T00006), "));
  EXPECT_THAT(first.errors, HasSubstr("Élodie Evans-Pike (T00002): -2147220977 - The server "
                                      "rejected one or more recipient addresses."));
  EXPECT_THAT(first.errors, HasSubstr("1 of 3 letters mailed, 1 failed, 1 without an address."));
  ToServer(server_);
  const test::ProcessResult resumed = Resume();
  EXPECT_THAT(resumed.errors,
              HasSubstr("2 of 3 letters mailed (1 of them before), 1 without an address."));
  ASSERT_EQ(server_.Messages().size(), 1U);
  EXPECT_EQ(server_.Envelope(1), "office@example.test\ntenant2@example.test");
  EXPECT_THAT(test::ParseMessage(server_.MessageFile(1)), HasSubstr("subject: Rent\n"));
  EXPECT_EQ(TakeLetters().at("Élodie Evans-Pike"), 1) << "merged again";

  // Where no server answers, a batch does not try it for everybody.
  {
    test::SmtpServer gone("plain");
    ToServer(gone);
  }
  EXPECT_THAT(Mail("T00001 T00002 T00003 T00005").errors,
              HasSubstr("Stopped. 0 of 4 letters mailed, 3 failed, 1 not begun."));
}

TEST_F(GenerateResume, NamesWhoHasVanishedSinceAndMailsTheOthers) {
  {
    test::SmtpServer gone("plain");
    ToServer(gone);
  }
  // Saved before the server failed, but for the last.
  EXPECT_EQ(Mail("T00001 T00002 T00003 T00005").status, 1);
  ToServer(server_);
  for (const char* code : {"T00002", "T00005"}) {
    const auto removed = Run({"query", "--write", Database().string(),
                              "delete from tenancy where reference = '" + std::string(code) + "'"});
    ASSERT_EQ(removed.status, 0) << removed.errors;
  }
  const test::ProcessResult resumed = Resume();
  EXPECT_EQ(resumed.status, 1);
  EXPECT_THAT(resumed.errors, HasSubstr("2 of 4 letters mailed, 2 failed."));
  EXPECT_THAT(resumed.errors, HasSubstr("(T00002): the rental database no longer has this"));
  EXPECT_THAT(resumed.errors, HasSubstr("(T00005): the rental database has no such tenancy"));
  EXPECT_EQ(server_.Messages().size(), 2U);
}

TEST_F(GenerateResume, UnfinishedRunsAreListedUntilTheyAreDoneOrForgotten) {
  const auto list = [&] { return Run({"generate", "--unfinished"}).output; };
  WriteTemplate("Note", "<<Tenant Code>> <<?Which day?>>");
  EXPECT_EQ(Mail("T00003", {}, "Monday\n").status, 0);
  WriteFile(Home() / "Letters to the council.log", "not ours");
  EXPECT_EQ(list(), "");
  fs::remove(Log());
  EXPECT_EQ(Mail("T00001 T00002 T00012", {}, "Mon } day\nTuesday\nFriday\n").status, 1);
  const std::string log = ReadWholeFile(Log());
  const std::string found = list();
  EXPECT_THAT(found, testing::StartsWith(
                         Log().string() +
                         "\n  2026-11-21 09:30:00  \"Note\" to tenants by e-mail, subject \"Your "
                         "rent\"\n  1 of 3 letters mailed, 1 held back, 1 without an address\n"
                         "  Held back: Noor Whaanga (T00001): Which day: the answer "));
  EXPECT_THAT(found, testing::EndsWith(" (T00012): no e-mail address\n"));
  WriteWholeFile(Log(), ReplaceAll(log, "mailed\t2", "sending\t2"));
  EXPECT_THAT(list(), HasSubstr("0 of 3 letters mailed, 1 held back, 1 in doubt, 1 without"));
  EXPECT_THAT(list(), HasSubstr("  In doubt: Élodie Evans-Pike (T00002)"));
  WriteWholeFile(Log(), log);

  const std::string name = Log().filename();
  EXPECT_EQ(Run({"generate", "--forget", name}).status, 0);
  EXPECT_EQ(list(), "");
  EXPECT_THAT(ReadWholeFile(Log()), testing::StartsWith(log));
  // Resumed all the same, it is found again.
  EXPECT_EQ(Resume("Mon } day\n").status, 1);
  EXPECT_THAT(list(), HasSubstr("1 of 3 letters mailed"));
  // One that cannot be resumed is told with its problem, and can be forgotten too.
  for (const std::string& text : {std::string(), log.substr(0, 9), log + "rubbish\n"}) {
    WriteWholeFile(Log(), text);
    EXPECT_THAT(list(), HasSubstr(text.size() > 9 ? "is damaged" : "nothing of that run was done"));
    EXPECT_EQ(Run({"generate", "--forget", name}).status, 0);
    EXPECT_EQ(list(), "");
  }
  EXPECT_EQ(Run({"generate", "--forget", "Letters to the council.log"}).status, 1);
  EXPECT_EQ(Run({"generate", "--unfinished", "--all"}).status, 2);
}

TEST_F(GenerateResume, AnAnswerForAllHoldsOnResumingButNotWhereItHoldsALetterBack) {
  WriteTemplate("Note", "<<Tenant Code>> <<?Which day?>>");
  const auto stopped = Mail("T00001 T00002 T00003 T00005", {}, "/all Mon } day\n/stop\n");
  EXPECT_THAT(stopped.errors, HasSubstr("(1 of 4 letters; \"/all TEXT\" answers for all"));
  EXPECT_THAT(stopped.errors, HasSubstr("Stopped. 0 of 4 letters mailed, 1 held back, 3 not"));
  EXPECT_THAT(Resume("Friday\n/all Monday\n/stop\n").errors, HasSubstr("4 of 4 letters mailed"));
  for (const auto& [number, text] : {std::pair(1, "T00001 Friday"),
                                     {2, "T00002 Monday"},
                                     {3, "T00003 Monday"},
                                     {4, "T00005 Monday"}}) {
    EXPECT_THAT(test::ParseMessage(server_.MessageFile(number)), HasSubstr(text));
  }
  TakeLetters();
  EXPECT_THAT(Mail("T00001", {}, "/stop\n").errors, HasSubstr("Stopped. 0 of 1 letter mailed, 1"));
  TakeLetters();
  // Kept from one attempt to the next: a killed run does not ask again.
  int kept = 0;
  for (int step = 1;; ++step) {
    SCOPED_TRACE("killed at step " + std::to_string(step));
    const auto killed = Mail("T00001 T00002", KillAt(step), "/all Sunday\n");
    if (killed.status == 0) break;
    if (ReadWholeFile(Log()).find("answer\tWhich day\tSunday") != std::string::npos) {
      ++kept;
      EXPECT_THAT(Resume().errors, testing::Not(HasSubstr("Which day")));
    }
    TakeLetters();
  }
  EXPECT_GE(kept, 5);
}

TEST_F(GenerateResume, WhileTheServerIsAwayNothingIsDoneFromTheLocalCopy) {
  const fs::path server = Home().parent_path() / "server", database = server / "property.mdb";
  fs::create_directories(server / "Templates");
  fs::copy_file(Database(), database);
  fs::copy_file(Home() / "Templates/Note.rtf", server / "Templates/Note.rtf");
  StoreSetting("Settings", "Networkable", "1");
  StoreSetting("Settings", "DatabaseLocation", database.string());
  EXPECT_EQ(Mail("T00001 T00012").status, 1);  // the second has no address
  const fs::path log = server / Log().filename();
  const std::string before = ReadWholeFile(log);
  fs::rename(database, server / "away.mdb");
  for (const std::string& named : {log.string(), log.filename().string()}) {
    const auto resumed = Run({"generate", "--resume", named});
    EXPECT_EQ(resumed.status, 1);
    EXPECT_THAT(resumed.errors, HasSubstr("property.mdb cannot be reached. Nothing was done"));
  }
  EXPECT_THAT(Run({"generate", "--unfinished"}).errors, HasSubstr("runs on the server are not"));
  EXPECT_EQ(ReadWholeFile(log), before);
  fs::rename(server / "away.mdb", database);
  EXPECT_THAT(Run({"generate", "--unfinished"}).output, HasSubstr("1 without an address"));
  EXPECT_EQ(Run({"generate", "--resume", log.string()}).status, 1);
  EXPECT_EQ(server_.Messages().size(), 1U);
}

TEST_F(GenerateResume, HoldsInDoubtWhatTheServerTookWithoutAWord) {
  test::SmtpServer silent("hangup-BODY");
  ToServer(silent);
  const test::ProcessResult first = Mail("T00001");
  EXPECT_EQ(first.status, 1);
  EXPECT_THAT(first.errors, HasSubstr("0 of 1 letter mailed, 1 in doubt."));
  EXPECT_THAT(first.errors, HasSubstr("In doubt: Noor Whaanga (T00001), "));
  EXPECT_THAT(first.errors, testing::Not(HasSubstr("--resume")));
  ToServer(server_);
  EXPECT_EQ(Resume().status, 1);
  EXPECT_TRUE(server_.Messages().empty());

  // Cut before the text was on its way, it is a plain failure and is sent later.
  TakeLetters();
  test::SmtpServer early("hangup-RCPT");
  ToServer(early);
  EXPECT_THAT(Mail("T00001").errors, HasSubstr("0 of 1 letter mailed, 1 failed."));
  ToServer(server_);
  EXPECT_EQ(Resume().status, 0);
  EXPECT_EQ(server_.Messages().size(), 1U);
}

TEST_F(GenerateResume, WithoutAMailProgramTheRunEndsAndSaysWhatToInstall) {
  fs::copy_file(test::SampleDatabase(), Database(), fs::copy_options::overwrite_existing);
  const test::ProcessResult run =
      Mail("T00001 T00002 T00003 T00005", {"PATH=" + (Home() / "no programs").string()});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("Unable to send an email."));
  EXPECT_THAT(run.errors, HasSubstr("Install Thunderbird, or choose a mail program"));
  EXPECT_THAT(run.errors, HasSubstr("Stopped. 0 of 4 letters"));
  EXPECT_THAT(run.errors, HasSubstr("3 failed, 1 not begun."));
}

TEST_F(GenerateResume, AServerThatMisbehavesCostsNobodyALetterAndNobodyGetsTwo) {
  std::string thirty;
  for (int code = 1, found = 0; found < 30; ++code) {
    if (code % 6 == 0 || code == 9 || code == 27) continue;  // without an address, or closed
    thirty +=
        (found++ > 0 ? " T000" : "T000") + std::string(code < 10 ? "0" : "") + std::to_string(code);
  }
  const struct {
    const char* fault;
    std::vector<std::string> options;
    const char* first;
    const char* resumed;
  } cases[] = {
      {"shutdown-connect",
       {},
       "Stopped. 0 of 30 letters mailed, 3 failed, 27 not begun.",
       "30 of 30 letters mailed"},
      {"hangup-RCPT",
       {"after=7"},
       "Stopped. 7 of 30 letters mailed, 3 failed, 20 not begun.",
       "30 of 30 letters mailed (7 of them before)"},
      {"shutdown-MAIL", {"after=7", "times=1"}, "30 of 30 letters mailed", ""},
      {"surplus-BODY", {}, "30 of 30 letters mailed", ""},
      {"refuse5-RCPT",
       {"after=7", "times=1"},
       "29 of 30 letters mailed, 1 failed.",
       "30 of 30 letters mailed (29 of them before)"},
      {"reset-BODY",
       {"after=7", "times=3"},
       "27 of 30 letters mailed, 3 in doubt.",
       "27 of 30 letters mailed"},
      {"hangup-BODY",
       {"after=7"},
       "Stopped. 7 of 30 letters mailed, 4 in doubt, 19 not begun.",
       "26 of 30 letters mailed (7 of them before), 4 in doubt."},
  };
  int before = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault);
    const test::SmtpServer faulty(c.fault, c.options);
    ToServer(faulty);
    const test::ProcessResult first = Mail(thirty);
    EXPECT_THAT(first.errors, HasSubstr(c.first));
    EXPECT_EQ(first.status, std::string_view(c.first).starts_with("30 of 30") ? 0 : 1);
    ToServer(server_);
    if (first.status != 0) {
      EXPECT_THAT(Resume().errors, HasSubstr(c.resumed));
    }
    std::map<std::string, int> copies;
    const auto count = [&](const test::SmtpServer& server, int from) {
      int n = from;
      for (; fs::exists(server.MessageFile(n + 1)); ++n) ++copies[server.Envelope(n + 1)];
      return n;
    };
    count(faulty, 0);
    before = count(server_, before);
    // The letters in doubt had arrived: this server takes a message before it misbehaves.
    EXPECT_EQ(copies.size(), 30U);
    for (const auto& [envelope, number] : copies) EXPECT_EQ(number, 1) << envelope;
    TakeLetters();
  }
}

TEST_F(GenerateResume, ALetterHeldBackWaitsForACorrectionOrAPersonsWord) {
  WriteTemplate("Note", "<<Tenant Code>> <<?Which day?>>");
  const fs::path letter = Home() / "Noor Whaanga/Note.rtf";
  const auto first = Mail("T00001 T00002", {}, "Mon } day\nTuesday\n");
  EXPECT_EQ(first.status, 1);
  EXPECT_THAT(first.errors, HasSubstr("1 of 2 letters mailed, 1 held back.\n"));
  EXPECT_THAT(first.errors,
              HasSubstr("Held back: Noor Whaanga (T00001): Which day: the answer \"Mon } day\""));
  EXPECT_THAT(first.errors, HasSubstr("--send-held"));
  const std::string corrected = test::RtfDocument("Monday, corrected by hand");
  const struct {
    const char* what;
    std::string by_hand;  // what a person makes of the file before the run is resumed
    const char* answer;
    const char* said;
    std::string in_file;
  } steps[] = {
      {"merged anew, and wrong again", "", "Fri } day\n", "1 held back", "T00001 Fri"},
      {"corrected, with a code left", test::RtfDocument("By hand <<Tenant Nmae>>"), "",
       "\"<<Tenant Nmae>>\" was not filled in", "By hand <<Tenant Nmae>>"},
      {"never merged over what a person wrote", "", "Saturday\n", "1 held back", "By hand"},
      {"corrected", corrected, "", "2 of 2 letters mailed (1 of them before).", corrected},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(step.what);
    EXPECT_EQ(server_.Messages().size(), 1U);
    if (!step.by_hand.empty()) WriteFile(letter, step.by_hand);
    EXPECT_THAT(Resume(step.answer).errors, HasSubstr(step.said));
    EXPECT_THAT(ReadWholeFile(letter), HasSubstr(step.in_file));
  }
  EXPECT_THAT(test::ParseMessage(server_.MessageFile(2)), HasSubstr("corrected by hand"));
  EXPECT_EQ(Resume().status, 0);
  EXPECT_EQ(TakeLetters().at("Noor Whaanga"), 1) << "a second letter beside the held one";

  // Right once it is merged anew; or sent as it is.
  EXPECT_THAT(Mail("T00001", {}, "Mon } day\n").errors, HasSubstr("0 of 1 letter mailed, 1 held"));
  EXPECT_EQ(Resume("Sunday\n").status, 0);
  EXPECT_THAT(test::ParseMessage(server_.MessageFile(3)), HasSubstr("T00001 Sunday"));
  EXPECT_EQ(TakeLetters().at("Noor Whaanga"), 1);
  EXPECT_EQ(Mail("T00001", {}, "Mon } day\n").status, 1);
  EXPECT_EQ(Run({"generate", "--resume", Log().string(), "--send-held"}).status, 0);
  EXPECT_EQ(server_.Messages().size(), 4U);
}

TEST_F(GenerateResume, AKillAtAnyStepLetsNoHeldLetterOut) {
  const auto written = [&](const char* text) { WriteTemplate("Note", text); };
  const auto expect_held = [&](const char* text) {
    const test::ProcessResult resumed = Resume();
    if (NothingWasBegun(resumed)) return;
    EXPECT_THAT(resumed.errors, HasSubstr("0 of 1 letter mailed, 1 held back."));
    EXPECT_THAT(ReadWholeFile(Home() / "Noor Whaanga/Note.rtf"), HasSubstr(text));
    EXPECT_EQ(TakeLetters().at("Noor Whaanga"), 1);
  };
  int steps = 0;
  for (int status = -1; status != 1; ++steps) {
    SCOPED_TRACE("the first run killed at step " + std::to_string(steps + 1));
    written("first <<Tenant Nmae>>");
    status = Mail("T00001", KillAt(steps + 1)).status;
    expect_held("first");
    TakeLetters();
  }
  EXPECT_GE(steps, 4);
  steps = 0;
  for (int status = -1; status != 1; ++steps) {
    SCOPED_TRACE("the resumed run killed at step " + std::to_string(steps + 1));
    written("first <<Tenant Nmae>>");
    EXPECT_EQ(Mail("T00001").status, 1);
    written("second <<Tenant Nmae>>");
    status = Resume({}, KillAt(steps + 1)).status;
    expect_held("second");
  }
  EXPECT_GE(steps, 4);
  EXPECT_TRUE(server_.Messages().empty());
}

}  // namespace
}  // namespace tenora
