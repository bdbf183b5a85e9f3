// The routine as the window runs it; the command line's runs are tested through the program.
#include "letters/generation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "support/fake_platform.h"
#include "support/mail_options.h"
#include "support/smtp_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class Counting : public GenerationObserver {
 public:
  void LetterFinished(const LetterReport& report) override {
    results.push_back(report.result);
    if (after_letter) after_letter();
  }
  bool StopAsked() override { return results.size() >= stop_after && questions_before_stop-- <= 0; }

  std::vector<LetterReport::Result> results;
  std::size_t stop_after = 1000;
  int questions_before_stop = 0;
  std::function<void()> after_letter;
};

class WindowGeneration : public testing::Test {
 protected:
  WindowGeneration() {
    machine_.InstallSampleDatabase();
    fs::create_directory(Data() / "Templates");
    Template("Dear <<Tenant Name>>, <<Tenant Code>>");
    request_.template_kind = kTemplates;
    request_.template_name = "Notice";
  }
  void Template(const std::string& text) const {
    WriteWholeFile(Data() / "Templates/Notice.rtf", "{\\rtf1\\ansi " + text + "\\par}");
  }
  fs::path Data() const { return machine_.ProgramFolder(); }
  // Recipients whose names are enough to tell them apart.
  GenerationSummary Generate(const std::vector<std::string>& names) {
    request_.recipients.clear();
    for (const std::string& name : names) request_.recipients.push_back({name, {}});
    return GenerateSelection(session_, request_, observer_);
  }
  std::string Letter(const std::string& file) const {
    return fs::exists(Data() / file) ? ReadWholeFile(Data() / file) : "no " + file;
  }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
  GenerationRequest request_;
  Counting observer_;
};

// A namesake that a name alone would reach first does not get the letter.
TEST_F(WindowGeneration, WritesToTheTenancyThatWasChosenAmongNamesakes) {
  const std::string name = "Tama O'Brien";
  request_.recipients = {{name, "T00006"}, {"Mei Huang", "T00007"}, {name, "T00005"}};
  EXPECT_TRUE(GenerateSelection(session_, request_, observer_).complete());
  EXPECT_THAT(Letter(name + "/Notice.rtf"), HasSubstr("T00006"));
  EXPECT_THAT(Letter(name + "/Notice(1).rtf"), HasSubstr("T00005"));
  EXPECT_THAT(Letter("Mei Huang/Notice.rtf"), HasSubstr("T00007"));
}

TEST_F(WindowGeneration, EndsAtAnErrorUnderTheHandlersNameAndIsResumed) {
  WriteWholeFile(Data() / "Ben Huang", "in the way");
  const GenerationSummary stopped = Generate({"Mei Huang", "Ben Huang", "Ben Young"});
  EXPECT_TRUE(stopped.stopped);
  EXPECT_EQ(stopped.done, 1U);
  EXPECT_EQ(stopped.untouched(), 1U);
  ASSERT_EQ(stopped.failed.size(), 1U);
  ASSERT_EQ(machine_.dialogs.shown().size(), 1U);
  EXPECT_EQ(machine_.dialogs.shown()[0].title, "frmMain - cmdGenerate_Click");
  EXPECT_EQ(machine_.dialogs.shown()[0].text, stopped.failed[0].problem);

  fs::remove(Data() / "Ben Huang");
  Generation resumption(session_, AfterError::kStop, observer_);
  EXPECT_TRUE(resumption.Resume(stopped.log).complete());
  EXPECT_THAT(Letter("Ben Young/Notice.rtf"), HasSubstr("T00028"));
  EXPECT_THAT(Letter("Mei Huang/Notice(1).rtf"), HasSubstr("no Mei"));
}

TEST_F(WindowGeneration, StopsBeforeTheFirstLetterOfATemplateWithAWrongForm) {
  WriteWholeFile(Data() / kTemplates / "Notice.rtf",
                 "{\\rtf1\\ansi First line\\par <<If Closed>>To whom\\par}");
  const GenerationSummary run = Generate({"Mei Huang", "Ben Huang"});
  EXPECT_EQ(run.asked, 0U);
  ASSERT_EQ(machine_.dialogs.shown().size(), 1U);
  EXPECT_THAT(machine_.dialogs.shown()[0].text,
              HasSubstr("line 2: \"<<If Closed>>To whom\": <<If Closed>> has no <<End If>>; write "
                        "<<End If>> where its text ends"));
  EXPECT_FALSE(fs::exists(Data() / "Mei Huang"));
}

TEST_F(WindowGeneration, NamesWhoHasVanishedAndWritesToTheOthers) {
  const struct {
    std::string_view kind;
    std::vector<std::string> names;
    const char* problem;
  } cases[] = {
      {kTemplates, {"Mei Huang", "Nobody", "Ben Huang"}, "the rental database has no such tenancy"},
      {kOwnerTemplates,
       {"Quinn Māhuta", "Nobody", "Rimu-Kauri Trust"},
       "the rental database has no owner of this name"},
      // The owner of a property who has none.
      {kOwnerTemplates,
       {"Quinn Māhuta", "", "Rimu-Kauri Trust"},
       "the owner has no name in the rental database"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.problem);
    fs::create_directories(Data() / one.kind);
    WriteWholeFile(Data() / one.kind / "Notice.rtf", "{\\rtf1\\ansi To whom\\par}");
    request_.template_kind = one.kind;
    const GenerationSummary run = Generate(one.names);
    EXPECT_EQ(run.done, 2U);
    EXPECT_FALSE(run.stopped);
    ASSERT_EQ(run.failed.size(), 1U);
    EXPECT_EQ(run.failed[0].problem, one.problem);
    Generation resumption(session_, AfterError::kStop, observer_);
    EXPECT_EQ(resumption.Resume(run.log).failed.size(), 1U);
    EXPECT_TRUE(machine_.dialogs.shown().empty());
  }
}

TEST_F(WindowGeneration, EndsWhenTheDatabaseCannotBeReadAnyMoreAndIsResumed) {
  const fs::path database = Data() / "property.mdb", away = Data() / "away.mdb";
  Generation commands(session_, AfterError::kNextRecipient, observer_);
  observer_.after_letter = [&] {
    if (observer_.results.size() == 2) fs::rename(database, away);
  };
  const GenerationSummary run = commands.Run(request_, [](const Caches& caches) {
    std::vector<Recipient> all;
    for (const TenantRecord& tenant : caches.Tenants) all.push_back({tenant.KeyName, ""});
    return all;
  });
  EXPECT_TRUE(run.stopped);
  EXPECT_EQ(run.done, 2U);
  ASSERT_EQ(run.failed.size(), 3U);
  EXPECT_EQ(run.failed[0].problem, "the rental database could not be read");
  fs::rename(away, database);
  observer_.after_letter = {};
  EXPECT_TRUE(commands.Resume(run.log).complete());
}

TEST_F(WindowGeneration, NeverGoesOnWithTheLocalCopyOfAServersDatabase) {
  const fs::path server = machine_.folder / "server", database = server / "property.mdb",
                 away = server / "away.mdb";
  fs::create_directories(server / "Templates");
  fs::copy_file(Data() / "property.mdb", database);
  fs::rename(Data() / "Templates/Notice.rtf", server / "Templates/Notice.rtf");
  session_.settings.SaveSettingText("Settings", "Networkable", "1");
  session_.settings.SaveSettingText("Settings", "DatabaseLocation", database.string());
  Generation commands(session_, AfterError::kNextRecipient, observer_);
  const auto all = [](const Caches& caches) {
    std::vector<Recipient> some;
    for (std::size_t i = 0; i < 8; ++i) {
      some.push_back({caches.Tenants[i].KeyName, caches.Tenants[i].Reference});
    }
    return some;
  };
  // Away for the third letter only, and from the sixth on.
  observer_.after_letter = [&] {
    const std::size_t made = observer_.results.size();
    if (made == 2 || made == 5) fs::rename(database, away);
    if (made == 3) fs::rename(away, database);
  };
  const GenerationSummary run = commands.Run(request_, all);
  observer_.after_letter = {};
  EXPECT_TRUE(run.stopped);
  EXPECT_EQ(run.done, 4U);
  EXPECT_EQ(run.failed.size(), 4U);
  EXPECT_EQ(run.failed[0].number, 3U);
  EXPECT_EQ(run.log.parent_path(), server);
  // Each is told, and a last attempt before the run is given up.
  EXPECT_EQ(machine_.dialogs.shown().size(), 5U);
  EXPECT_THAT(machine_.dialogs.Texts(), testing::Each(HasSubstr("property.mdb cannot be reached")));

  const std::string log = ReadWholeFile(run.log);
  EXPECT_THROW(commands.Resume(run.log), RuntimeError);
  EXPECT_EQ(ReadWholeFile(run.log), log);
  fs::rename(away, database);
  EXPECT_TRUE(commands.Resume(run.log).complete());
}

TEST_F(WindowGeneration, HoldsALetterBackWithoutABoxAndSendsTheOnesThatAreNamed) {
  Template("<<Tenant Code>>, <<Tenant Nmae>>");
  const GenerationSummary run = Generate({"Mei Huang", "Ben Huang"});
  EXPECT_TRUE(machine_.dialogs.shown().empty());
  EXPECT_FALSE(run.stopped);
  EXPECT_EQ(run.untouched(), 0U);
  ASSERT_EQ(run.held.size(), 2U);
  EXPECT_THAT(run.held[1].problem, HasSubstr("\"<<Tenant Nmae>>\" was not filled in"));
  Generation resumption(session_, AfterError::kStop, observer_);
  const auto second_only = [](std::size_t number) {
    return number == 2 ? Resuming::kAsItIs : Resuming::kLeft;
  };
  const GenerationSummary sent = resumption.Resume(run.log, second_only);
  EXPECT_EQ(sent.done, 1U);
  ASSERT_EQ(sent.held.size(), 1U);
  EXPECT_EQ(sent.held[0].recipient.name, "Mei Huang");
  // What can no longer be merged stays held: from "failed" its file would go out as it is.
  fs::remove(Data() / "Templates/Notice.rtf");
  EXPECT_EQ(resumption.Resume(run.log).held.size(), 1U);
  ASSERT_EQ(machine_.dialogs.shown().size(), 1U);
  EXPECT_THAT(machine_.dialogs.shown()[0].text, HasSubstr("53 - File not found"));
}

TEST_F(WindowGeneration, NeedsTheTemplateOnlyAtItsBeginning) {
  observer_.after_letter = [&] { fs::remove(Data() / "Templates/Notice.rtf"); };
  EXPECT_TRUE(Generate({"Mei Huang", "Ben Huang"}).complete());
  EXPECT_THAT(Letter("Ben Huang/Notice.rtf"), HasSubstr("T00032"));
  // Nothing is begun without it, and there is no log of nothing.
  EXPECT_EQ(Generate({"Mei Huang"}).asked, 0U);
  EXPECT_THAT(machine_.dialogs.Texts(), ElementsAre(HasSubstr("53 - File not found")));
}

TEST_F(WindowGeneration, StopsBetweenLettersWhenAsked) {
  observer_.stop_after = 1;
  const GenerationSummary stopped = Generate({"Mei Huang", "Ben Huang"});
  EXPECT_TRUE(stopped.stopped);
  EXPECT_EQ(stopped.done, 1U);
  EXPECT_THAT(Letter("Ben Huang/Notice.rtf"), HasSubstr("no Ben"));
}

TEST_F(WindowGeneration, StopsWhileTheMailServerIsSilentAndMailsTheRestLater) {
  request_.destination = Destination::kEmail;
  const test::SmtpServer silent("silent-RCPT", {"after=1"}), good("plain");
  test::SendMailTo(silent.port(), Data() / "property.mdb");
  observer_.stop_after = 1;
  observer_.questions_before_stop = 2;  // the first comes between the letters
  const GenerationSummary stopped = Generate({"Mei Huang", "Ben Huang", "Ben Young"});
  EXPECT_TRUE(stopped.stopped);
  EXPECT_EQ(stopped.done, 1U);
  EXPECT_EQ(stopped.untouched(), 2U);
  EXPECT_THAT(machine_.dialogs.Texts(), testing::IsEmpty());

  fs::copy_file(test::SampleDatabase(), Data() / "property.mdb",
                fs::copy_options::overwrite_existing);
  test::SendMailTo(good.port(), Data() / "property.mdb");
  Session later(machine_.Parts());
  observer_.stop_after = 1000;
  Generation resumption(later, AfterError::kStop, observer_);
  EXPECT_TRUE(resumption.Resume(stopped.log).complete());
  EXPECT_EQ(good.Messages().size(), 2U);
}

TEST_F(WindowGeneration, FindsTheLetterThatAKillLeftUnnoted) {
  const fs::path log = Generate({"Mei Huang", "Ben Huang", "Claire Xu"}).log;
  std::string text = ReadWholeFile(log);
  // As a kill before the group's sync leaves it: one letter whole, one name without content, one
  // name that another run took.
  text.resize(text.find("saved\t"));
  WriteWholeFile(log, text);
  WriteWholeFile(Data() / "Ben Huang/Notice.rtf", "");
  WriteWholeFile(Data() / "Claire Xu/Notice.rtf", "{\\rtf1 of another run}");
  Generation resumption(session_, AfterError::kNextRecipient, observer_);
  EXPECT_TRUE(resumption.Resume(log).complete());
  EXPECT_THAT(Letter("Mei Huang/Notice(1).rtf"), HasSubstr("no Mei"));
  EXPECT_THAT(Letter("Ben Huang/Notice.rtf"), HasSubstr("T00032"));
  EXPECT_THAT(Letter("Claire Xu/Notice.rtf"), HasSubstr("of another run"));
  EXPECT_THAT(Letter("Claire Xu/Notice(1).rtf"), HasSubstr("T00024"));
}

}  // namespace
}  // namespace tenora
