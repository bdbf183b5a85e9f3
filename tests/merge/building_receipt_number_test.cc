#include "merge/building_receipt_number.h"

#include "merge_fixture.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// PR00003 belongs to the building PR00001, PR00004 to none.
class BuildingReceiptNumber : public test::MergeTest {
 protected:
  BuildingReceiptNumber() {
    machine_.InstallSampleDatabase();
    session_.database.OpenDatabase();
  }
  std::string Issue(const char* property = "PR00003") {
    Letter("[<<BuildingReceiptNumber>>]");
    EXPECT_TRUE(InsertBuildingReceiptNumber(target_, property));
    return Shown();
  }
  std::string Stored(const char* building = "PR00001") {
    return session_.database.LookupText(
        "[value]", "custom_fields",
        std::string("where fieldcode = 'NxtReceipt' and parentcode = '") + building + "'", "none");
  }
  void Store(const std::string& value) {
    session_.database.ExecuteSQL("update custom_fields set [value] = '" + value +
                                 "' where fieldcode = 'NxtReceipt'");
  }
};

TEST_F(BuildingReceiptNumber, CountsFromAThousandForEachBuilding) {
  EXPECT_EQ(Issue(), "[1000]");
  EXPECT_EQ(Stored(), "1000");
  EXPECT_EQ(
      session_.database.LookupText("description", "glcodes", "where gl_code = 'NxtReceipt'", ""),
      "Next Receipt Number");
  EXPECT_EQ(Issue(), "[1001]");
  EXPECT_EQ(Issue(), "[1002]");
  EXPECT_EQ(Stored(), "1002");
  EXPECT_EQ(Issue("PR00004"), "[]");
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(BuildingReceiptNumber, ASecondBuildingWithoutCounterStaysAtAThousand) {
  Issue();
  const std::string other = session_.database.LookupText(
      "code", "property", "where parent_property <> 'PR00001' and parent_property <> ''", "");
  ASSERT_NE(other, "");
  EXPECT_THAT(letter_.Notes.All(), IsEmpty());
  EXPECT_EQ(Issue(other.c_str()), "[1000]");
  EXPECT_EQ(Issue(other.c_str()), "[1000]");
  ASSERT_EQ(letter_.Notes.All().size(), 1U);
  EXPECT_EQ(letter_.Notes.All().front().fact, MergeFact::kNumberAgain);
  EXPECT_EQ(Stored(), "1000");
}

TEST_F(BuildingReceiptNumber, IsOnlyLookedAtInASessionThatChangesNothing) {
  Issue();
  Session looking(machine_.Parts(), DatabaseUse::kLook);
  looking.database.OpenDatabase();
  const MergeTarget target{looking, letter_, editor_};
  for (int i = 0; i < 2; ++i) {
    Letter("[<<BuildingReceiptNumber>>]");
    EXPECT_TRUE(InsertBuildingReceiptNumber(target, "PR00003"));
    EXPECT_EQ(Shown(), "[1001]");
  }
  ASSERT_EQ(letter_.Notes.All().size(), 1U);
  EXPECT_EQ(letter_.Notes.All().front().fact, MergeFact::kNumberLeft);
  EXPECT_THAT(Boxes(), IsEmpty());
  // Whatever else would change the database is refused, and nothing is logged of it.
  looking.database.ExecuteSQL("delete from custom_fields");
  EXPECT_FALSE(Database::Transaction(looking.database).IsOpen());
  EXPECT_THAT(Boxes(), ElementsAre(HasSubstr("70 - "), HasSubstr("70 - ")));
  EXPECT_FALSE(std::filesystem::exists(machine_.ProgramFolder() / "errNov26.log"));
  EXPECT_EQ(Stored(), "1000");
}

TEST_F(BuildingReceiptNumber, ReadsWhateverTheCounterHolds) {
  Issue();
  const struct {
    const char* stored;
    const char* next;
  } cases[] = {{"0", "[1000]"}, {"", "[1000]"}, {"abc", "[1000]"}, {"41.5", "[43]"},
               {"-5", "[-4]"},  {"7", "[8]"},   {" 99 ", "[100]"}, {"2147483647", "[2147483648]"}};
  for (const auto& c : cases) {
    Store(c.stored);
    EXPECT_EQ(Issue(), c.next) << c.stored;
  }
}

TEST_F(BuildingReceiptNumber, AFailedChangeLeavesTheCodeAndUsesUpNoNumber) {
  Issue();
  Letter("[<<BuildingReceiptNumber>>]");
  Store("99999999999999999999");
  EXPECT_THROW(InsertBuildingReceiptNumber(target_, "PR00003"), RuntimeError);
  EXPECT_EQ(Shown(), "[<<BuildingReceiptNumber>>]");
  EXPECT_EQ(Stored(), "99999999999999999999");
  // Nothing can be changed where the journal cannot be written.
  std::filesystem::create_directory(machine_.ProgramFolder() / "property.mdb.journal");
  EXPECT_FALSE(InsertBuildingReceiptNumber(target_, "PR00003"));
  EXPECT_EQ(Shown(), "[<<BuildingReceiptNumber>>]");
  EXPECT_EQ(Boxes().size(), 1U);
}

}  // namespace
}  // namespace tenora
