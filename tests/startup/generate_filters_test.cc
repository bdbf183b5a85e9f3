// Recipients chosen and listed by what is known of them, through the built program.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

#include "agency.h"
#include "platform/runtime/text.h"
#include "support/sample_rows.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class GenerateFilters : public test::Agency {
 protected:
  test::ProcessResult Make(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "generate");
    return Run(arguments, "", {"TENORA_NOW=2026-11-21 09:30:00"});
  }
  // The codes of the tenancies of whom a condition holds.
  std::set<std::string> Codes(const std::string& condition) const {
    const test::ProcessResult result = Make({"--list", "--closed", "--where", condition,
                                             "--columns", "Tenant Code", "--format", "csv"});
    EXPECT_EQ(result.status, 0) << result.errors;
    std::set<std::string> codes;
    for (const std::string& line : Split(result.output, "\r\n")) codes.insert(line);
    codes.erase("");
    codes.erase("Tenant Code");
    return codes;
  }
};

// The other reader's rows, and what they say of each condition. Balances and days are held against
// it by the rental module's own tests.
TEST_F(GenerateFilters, ChooseWhomAnotherReaderOfTheFileChooses) {
  std::set<std::string> properties, with_pet;
  std::map<std::string, std::string> address;
  for (const auto& row : test::SampleTable("property")) {
    properties.insert(row.at("code"));
    address[row.at("code")] =
        row.at("address1") + "|" + row.at("address2") + "|" + row.at("address3");
  }
  for (const auto& row : test::SampleTable("custom_fields")) {
    const bool pet = row.at("parenttype") == "201" && row.at("fieldcode") == "Pet";
    if (pet && !row.at("value").empty()) with_pet.insert(row.at("parentcode"));
  }
  std::set<std::string> inspected;
  for (const auto& row : test::SampleTable("insp_schedule")) {
    const std::string day = row.at("inspection_date").substr(0, 10);
    if (day > "2026-11-21" && day <= "2026-12-21") inspected.insert(row.at("tenant_code"));
  }
  using Row = test::SampleRow;
  const struct {
    const char* condition;
    std::function<bool(const Row&)> holds;
  } cases[] = {
      {"Closed", [](const Row& row) { return row.at("closed_yn") != "0"; }},
      {"Email is empty", [](const Row& row) { return row.at("email").empty(); }},
      {"Current Rent >= 400 and Current Rent < 600.5",
       [](const Row& row) {
         const double rent = std::stod(row.at("current rent"));
         return rent >= 400 && rent < 600.5;
       }},
      {"Tenancy Start Date between 1 January 2025 and 2025-12-31",
       [](const Row& row) { return row.at("when started").starts_with("2025"); }},
      {"Tenancy End Date is empty",
       [](const Row& row) { return row.at("when ended").substr(0, 4) < "1901"; }},
      {"Property Address contains 'auckland' and not Closed",
       [&](const Row& row) {
         return row.at("closed_yn") == "0" &&
                ToLower(address[row.at("Property Code")]).find("auckland") != std::string::npos;
       }},
      {"TCustom:Pet is not empty",
       [&](const Row& row) { return with_pet.contains(row.at("reference")); }},
      {"Next Inspection within 30 days",
       [&](const Row& row) { return inspected.contains(row.at("reference")); }},
      {"Rent Frequency = \"week\" or Mobile starts with '021'",
       [](const Row& row) {
         return (row.at("every_amt") == "1" && row.at("every_freq") == "Week") ||
                row.at("mobile").starts_with("021");
       }},
  };
  for (const auto& one : cases) {
    std::set<std::string> expected;
    for (const Row& row : test::SampleTable("tenancy")) {
      if (properties.contains(row.at("Property Code")) && one.holds(row)) {
        expected.insert(row.at("reference"));
      }
    }
    EXPECT_EQ(Codes(one.condition), expected) << one.condition;
  }
}

TEST_F(GenerateFilters, SayWhatIsWrongWithACall) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* said;
  } cases[] = {
      {{"--list", "--where", "Balanse Owing > 0"}, 2, "is Balance Owing meant?\nthe names are"},
      {{"--list", "--where", "Email > 7"}, 2, "Email is a text and cannot be compared with 7"},
      {{"--list", "--columns", "Tenant Name, Balance"}, 2, "There is no column \"Balance\""},
      {{"--list", "--columns", "[TCustom:Pett]"}, 2, "is TCustom:Pet meant?\nthe names are"},
      {{"--list", "--columns", " "}, 2, "--columns: it names no column"},
      {{"--list", "--columns", ""}, 2, "--columns: it names no column"},
      {{"--list", "--sort", "Arrears"}, 2, "There is no column \"Arrears\""},
      {{"--list", "--columns", "Last Letter"}, 2, "name it with --template"},
      {{"--list", "--where", "Last Letter is empty"}, 2, "name it with --template"},
      {{"--list", "--where", "TCustom:Pett is empty"}, 2, "\"TCustom:Pett\" is no name or value"},
      {{"--list", "--where", "Pet = 1"}, 2, "PCustom:AlarmCode"},
      {{"--list", "--where", ""}, 2, "--where: there is no condition"},
      {{"--list", "--filter", ""}, 2, "--filter: it names no filter"},
      {{"--list", "--owners", "--where", "Property Arrears > 0"}, 2, "give --by-property"},
      {{"--list", "--owners", "--sort", "Property Code"}, 2, "give --by-property"},
      {{"--list", "--filter", "None"}, 2, "There is no filter \"None\".\nnone has been saved"},
      {{"--list", "--format", "xml"}, 2, "xml"},
      {{"--list", "--descending"}, 2, "--descending goes with --sort"},
      {{"--template", "Welcome", "--all", "--columns", "all"}, 2, "go with --list"},
      {{"--template", "Welcome", "--where", "Closed", "--recipient", "T00001"}, 2, "exclude"},
      {{"--template", "Welcome", "--where", "Current Rent < 0"}, 1, "holds of nobody"},
  };
  for (const auto& one : cases) {
    const test::ProcessResult result = Make(one.arguments);
    EXPECT_EQ(result.status, one.status) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(one.said));
    EXPECT_THAT(result.output, IsEmpty());
  }
}

TEST_F(GenerateFilters, PrintTablesForPeopleAndForPrograms) {
  const std::vector<std::string> columns{"--list",
                                         "--closed",
                                         "--search",
                                         "brien",
                                         "--sort",
                                         "Tenant Code",
                                         "--descending",
                                         "--columns",
                                         "tenant  code, Tenant Name,Current Rent, Closed,"
                                         "Rent Review Date"};
  const auto as = [&](const char* format) {
    std::vector<std::string> arguments = columns;
    arguments.insert(arguments.end(),
                     {"--format", format, "--where", "Tenant Name contains 'tama'"});
    const test::ProcessResult result = Make(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    return result.output;
  };
  std::map<std::string, std::string> rents, reviews;
  for (const auto& row : test::SampleTable("tenancy")) {
    rents[row.at("reference")] = row.at("current rent").substr(0, row.at("current rent").find('.'));
    reviews[row.at("reference")] = row.at("RentReviewDate").substr(0, 10);
  }
  ASSERT_LT(reviews["T00006"], "1901") << "the closed one has no review date";
  EXPECT_EQ(as("csv"),
            "Tenant Code,Tenant Name,Current Rent,Closed,Rent Review Date\r\n"
            "T00006,Tama O'Brien," +
                rents["T00006"] + ",yes,\r\nT00005,Tama O'Brien," + rents["T00005"] + ",no," +
                reviews["T00005"] + "\r\n");
  EXPECT_EQ(as("json"),
            "[\n  {\"Tenant Code\": \"T00006\", \"Tenant Name\": \"Tama O'Brien\", "
            "\"Current Rent\": " +
                rents["T00006"] +
                ", \"Closed\": true, \"Rent Review Date\": null},\n  {\"Tenant Code\": \"T00005\", "
                "\"Tenant Name\": \"Tama O'Brien\", \"Current Rent\": " +
                rents["T00005"] + ", \"Closed\": false, \"Rent Review Date\": \"" +
                reviews["T00005"] + "\"}\n]\n");
  const std::vector<std::string> lines = Split(as("table"), "\n");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_THAT(lines[0], HasSubstr("Tenant Name   Current Rent  Closed"));
  EXPECT_EQ(lines[1].find("yes"), lines[0].find("Closed"));
}

TEST_F(GenerateFilters, ListAPropertyWhoseOwnerHasNoName) {
  const test::ProcessResult result = Make({"--list", "--owners", "--by-property", "--columns",
                                           "Code, Name, [OCustom:Salutation]", "--format", "csv"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, HasSubstr("\r\nOW0004,,\r\nOW0006,Søren Ngata,"));
  EXPECT_THAT(result.errors,
              HasSubstr("property PR00001: its owner OW0004 has no name in the rental database\n"));
}

TEST_F(GenerateFilters, WriteToEachOnceAndLeaveOutThoseWrittenToSince) {
  WriteTemplate("Note", "Dear <<Tenant Name>>");
  const std::string condition =
      "Tenant Name contains \"brien\" and (Last Letter is empty or Last Letter < today - 14 days)";
  const test::ProcessResult first = Make({"--template", "Note", "--closed", "--where", condition});
  EXPECT_EQ(first.status, 0) << first.errors;
  const auto written = static_cast<std::size_t>(std::ranges::count(first.output, '\n'));
  EXPECT_GT(written, 2U);
  const auto list = [&](const char* where) {
    return Make({"--list", "--template", "Note", "--closed", "--where", where, "--columns",
                 "Tenant Code,Last Letter", "--format", "csv"})
        .output;
  };
  const std::string listed = list("Last Letter = today");
  EXPECT_EQ(std::ranges::count(listed, '\n'), written + 1);
  // Namesakes are told apart by the run's log.
  EXPECT_THAT(listed, HasSubstr("T00005,2026-11-21\r\n"));
  EXPECT_THAT(listed, HasSubstr("T00006,2026-11-21\r\n"));
  EXPECT_EQ(Make({"--template", "Note", "--closed", "--where", condition}).status, 1);
  EXPECT_THAT(Make({"--template", "note", "--closed", "--where", condition}).errors,
              HasSubstr("holds of nobody"));

  // Another template's letters say nothing, nor do files that namesakes share without a log.
  EXPECT_THAT(
      Make({"--list", "--template", "Welcome", "--where", "Last Letter is not empty"}).output,
      IsEmpty());
  for (const auto& entry : fs::directory_iterator(Home())) {
    if (entry.path().extension() == ".log") fs::remove(entry.path());
  }
  WriteFile(Home() / "Mei Huang/Note(2).rtf", "{\\rtf1 x}");
  WriteFile(Home() / "Ben Huang/Notes.rtf", "{\\rtf1 x}");
  const std::string by_files = list("Last Letter is not empty");
  EXPECT_THAT(by_files, HasSubstr("T00007,"));
  EXPECT_THAT(by_files, Not(HasSubstr("T00032,")));
  EXPECT_THAT(by_files, Not(HasSubstr("T00005,")));
}

}  // namespace
}  // namespace tenora
