#include "merge/owner_merge.h"

#include <cstdlib>

#include "merge_fixture.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"
#include "sample_rows.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
  }
  std::string Merge(const std::string& source, const std::string& recipient) {
    letter_.LetterTitle = "Statement";
    letter_.RecipientName = recipient;
    Letter(source);
    outcome_ = InsertOwnerDetails(target_);
    EXPECT_FALSE(session_.database.IsOpen());
    EXPECT_TRUE(letter_.EditorVisible);
    return Shown();
  }

  OwnerMergeOutcome outcome_;
};

TEST_F(InsertOwnerDetailsTest, FillsEveryOwnerOfTheSampleAgency) {
  LoadOwners();
  const auto fields = test::SampleTable("custom_fields");
  int merged = 0;
  for (const test::SampleRow& row : test::SampleTable("owner")) {
    const std::string name = ReplaceAll(ReplaceAll(row.at("name"), "/", "-"), "\"", "`");
    if (name.empty()) continue;
    std::string salutation;
    for (const test::SampleRow& field : fields) {
      if (field.at("parentcode") == row.at("Code") && field.at("parenttype") == "203" &&
          field.at("fieldcode") == "Salutation") {
        salutation = field.at("value");
      }
    }
    std::string expected = "21 November 2026|" + name + "|" + row.at("Code");
    for (const char* column : {"postal1", "postal2", "postal3", "street1", "street2", "street3",
                               "home", "work", "mobile", "fax", "email"}) {
      expected += "|" + row.at(column);
    }
    for (const char* column : {"fee_percent", "fee_value"}) {
      expected += "|" + NumberText(std::atof(row.at(column).c_str()));
    }
    for (const char* column : {"ird_number", "account_name", "account_number"}) {
      expected += "|" + row.at(column);
    }
    expected += "|" + salutation + "||5 December 2026|<<Future Date>>";
    EXPECT_EQ(
        Merge("<<Print Date>>|<<Name>>|<<Code>>|<<Postal Address 1>>|<<Postal Address 2>>|<<Postal "
              "Address 3>>|<<Street Address 1>>|<<Street Address 2>>|<<Street Address 3>>|<<Home "
              "Phone>>|<<Work Phone>>|<<Mobile Phone>>|<<Fax Number>>|<<Email Address>>|<<Fee "
              "Percent>>|<<Fee Value>>|<<Tax Number>>|<<Bank Account Name>>|<<Bank Account "
              "Number>>|<<OCustom:Salutation>>|<<OCustom:None>>|<<FutureDate:14:Days>>|<<Future "
              "Date>>",
              name),
        expected);
    EXPECT_TRUE(outcome_.owner_found && !outcome_.error && outcome_.future_dates_inserted);
    ++merged;
  }
  EXPECT_GT(merged, 5);
  EXPECT_THAT(Boxes(), IsEmpty());
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

TEST_F(InsertOwnerDetailsTest, LetsALaterNamesakeChangeNothing) {
  AddOwner("Jane", "OW0002");
  AddOwner("Jim", "");
  AddOwner("Jane", "OW0001");
  letter_.Inserting = true;
  EXPECT_EQ(Merge("<<Code>>|<<OCustom:Salutation>>|<<Fee Value>>", "Jane"), "OW0002||0");
  EXPECT_EQ(letter_.Caption, "");
}

TEST_F(InsertOwnerDetailsTest, WalksNoFurtherThanItsCounter) {
  session_.caches.Owners.resize(32768);
  session_.caches.Owners[32766].Name = "Last";
  session_.caches.Owners[32767].Name = "Beyond";
  EXPECT_EQ(Merge("<<Name>>", "Last"), "Last");
  EXPECT_FALSE(outcome_.error);
  EXPECT_EQ(Merge("<<Name>>", "Beyond"), "<<Name>>");
  ASSERT_TRUE(outcome_.error);
  EXPECT_EQ(outcome_.error->number(), error_number::kOverflow);
  session_.caches.Owners.resize(32767);
  Merge("<<Name>>", "Beyond");
  EXPECT_FALSE(outcome_.error);
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

}  // namespace
}  // namespace tenora
