#include "letters/recipient_table.h"

#include <map>

#include "letters/template_library.h"
#include "rental/rental_fixture.h"

namespace tenora::test {
namespace {

class RecipientTables : public SampleAgency {
 protected:
  RecipientTables() { session.caches.Load(session.database); }

  static std::vector<std::string> Codes(const RecipientTable& table,
                                        const std::vector<std::size_t>& rows) {
    std::vector<std::string> codes;
    for (const std::size_t row : rows) codes.push_back(table.Row(row).key);
    return codes;
  }
};

TEST_F(RecipientTables, ReadWhatTheirColumnsNeedAndNoMore) {
  const std::vector<std::string> names{"Tenant Name", "Closed"};
  const RecipientTable table(session, {.template_kind = std::string(kTemplates)}, names);
  ASSERT_EQ(table.size(), session.caches.Tenants.size());
  EXPECT_EQ(table.At(0, "Tenant Name").fact, Fact(table.Row(0).recipient.name));
  EXPECT_THROW(table.At(0, "Balance Owing"), std::logic_error);
}

TEST_F(RecipientTables, SelectByFilterAndCondition) {
  const std::string kind(kTemplates);
  const std::vector<std::string> names{"Property Code", "Email", "Closed"};
  const RecipientTable table(session, {.template_kind = kind}, names);
  const auto count = [&](const char* condition, const RecipientFilter& filter) {
    const Condition parsed(condition, *RecipientFactNames(kind));
    return table.Select(filter, &parsed).rows.size();
  };
  std::size_t open_without_email = 0;
  for (const TenantRecord& tenant : session.caches.Tenants) {
    open_without_email += !tenant.Closed && tenant.Email.empty();
  }
  ASSERT_GT(open_without_email, 0U);
  EXPECT_EQ(count("Email is empty", {}), open_without_email);
  EXPECT_EQ(count("Email is empty",
                  {.exclude_no_email_available = true, .exclude_no_email_ticked = true}),
            0U);
  EXPECT_EQ(count("Closed", {}), 0U);
  EXPECT_GT(count("Closed", {.closed = true}), 0U);
  EXPECT_EQ(table.Select({}, nullptr).rows.size(), ListRecipients(session.caches, kind, {}).size());
}

TEST_F(RecipientTables, SayOfWhomACellOrAConditionCannotBeKnown) {
  session.database.ExecuteSQL(
      "insert into rent_periods(tenant_code, period_from, period_to, rent_due) "
      "values ('T00007', null, #11/26/2026#, 100)");
  const std::vector<std::string> names{"Balance Owing"};
  const RecipientTable table(session, {.template_kind = std::string(kTemplates)}, names);
  const Condition condition("Balance Owing > -1000000", *RecipientFactNames(kTemplates));
  const RecipientTable::Selection selection = table.Select({.closed = true}, &condition);
  ASSERT_EQ(selection.undecided.size(), 1U);
  const auto& [row, problem] = selection.undecided.front();
  EXPECT_EQ(table.Row(row).key, "T00007");
  EXPECT_EQ(problem.substr(0, 5), "94 - ");
  EXPECT_EQ(table.At(row, "Balance Owing").problem, problem);
  EXPECT_EQ(selection.rows.size(), table.size() - 1);
}

TEST_F(RecipientTables, SortByValueWithEmptyOnesLast) {
  session.caches.Tenants.resize(4);
  const auto set = [&](std::size_t i, const char* code, double rent, const char* name,
                       Date review) {
    TenantRecord& tenant = session.caches.Tenants[i];
    tenant.Closed = false;
    tenant.Reference = code;
    tenant.CurrentRent = rent;
    tenant.KeyName = name;
    tenant.RentReviewDate = review;
  };
  set(0, "A", 1000, "Élan", Day(2026, 3, 1));
  set(1, "B", 90, "zoe", Day(kNoDateYear, 1, 1));
  set(2, "C", 90, "Eb", Day(2025, 12, 1));
  set(3, "D", 200, "ada", Day(2026, 2, 1));
  const std::vector<std::string> names{"Current Rent", "Tenant Name", "Rent Review Date"};
  const RecipientTable table(session, {.template_kind = std::string(kTemplates)}, names);
  const struct {
    const char* name;
    bool descending;
    std::vector<std::string> order;
  } cases[] = {{"Current Rent", false, {"B", "C", "D", "A"}},
               {"Current Rent", true, {"A", "D", "B", "C"}},
               {"Tenant Name", false, {"D", "C", "A", "B"}},
               {"Rent Review Date", false, {"C", "D", "A", "B"}},
               {"Rent Review Date", true, {"A", "D", "C", "B"}}};
  for (const auto& one : cases) {
    std::vector<std::size_t> rows = table.Select({}, nullptr).rows;
    table.Sort(rows, one.name, one.descending);
    EXPECT_EQ(Codes(table, rows), one.order) << one.name << one.descending;
  }
}

TEST_F(RecipientTables, GiveOwnersAlsoByProperty) {
  const std::string kind(kOwnerTemplates);
  const std::vector<std::string> names{
      "Name",          "Code",          "Properties",         "Tenancies",       "Arrears",
      "Property Code", "Property Rent", "Property Tenancies", "Property Arrears"};
  const RecipientTable owners(session, {.template_kind = kind}, names);
  EXPECT_EQ(owners.size(), session.caches.Owners.size());
  const RecipientTable properties(session, {.template_kind = kind, .by_property = true}, names);
  ASSERT_EQ(properties.size(), session.caches.Properties.size());
  const Condition in_arrears("Property Arrears > 0", *RecipientFactNames(kind));
  EXPECT_TRUE(owners.Select({.closed = true}, &in_arrears).rows.empty());
  EXPECT_FALSE(properties.Select({.closed = true}, &in_arrears).rows.empty());
  // What an owner's properties have is together what the owner has.
  std::map<std::string, std::pair<double, Currency>> together;
  for (std::size_t row = 0; row < properties.size(); ++row) {
    auto& [tenancies, arrears] = together[std::get<std::string>(properties.At(row, "Code").fact)];
    EXPECT_EQ(properties.At(row, "Property Code").fact, Fact(properties.Row(row).key));
    tenancies += std::get<double>(properties.At(row, "Property Tenancies").fact);
    arrears += std::get<Currency>(properties.At(row, "Property Arrears").fact);
  }
  double of_owners = 0;
  for (std::size_t row = 0; row < owners.size(); ++row) {
    of_owners += std::get<double>(owners.At(row, "Properties").fact);
    const auto& [tenancies, arrears] = together[owners.Row(row).key];
    EXPECT_EQ(owners.At(row, "Tenancies").fact, Fact(tenancies));
    EXPECT_EQ(owners.At(row, "Arrears").fact, Fact(arrears));
  }
  double of_named = 0;
  for (std::size_t row = 0; row < properties.size(); ++row) {
    const std::string& name = properties.Row(row).recipient.name;
    EXPECT_EQ(properties.At(row, "Name").fact, TextFact(name));
    // Of an owner without a name, who is not in the cache, no more is known.
    EXPECT_EQ(properties.At(row, "Arrears").problem, "");
    EXPECT_EQ(properties.Remark(row).empty(), !name.empty());
    of_named += name.empty() ? 0 : 1;
  }
  EXPECT_EQ(of_owners, of_named);
}

TEST(FactText, IsWhatPeopleRead) {
  const PlainLocale locale;
  const std::pair<Fact, const char*> cases[] = {
      {Fact(), ""},
      {Fact(std::string("Ann")), "Ann"},
      {Fact(14.0), "14"},
      {Fact(Currency::FromDouble(1234.5)), "$1,234.50"},
      {Fact(Day(2026, 11, 2)), "02/11/2026"},
      {Fact(Date::FromCalendar(2026, 11, 2, 14, 30)), "02/11/2026 02:30 PM"},
      {Fact(true), "yes"}};
  for (const auto& [fact, text] : cases) EXPECT_EQ(FactText(locale, fact), text);
}

}  // namespace
}  // namespace tenora::test
