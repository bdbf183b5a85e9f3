// Letters merged by several threads: the same run, to the byte, as by one.
#include "letters/generate/merge_ahead.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <map>

#include "letters/generate/run_log.h"
#include "letters/generation.h"
#include "letters/template_library.h"
#include "platform/query/engine.h"
#include "platform/runtime/text.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kRise = "update revenues set amount = amount + 1";

// The sample agency, as it was an hour ago.
class Agency {
 public:
  Agency() {
    fs::copy(test::SourceDir() / "examples/agency", Home(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    fs::last_write_time(Database(), fs::file_time_type::clock::now() - std::chrono::hours(1));
  }
  fs::path Home() const { return machine.ProgramFolder(); }
  fs::path Database() const { return Home() / "property.mdb"; }
  void Template(std::string_view kind, const std::string& text) const {
    WriteWholeFile(Home() / kind / "Notice.rtf", "{\\rtf1\\ansi " + text + "\\par}");
  }
  // As another program does it.
  void Change(const char* statement) const {
    query::Workspace::Create()->OpenDatabase(Database())->Execute(statement);
  }

  test::FakePlatform machine;
  Session session{machine.Parts()};
};

std::vector<Recipient> Everybody(const Caches& caches, std::string_view kind) {
  std::vector<Recipient> all;
  for (const RecipientRow& row : ListRecipients(caches, kind, {.closed = true})) {
    all.push_back(row.recipient);
  }
  return all;
}

struct Case {
  std::string_view kind;
  std::string name;  // of a template of the agency
  std::string text;  // of a template of the case's own, without a name
  std::string pattern = {};
  const char* change_after_five = nullptr;  // of the database
};

// The log of a run without the lines that a sync of the disk brings: when it comes is a matter of
// the time.
std::string WithoutSyncs(const std::string& log) {
  std::string rest;
  for (const std::string& line : Split(log, "\n")) {
    if (!line.starts_with("saved\t")) rest += line + "\n";
  }
  return rest;
}

// Everything that a run leaves, the folder's own name aside.
struct Left {
  std::map<std::string, std::string> files;
  std::vector<std::string> reports, said;
};

class Watching : public GenerationObserver {
 public:
  void LetterFinished(const LetterReport& report) override {
    std::string line = std::to_string(report.number) + " " + report.file.filename().string() + " " +
                       std::to_string(static_cast<int>(report.result)) + report.problem;
    for (const std::string& warning : report.warnings) line += "; " + warning;
    reports.push_back(line);
    if (reports.size() == 5 && after_five) after_five();
  }

  std::vector<std::string> reports;
  std::function<void()> after_five;
};

Left Generate(const Case& one, unsigned threads) {
  Agency agency;
  GenerationRequest request;
  request.template_kind = one.kind;
  request.template_name = one.name.empty() ? "Notice" : one.name;
  request.name_pattern = one.pattern;
  request.answers["Who"] = "Ann <<Tenant Nmae>> {\\b B}";
  if (one.name.empty()) agency.Template(one.kind, one.text);
  if (one.text.find("<<?Which day?>>") != std::string::npos) {
    agency.machine.dialogs.WillType("Monday").WillCancel().WillAnswer(
        {.way = LetterAnswer::Way::kText, .text = "Friday", .for_all = true});
  }
  Watching watching;
  if (one.change_after_five != nullptr) {
    watching.after_five = [&] { agency.Change(one.change_after_five); };
  }
  Generation generation(agency.session, AfterError::kNextRecipient, watching);
  generation.MergeOn(threads);
  generation.Run(request, [&](const Caches& caches) {
    std::vector<Recipient> all = Everybody(caches, one.kind);
    all.insert(all.begin() + 3, Recipient{"Nobody", "T99999"});
    return all;
  });
  Left left{{}, watching.reports, agency.machine.dialogs.Texts()};
  const std::string folder = agency.machine.folder.path().string();
  for (const auto& entry : fs::recursive_directory_iterator(agency.Home())) {
    if (entry.is_directory() || entry.path().extension() == ".mdb") continue;
    const std::string text = ReplaceAll(ReadWholeFile(entry.path()), folder, "");
    left.files[entry.path().lexically_relative(agency.Home()).string()] =
        entry.path().extension() == ".log" ? WithoutSyncs(text) : text;
  }
  return left;
}

TEST(MergeAhead, LeavesEverythingAsOneThreadDoes) {
  const Case cases[] = {
      {kTemplates, "", "<<Tenant Name>> <<Balance Owing>> <<Print Time>> <<Last Payment Amount>>"},
      {kTemplates, "Rent arrears notice", ""},
      {kTemplates, "Tenancy statement", ""},
      {kOwnerTemplates, "Owner statement", ""},
      // Numbers are issued in the letters' order.
      {kTemplates, "Building receipt", ""},
      {kTemplates, "", "<<Tenant Code>>, <<Tenant Nmae>>"},
      {kTemplates, "", "<<Tenant Code>> <<FutureDate:some:Days>>"},
      {kTemplates, "", "<<Tenant Code>> <<?Who?>>"},
      {kTemplates, "", "<<Tenant Code>> <<?Which day?>>"},
      {kTemplates, "", "<<Tenant Code>>", "{Number} {Tenant Code} {Balance Owing}"},
      {kTemplates, "", "<<Tenant Code>> <<Last Payment Amount>>", "", kRise},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name + one.text);
    const Left expected = Generate(one, 1), left = Generate(one, 3);
    EXPECT_THAT(expected.reports, Not(IsEmpty()));
    EXPECT_EQ(left.reports, expected.reports);
    EXPECT_EQ(left.said, expected.said);
    for (const auto& [name, text] : expected.files) EXPECT_EQ(left.files.at(name), text) << name;
    EXPECT_EQ(left.files.size(), expected.files.size());
  }
}

// The threads of a run, without the run.
class Ahead : public testing::Test {
 protected:
  Ahead() {
    agency_.session.ReloadRentalData();
    request_.template_kind = kTemplates;
    request_.template_name = "Notice";
    request_.recipients = Everybody(agency_.session.caches, kTemplates);
  }
  std::unique_ptr<MergeAhead> Start(const std::string& text, unsigned threads = 2) {
    agency_.Template(kTemplates, text);
    log_ = std::make_unique<RunLog>(agency_.Home(), request_, agency_.machine.clock);
    maker_ = std::make_unique<LetterMaker>(agency_.session, log_->request(),
                                           LetterMaker::BadFutureDate::kRaised);
    std::vector<std::size_t> numbers(log_->count());
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = i + 1;
    return MergeAhead::Start(agency_.session, *log_, *maker_, names_, numbers, threads);
  }

  Agency agency_;
  GenerationRequest request_;
  const LetterNames names_{"{Tenant Code}", kTemplates};
  std::unique_ptr<RunLog> log_;
  std::unique_ptr<LetterMaker> maker_;
};

TEST_F(Ahead, MergesLettersThatNeedNobody) {
  request_.recipients[4] = {"Nobody", "T99999"};
  const auto ahead = Start("<<Tenant Code>> <<Last Payment Amount>> <<Tenant Nmae>>");
  ASSERT_NE(ahead, nullptr);
  for (std::size_t number = 1; number <= request_.recipients.size(); ++number) {
    SCOPED_TRACE(number);
    if (number == 3) continue;  // as a letter that the run need not make
    const auto letter = ahead->Take(number);
    ASSERT_EQ(letter.has_value(), number != 5);
    if (!letter) continue;
    const Recipient& recipient = request_.recipients[number - 1];
    EXPECT_EQ(letter->name, recipient.code);
    EXPECT_EQ(letter->members.RecipientName, recipient.name);
    ASSERT_EQ(letter->findings.size(), 1U);
    PromptOutcome prompts;
    EXPECT_EQ(letter->source, maker_->Make(recipient, {}, {}, &prompts).rtfLetter.TextRTF());
  }
  EXPECT_FALSE(ahead->Take(1).has_value());
}

TEST_F(Ahead, KnowsNothingOfADatabaseThatHasChanged) {
  const auto ahead = Start("<<Last Payment Amount>>");
  ASSERT_NE(ahead, nullptr);
  EXPECT_TRUE(ahead->Take(1).has_value());
  agency_.Change(kRise);
  for (std::size_t number = 2; number <= 20; ++number) {
    EXPECT_FALSE(ahead->Take(number).has_value()) << number;
  }
}

TEST_F(Ahead, LeavesLettersOneByOneToTheRun) {
  EXPECT_EQ(Start("<<Tenant Code>>", 1), nullptr);
  EXPECT_EQ(Start("<<Tenant Code>> <<?Which day?>>"), nullptr);
  EXPECT_EQ(Start("<<BuildingReceiptNumber>>"), nullptr);
  EXPECT_EQ(Start("<<If Closed>>"), nullptr);
  request_.destination = Destination::kEmail;
  EXPECT_EQ(Start("<<Tenant Code>>"), nullptr);
  request_.destination = Destination::kPrinter;
  EXPECT_NE(Start("<<Tenant Code>>"), nullptr);
  request_.recipients.resize(15);
  EXPECT_EQ(Start("<<Tenant Code>>"), nullptr);
}

}  // namespace
}  // namespace tenora
