#include "letters/generate/run_log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "letters/file_names.h"
#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class RunLogTest : public testing::Test {
 protected:
  RunLogTest() {
    fs::create_directory(data_);
    request_.template_kind = kTemplates;
    request_.template_name = "Weekly\\Notice";
    request_.destination = Destination::kEmail;
    request_.subject = "Tab\there, line\nbreak \\x0A \x1b[31m";
    request_.answers = {{"Who = which\n?", "Ngā mihi\t"}};
    request_.database = "/srv/a\tb/property.mdb";
    request_.recipients = {{"Jane\nmailed\t2", "T1"}, {"Māhuta \\", "T2"}, {"..", ""}};
  }
  std::string Refusal(const fs::path& log) {
    return test::ErrorOf([&] { RunLog::Resume(log, data_, clock_); });
  }

  test::ScratchFolder scratch_;
  fs::path data_ = scratch_ / "data";
  Clock clock_{Date::FromCalendar(2026, 11, 21, 9, 30)};
  GenerationRequest request_;
};

TEST_F(RunLogTest, IsReadBackWhateverNamesItHolds) {
  fs::path path;
  {
    RunLog log(data_, request_, clock_);
    path = log.path();
    EXPECT_EQ(path, data_ / "Letters 2026-11-21 093000.log");
    EXPECT_EQ(RunLog(data_, request_, clock_).path(), data_ / "Letters 2026-11-21 093000 (1).log");
    EXPECT_THAT(Refusal(path), HasSubstr("belongs to a run that is still in progress"));
    log.NoteFile(2, data_ / "Māhuta -" / "Notice(1).rtf");
    log.Note(2, LetterState::kSaving);
    log.Note(1, LetterState::kFailed, "61 - Disk\nfull");
    log.NoteFile(3, data_ / RecipientFolderName("..") / "Notice.rtf");
    log.Note(3, LetterState::kHeld, "no\tpayment", "9 bytes, 1f");
    log.NoteAnswer("Which\nday", "Friday");
    request_.answers["Which\nday"] = "Friday";
    log.Sync();
  }
  // What a kill in the middle of a line leaves.
  WriteWholeFile(path, ReadWholeFile(path) + "mailed\t1\tJane");
  const std::string whole = ReadWholeFile(path).substr(0, ReadWholeFile(path).rfind('\n') + 1);
  RunLog log = RunLog::Resume(path, data_, clock_);
  EXPECT_EQ(ReadWholeFile(path), whole);
  EXPECT_EQ(log.request().subject, request_.subject);
  EXPECT_EQ(log.request().answers, request_.answers);
  EXPECT_EQ(log.request().database, request_.database);
  EXPECT_EQ(log.request().recipients, request_.recipients);
  EXPECT_EQ(log.request().destination, Destination::kEmail);
  EXPECT_EQ(log.letter(1).state, LetterState::kFailed);
  EXPECT_EQ(log.letter(1).detail, "61 - Disk\nfull");
  EXPECT_EQ(log.letter(2).state, LetterState::kSaving);
  EXPECT_EQ(log.letter(2).file, "Māhuta -/Notice(1).rtf");
  EXPECT_EQ(log.letter(3).state, LetterState::kHeld);
  EXPECT_EQ(log.letter(3).detail, "no\tpayment");
  EXPECT_EQ(log.letter(3).fingerprint, "9 bytes, 1f");
}

TEST_F(RunLogTest, KnowsTheFolderInWhichVersion1SavedALetter) {
  request_.recipients = {{"Ann: why?", "T1"}};
  fs::path path;
  {
    RunLog log(data_, request_, clock_);
    path = log.path();
    log.NoteFile(1, data_ / "Ann: why?" / "Notice.rtf");
    log.Note(1, LetterState::kSaving);
    log.Sync();
  }
  EXPECT_EQ(RunLog::Resume(path, data_, clock_).letter(1).file, "Ann: why?/Notice.rtf");
}

TEST_F(RunLogTest, NamesAFormatThatEarlierVersionsRefuseOnlyWhereTheyCannotReadIt) {
  request_.recipients = {{"Jane", "T1"}};
  const auto format_with = [&](auto&& change) {
    GenerationRequest request = request_;
    change(request);
    const fs::path path = RunLog(data_, request, clock_).path();
    EXPECT_EQ(RunLog::Resume(path, data_, clock_).request().recipients, request_.recipients);
    return ReadWholeFile(path).substr(0, 16);
  };
  EXPECT_EQ(format_with([](GenerationRequest&) {}), "Tenora run log\t2");
  EXPECT_EQ(format_with([](GenerationRequest& one) { one.name_pattern = ""; }),
            "Tenora run log\t2");
  EXPECT_EQ(format_with([](GenerationRequest& one) { one.name_pattern = "{Number}"; }),
            "Tenora run log\t3");
  EXPECT_EQ(format_with([](GenerationRequest& one) { one.one_pdf.emplace(); }),
            "Tenora run log\t3");
  EXPECT_EQ(format_with([](GenerationRequest& one) { one.post_list.emplace(); }),
            "Tenora run log\t3");
}

TEST_F(RunLogTest, SaysWhichOwnerALetterIsOf) {
  request_.template_kind = kOwnerTemplates;
  request_.recipients = {{"Rimu Trust", "", "OW0002"}, {"Ann", "", ""}};
  const fs::path path = RunLog(data_, request_, clock_).path();
  EXPECT_THAT(ReadWholeFile(path), HasSubstr("recipient\t1\tRimu Trust\tOW0002\n"));
  EXPECT_EQ(RunLog::Resume(path, data_, clock_).request().recipients, request_.recipients);
}

TEST_F(RunLogTest, OfAnotherFolderOrHostileIsRefused) {
  request_.recipients = {{"Jane", "T1"}};
  const fs::path path = RunLog(data_, request_, clock_).path();
  const std::string good = ReadWholeFile(path);
  struct Case {
    std::string text;
    const char* message;
  };
  const auto with = [&](const char* line) { return good + line + "\n"; };
  const auto changed = [&](std::string_view part, std::string_view by) {
    return ReplaceAll(good, part, by);
  };
  const Case cases[] = {
      {"", "ends before its first letter; nothing of that run was done"},
      {"Tenora ru", "ends before its first letter; nothing of that run was done"},
      {"Letters", "not a Tenora run log"},
      {"{\\rtf1}", "not a Tenora run log"},
      {changed("run log\t2", "run log\t4"), "another version of Tenora, in format 4"},
      {good.substr(0, good.find("recipient")), "ends before its first letter"},
      {changed(data_.string(), "/srv/else"), "in the data folder /srv/else; this is "},
      {changed("093000.log", "093001.log"), "is a copy of the run log"},
      {changed("destination\temail", "destination\tmoon"), "damaged in line 7"},
      {changed("recipient\t1", "recipient\t2"), "damaged"},
      {with("saved\t1\tJane\t../Jane/x.rtf\t"), "not a letter in the folder of Jane"},
      {with("saved\t1\tJane\tJane/../../x.rtf\t"), "not a letter in the folder of Jane"},
      {with("saved\t1\tJane\t/etc/x.rtf\t"), "not a letter in the folder of Jane"},
      {with("saved\t1\tJane\tTemplates/x.rtf\t"), "not a letter in the folder of Jane"},
      {with("saved\t1\tJane\tJane/passwd\t"), "not a letter in the folder of Jane"},
      {with("saved\t2\tJane\t\t"), "damaged in line 13"},
      {with("saved\t0\tJane\t\t"), "damaged"},
      {with("saved\t1\tAnn\t\t"), "damaged"},
      {with("saved\t1\tJane\t\\x4\t"), "damaged"},
      {with("held\t1\tJane\tJane/x.rtf\tno date"), "damaged"},
      {with("held\t1\tJane\tJane/../../x.rtf\tno date\t1"), "not a letter in the folder"},
      {with("delivered\t1\tJane\t\t"), "damaged"},
      {good + std::string(20, '\0') + "\n", "damaged"},
  };
  for (const Case& hostile : cases) {
    WriteWholeFile(path, hostile.text);
    EXPECT_THAT(Refusal(path), HasSubstr(hostile.message)) << hostile.text;
    EXPECT_EQ(ReadWholeFile(path), hostile.text) << "a refused log was changed";
  }
  WriteWholeFile(path, good);
  fs::copy_file(path, data_ / "Copy.log");
  EXPECT_THAT(Refusal(data_ / "Copy.log"), HasSubstr("is a copy of the run log Letters"));
  EXPECT_EQ(Refusal(path), "");
  WriteWholeFile(path, changed("run log\t2", "run log\t1"));
  EXPECT_EQ(Refusal(path), "") << "a log of the format before";
}

}  // namespace
}  // namespace tenora
