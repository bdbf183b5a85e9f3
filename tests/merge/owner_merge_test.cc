#include "merge/owner_merge.h"

#include <cstdlib>
#include <map>

#include "merge/merge_codes.h"
#include "merge_fixture.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"
#include "support/sample_rows.h"

namespace tenora {
namespace {

using testing::ElementsAre;

class InsertOwnerDetailsTest : public test::MergeTest {
 protected:
  InsertOwnerDetailsTest() { machine_.InstallSampleDatabase(); }

  void LoadOwners() {
    session_.database.OpenDatabase();
    session_.caches.CacheOwners(session_.database);
    session_.database.CloseDatabase();
  }
  void AddOwner(const char* name, const char* code) {
    OwnerRecord& owner = session_.caches.Owners.emplace_back();
    owner.Name = name;
    owner.Code = code;
    owner.FeeValue = 0;
  }
  std::string Merge(const std::string& source, const std::string& recipient) {
    letter_.LetterTitle = "Statement";
    letter_.RecipientName = recipient;
    Letter(source);
    outcome_ = InsertOwnerDetails(target_);
    EXPECT_FALSE(session_.database.IsOpen());
    return Shown();
  }

  OwnerMergeOutcome outcome_;
};

TEST_F(InsertOwnerDetailsTest, FillsEveryOwnerOfTheSampleAgency) {
  LoadOwners();
  // Behind date and name, in the order of the catalogue.
  const char* const kColumns[] = {
      "Code",        "postal1",   "postal2",    "postal3",      "street1",       "street2",
      "street3",     "home",      "work",       "mobile",       "fax",           "email",
      "fee_percent", "fee_value", "ird_number", "account_name", "account_number"};
  std::map<std::string, std::string> salutations;
  for (const test::SampleRow& field : test::SampleTable("custom_fields")) {
    if (field.at("parenttype") == "203") salutations[field.at("parentcode")] = field.at("value");
  }
  for (const test::SampleRow& row : test::SampleTable("owner")) {
    const std::string name = ReplaceAll(ReplaceAll(row.at("name"), "/", "-"), "\"", "`");
    if (name.empty()) continue;
    std::string codes = "<<Print Date>>|<<Name>>", expected = "21 November 2026|" + name;
    std::size_t position = 2;
    for (const std::string column : kColumns) {
      const std::string& value = row.at(column);
      const bool number = column.starts_with("fee_");
      codes += "|<<" + std::string(MergeCodesOf(TemplateKind::kOwner)[position++].name) + ">>";
      expected += "|" + (number ? NumberText(std::atof(value.c_str())) : value);
    }
    codes += "|<<OCustom:Salutation>>|<<OCustom:None>>|<<FutureDate:14:Days>>|<<Future Date>>";
    expected += "|" + salutations[row.at("Code")] + "||5 December 2026|<<Future Date>>";
    EXPECT_EQ(Merge(codes, name), expected);
    EXPECT_TRUE(outcome_.owner_found && !outcome_.error && outcome_.future_dates_inserted);
  }
  EXPECT_GT(session_.caches.Owners.size(), 5u);
}

TEST_F(InsertOwnerDetailsTest, LeavesALetterForNobodyAsItIs) {
  LoadOwners();
  for (const char* name : {"Nobody", "", "quinn Māhuta", "Quinn Māhuta "}) {
    const std::string codes = "<<Print Date>> <<Name>> <<OCustom:Salutation>> <<FutureDate:x:y>>";
    EXPECT_EQ(Merge(codes, name), codes);
    EXPECT_EQ(letter_.Caption, std::string("Statement : ") + name);
    EXPECT_TRUE(!outcome_.owner_found && !outcome_.error);
  }
}

TEST_F(InsertOwnerDetailsTest, LetsALaterNamesakeChangeNothingAndWalksNoFurtherThanItsCounter) {
  AddOwner("Jane", "OW0002");
  AddOwner("Jane", "OW0001");
  letter_.Inserting = true;
  EXPECT_EQ(Merge("<<Code>>|<<OCustom:Salutation>>|<<Fee Value>>", "Jane"), "OW0002||0");
  EXPECT_EQ(letter_.Caption, "");
  session_.caches.Owners.resize(32767);
  AddOwner("Beyond", "");
  EXPECT_EQ(Merge("<<Name>>", "Jane"), "Jane");
  EXPECT_FALSE(outcome_.error);
  EXPECT_EQ(Merge("<<Name>>", "Beyond"), "<<Name>>");
  ASSERT_TRUE(outcome_.error);
  EXPECT_EQ(outcome_.error->number(), error_number::kOverflow);
}

TEST_F(InsertOwnerDetailsTest, KeepsWhatWasReplacedWhenAnErrorEndsIt) {
  AddOwner("Jane", "OW0001");
  EXPECT_EQ(Merge("<<Name>> <<FutureDate:soon:Days>>", "Jane"), "Jane <<FutureDate:soon:Days>>");
  EXPECT_FALSE(outcome_.future_dates_inserted);
  EXPECT_THAT(Boxes(), ElementsAre("Error inserting future date.  Possible incorrect format"));
  WriteWholeFile(machine_.ProgramFolder() / "property.mdb", "no database");
  EXPECT_EQ(Merge("<<Name>> <<OCustom:A>>", "Jane"), "Jane <<OCustom:A>>");
  EXPECT_TRUE(outcome_.error);
}

TEST_F(InsertOwnerDetailsTest, StopsForAMissingFeeOnlyWhereItIsPrinted) {
  machine_.InstallSampleDatabase();
  AddOwner("Feeless", "OW999");
  session_.caches.Owners.back().FeeValue.reset();
  EXPECT_EQ(Merge("<<Code>> <<Fee Percent>>", "Feeless"), "OW999 ");
  EXPECT_FALSE(outcome_.error);
  EXPECT_EQ(Merge("<<Code>> <<Fee Value>>", "Feeless"), "OW999 <<Fee Value>>");
  ASSERT_TRUE(outcome_.error);
  EXPECT_THAT(ErrorText(*outcome_.error), testing::HasSubstr("owner OW999"));
}

}  // namespace
}  // namespace tenora
