#include "merge/tenant_merge.h"

#include <cstdlib>

#include "merge_fixture.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"
#include "support/sample_rows.h"

namespace tenora {
namespace {

using testing::IsEmpty;

class InsertTenantDetailsTest : public test::MergeTest {
 protected:
  InsertTenantDetailsTest() { machine_.InstallSampleDatabase(); }

  void LoadCaches() {
    session_.database.OpenDatabase();
    session_.caches.CacheTenants(session_.database);
    session_.database.CloseDatabase();
  }
  // Merges one line of text for a tenancy.
  std::string Merge(const std::string& source, const std::string& tenant_code,
                    std::int32_t receipt_number = 0) {
    letter_ = LetterMembers{};
    letter_.TenantCode = tenant_code;
    letter_.ReceiptNumber = receipt_number;
    Letter(source);
    outcome_ = InsertTenantDetails(target_);
    EXPECT_FALSE(session_.database.IsOpen());
    return Shown();
  }

  // Of a day as the independent reader writes it: "2026-11-21".
  std::string LongDate(const std::string& day) const {
    return machine_.locale.LongDate(ToDate(Value(day)));
  }

  TenantMergeOutcome outcome_;
};

// ---- The sample agency, worked out from what mdb-export says of it ----

long Cents(const std::string& amount) { return std::lround(std::atof(amount.c_str()) * 100); }

std::string Money(long cents) {
  const std::string digits = std::to_string(cents % 100);
  return std::to_string(cents / 100) + (digits.size() < 2 ? ".0" : ".") + digits;
}

std::string Frequency(const test::SampleRow& tenancy) {
  const std::string& amount = tenancy.at("every_amt");
  return amount == "1" ? tenancy.at("every_freq") : amount + " " + tenancy.at("every_freq") + "s";
}

std::string SafeKey(std::string name) {
  for (char& c : name) {
    if (c == '/' || c == '\\') c = '-';
    if (c == '"') c = '`';
  }
  return std::string(TrimBlanks(name));
}

const test::SampleRow* Find(const std::vector<test::SampleRow>& rows, const std::string& column,
                            const std::string& value) {
  for (const auto& row : rows) {
    if (row.at(column) == value) return &row;
  }
  return nullptr;
}

TEST_F(InsertTenantDetailsTest, FillsEveryTenancyOfTheSampleAgency) {
  const auto tenancies = test::SampleTable("tenancy");
  const auto properties = test::SampleTable("property");
  const auto owners = test::SampleTable("owner");
  LoadCaches();
  ASSERT_FALSE(tenancies.empty());
  std::size_t merged = 0;
  for (const auto& tenancy : tenancies) {
    const auto* property = Find(properties, "code", tenancy.at("Property Code"));
    if (property == nullptr) continue;
    const auto* owner = Find(owners, "Code", property->at("ownercode"));
    const std::string& code = tenancy.at("reference");
    const std::string& review = tenancy.at("RentReviewDate");
    EXPECT_EQ(
        Merge("<<Tenant Code>>|<<Tenant Name>>|<<Property Address 1>>|<<Property Address 2>>|"
              "<<Property Address 3>>|<<Email>>|<<Home Phone>>|<<Work Phone>>|<<Mobile>>|<<Fax>>|"
              "<<Current Rent>>|<<Rent Frequency>>|<<Bond Amount>>|<<Tenancy Start Date>>|"
              "<<Property Code>>|<<Property Owners Name>>|<<Water Meter>>|<<Contact Address1>>|"
              "<<Contact Address2>>|<<Contact Address3>>|<<Monthly Rent Date>>|<<ID Number>>|"
              "<<Rent Review Date>>",
              code),
        code + "|" + SafeKey(tenancy.at("name")) + "|" + property->at("address1") + "|" +
            property->at("address2") + "|" + property->at("address3") + "|" + tenancy.at("email") +
            "|" + tenancy.at("home_phone") + "|" + tenancy.at("work_phone") + "|" +
            tenancy.at("mobile") + "|" + tenancy.at("fax") + "|" +
            Money(Cents(tenancy.at("current rent"))) + "|" + Frequency(tenancy) + "|" +
            Money(Cents(tenancy.at("bond"))) + "|" + LongDate(tenancy.at("when started")) + "|" +
            tenancy.at("Property Code") + "|" + (owner == nullptr ? "" : owner->at("name")) + "|" +
            tenancy.at("water_meter") + "|" + tenancy.at("address1") + "|" +
            tenancy.at("address2") + "|" + tenancy.at("address3") + "|" +
            tenancy.at("monthly_day") + "|" + tenancy.at("id_number") + "|" +
            // The independent reader gives up on the year 1234, which marks a missing date.
            (review == "1900-01-00" ? "" : LongDate(review)));
    ++merged;
  }
  EXPECT_GT(merged, 40u);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(InsertTenantDetailsTest, DescribesTheReceiptsOwnPaymentAndNoBalances) {
  LoadCaches();
  const auto revenues = test::SampleTable("revenues");
  const auto& first = revenues.front();
  const std::string merged = Merge(
      "<<Last Payment Number>>|<<Last Payment Date>>|<<Last Payment Amount>>|<<Last Payment Tax>>|"
      "<<Last Payment Excl.>>|<<Last Payment Tender>>|"
      "[<<Balance Owing>><<Paid To Date>><<Previous Paid To Date>>]",
      first.at("tenant_code"), std::atoi(first.at("recordnumber").c_str()));
  const long amount = Cents(first.at("amount")), tax = Cents(first.at("tax"));
  EXPECT_EQ(merged, first.at("recordnumber") + "|" + LongDate(first.at("date")) + "|" +
                        Money(amount) + "|" + Money(tax) + "|" + Money(amount - tax) + "|" +
                        first.at("tender") + "|[]");
}

TEST_F(InsertTenantDetailsTest, FillsCustomFieldsAndRemovesTheRest) {
  LoadCaches();
  const auto fields = test::SampleTable("custom_fields");
  const auto* plate = Find(fields, "fieldcode", "CarPlate");
  ASSERT_NE(plate, nullptr);
  const std::string code = plate->at("parentcode");
  EXPECT_EQ(
      Merge("[<<TCustom:CarPlate>>|<<TCustom:None>>|<<TCustom:CarPlate>>|<<PCustom:None>>]", code),
      "[" + plate->at("value") + "||" + plate->at("value") + "|]");
  // What is not a code stays, and nothing loops forever.
  for (const char* text : {"TCustom:CarPlate>>", "<<TCustom:Car",
                           "<TCustom: a >> <<TCustom:", "TCustom:TCustom:<<TCustom:"}) {
    EXPECT_EQ(Merge(text, code), text);
  }
  EXPECT_EQ(Merge("TCustom:a>> <<TCustom:b>> TCustom:c>>", code), "TCustom:a>>  TCustom:c>>");
  // A removal may join what stands around it into another code.
  EXPECT_EQ(
      Merge("1<<TCus<<TCustom:a>>tom:b>>2<<<TCustom:a>><TCustom:b>>3<<<TCustom:a>>TCustom:b>>",
            code),
      "123<TCustom:b>>");
}

TEST_F(InsertTenantDetailsTest, FillsOnlyDateAndTimeForAnUnknownTenancy) {
  LoadCaches();
  const char* const rest = "|<<Tenant Name>>|<<TCustom:Pet>>|<<FutureDate:1:Days>>";
  for (const char* code : {"T99999", "t00001", "O'Brien", "x' or '1'='1"}) {
    EXPECT_EQ(Merge(std::string("<<Print Date>>|<<Print Time>>") + rest, code),
              std::string("21 November 2026|09:30") + rest);
    EXPECT_FALSE(outcome_.tenant_found);
    EXPECT_FALSE(outcome_.error.has_value());
  }
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(InsertTenantDetailsTest, FindsTheTenancyByTheRecipientsName) {
  LoadCaches();
  letter_.LetterTitle = "Notice";
  letter_.RecipientName = session_.caches.Tenants.at(3).KeyName;
  Letter("<<Tenant Code>> <<FutureDate:1:Weeks>> <<Prompt Message>>");
  InsertTenantDetails(target_);
  EXPECT_EQ(Shown(), session_.caches.ReferenceByKeyName(letter_.RecipientName) +
                         " 28 November 2026 <<Prompt Message>>");
  EXPECT_EQ(letter_.Caption, "Notice : " + letter_.RecipientName);

  // The caption stays while an item is inserted.
  letter_.Inserting = true;
  letter_.LetterTitle = "Other";
  InsertTenantDetails(target_);
  EXPECT_EQ(letter_.Caption, "Notice : " + letter_.RecipientName);
}

TEST_F(InsertTenantDetailsTest, TakesTheDayAfterTheCurrentPeriod) {
  LoadCaches();
  EXPECT_EQ(Merge("<<Current Period End>>|<<Next Period Start>>", "T00001"),
            "13 December 2026|14 December 2026");
}

TEST_F(InsertTenantDetailsTest, IssuesReceiptNumbersByBuilding) {
  LoadCaches();
  // T00007 and T00009 live in one building, T00001 in none; the following codes are merged anyway.
  for (const auto& [code, number] :
       {std::pair("T00007", "1000"), {"T00009", "1001"}, {"T00001", ""}}) {
    EXPECT_EQ(Merge("[<<BuildingReceiptNumber>>] <<FutureDate:1:Days>>", code),
              "[" + std::string(number) + "] 22 November 2026");
    EXPECT_TRUE(outcome_.receipt_number_issued);
  }
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(InsertTenantDetailsTest, EndsWithWhatWasReplacedWhenALookUpFails) {
  LoadCaches();
  std::filesystem::remove(machine_.ProgramFolder() / "property.mdb");
  EXPECT_EQ(Merge("<<Print Time>> <<Tenant Code>> <<TCustom:Pet>> <<FutureDate:1:Days>>", "T00001"),
            "09:30 T00001 <<TCustom:Pet>> <<FutureDate:1:Days>>");
  EXPECT_TRUE(outcome_.error.has_value());
}

}  // namespace
}  // namespace tenora
