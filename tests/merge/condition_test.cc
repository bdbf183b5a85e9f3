#include "merge/condition.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "merge/merge_codes.h"
#include "merge/recipient_facts.h"

namespace tenora {
namespace {

class Facts : public FactSource {
 public:
  Fact Get(std::string_view name) const override {
    const auto found = facts.find(name);
    return found == facts.end() ? Fact() : found->second;
  }
  std::map<std::string, Fact, std::less<>> facts;
};

const Date kToday = Date::FromCalendar(2026, 11, 22);

Facts SampleFacts() {
  Facts facts;
  facts.facts = {{"Balance Owing", Currency::FromDouble(50.05)},
                 {"Current Rent", Currency::FromUnits(400)},
                 {"Days Behind", 14.0},
                 {"Rent Frequency", std::string("2 Weeks")},
                 {"Tenant Name", std::string("Élodie O'Brien")},
                 {"Tenancy Start Date", Date::FromCalendar(2025, 4, 1)},
                 {"Next Inspection", Date::FromCalendar(2026, 12, 22, 14, 30)},
                 {"Last Payment Date", Date::FromCalendar(2026, 11, 8)},
                 {"Closed", false},
                 {"TCustom:Pets", std::string("2")},
                 {"TCustom:Moved In", std::string("2026-11-01")},
                 {"PCustom:Alarm", std::string("yes")}};
  return facts;
}

FactNames Names() {
  FactNames names = TenantFactNames();
  names.Add("TCustom:Moved In", FactType::kField);
  return names;
}

TEST(Condition, ComparesByTheTypeOfTheFact) {
  struct Case {
    const char* condition;
    bool holds;
  };
  const Case cases[] = {
      {"Balance Owing > 50", true},
      {"Balance Owing > 50.05", false},
      {"Balance Owing = 50.05", true},
      {"balance  owing >= $50.05 AND days behind >= 14", true},
      {"Balance Owing > 1,000", false},
      {"Balance Owing <> 50.05", false},
      {"Balance Owing > -5", true},
      {"Balance Owing < Current Rent", true},
      {"Days Behind between 7 and 13", false},
      {"Days Behind not between 7 and 13", true},
      {"Days Behind between 14 and 14 and not Closed", true},
      {"Rent Frequency = \"2 weeks\"", true},
      {"Rent Frequency = “Week”", false},
      {"Rent Frequency is '2 Weeks'", true},
      {"Rent Frequency is not 'Week'", true},
      {"Tenant Name contains \"elodie\"", true},
      {"Tenant Name starts with 'o'", false},
      {"Tenant Name not contains 'x'", true},
      {"Email is empty", true},
      {"Email is not empty", false},
      {"Email = ''", true},
      {"Email <> ''", false},
      {"Email <> 'a@b'", true},
      {"Tenancy Start Date = 1 April 2025", true},
      {"Tenancy Start Date < 2025-04-01", false},
      {"Tenancy Start Date <= 1/4/2025", true},
      {"Tenancy Start Date + 1 year < today", true},
      {"Tenancy Start Date < today - 20 months", false},
      {"Next Inspection within 30 days", true},
      {"Next Inspection within 29 days", false},
      {"Next Inspection = 22 Dec 2026", true},
      {"Last Payment Date in the last 2 weeks", true},
      {"Last Payment Date in the last 13 days", false},
      // A date that the data does not have is neither before nor after any.
      {"Rent Review Date < today", false},
      {"Rent Review Date >= today", false},
      {"not (Rent Review Date < today)", true},
      {"Closed", false},
      {"Closed = no", true},
      {"TCustom:Pets > 1", true},
      {"TCustom:Pets = \"2\"", true},
      {"TCustom:Pets is not empty and TCustom:Pets contains '2'", true},
      {"TCustom:Moved In < today", true},
      {"[TCustom:Moved In] is empty", false},
      {"PCustom:Alarm", true},
      {"PCustom:Alarm > 1", false},
      {"Balance Owing > 100 or Days Behind > 7 and Closed", false},
      {"(Balance Owing > 100 or Days Behind > 7) and not Closed", true},
  };
  const Facts facts = SampleFacts();
  for (const Case& one : cases) {
    EXPECT_EQ(Condition(one.condition, Names()).Holds(facts, kToday), one.holds) << one.condition;
  }
}

TEST(Condition, SaysWhatIsWrongAndWhatThereIs) {
  struct Case {
    std::string condition;
    const char* sentence;
    const char* possible;  // a part of it
  };
  const Case cases[] = {
      {"", "There is no condition", "Balance Owing > 0"},
      {"Balanse Owing > 0", "\"Balanse Owing\" is no name or value; is Balance Owing meant?",
       "Days Behind"},
      {"Rent Frequency = Week", "\"Week\" is no name or value; a text stands in quotation marks",
       "Rent Frequency"},
      {"Foo > 3", "\"Foo\" is no name or value", "Days Behind"},
      {"Current Rent > fourteen",
       "\"fourteen\" is no name or value; a number is missing, in figures, as in "
       "14 or 50.25",
       ""},
      {"Last Payment Date < Easter",
       "\"Easter\" is no name or value; a date is missing, as in 1 April 2026 or today", ""},
      {"Inspection is empty",
       "\"Inspection\" is no name or value; is Last Inspection or Next Inspection meant?", ""},
      {"Current Rent between 300 and 50",
       "Nothing is between 300 and 50, since the first is the greater", "write between 50 and 300"},
      {"Tenancy End Date between today + 3 months and today + 2 weeks",
       "Nothing is between today + 3 months and today + 2 weeks, since the first is the greater",
       ""},
      {"Balance Owing > \"50\"",
       "Balance Owing is an amount and cannot be compared with \"50\", which is a text",
       "with a number"},
      {"Tenancy End Date < 30",
       "Tenancy End Date is a date and cannot be compared with 30, which is a number",
       "within 30 days"},
      {"Tenancy End Date < 1 April", "A date in a comparison needs its year, as in 1 April 2026",
       ""},
      {"Tenancy End Date < 31 April 2026", "There is no day \"31 April 2026\"", ""},
      {"Balance Owing contains '5'",
       "Balance Owing is an amount, of which only a text contains or starts with something", "="},
      {"Balance Owing", "Behind Balance Owing a comparison is missing", "between"},
      {"Balance Owing >", "Behind \">\" a name or value is missing", ""},
      {"(Balance Owing > 0", "A \"(\" has no \")\"", ""},
      {"Balance Owing > 0 Days Behind > 3",
       "\"Days\" cannot stand behind a whole condition; join two by \"and\" or \"or\"", ""},
      {"Rent Frequency = \"Week", "The quotation mark before \"Week\" has no second one", ""},
      {"Next Inspection within 5",
       "A number of days, weeks, months or years is missing, as in "
       "\"within 30 days\"",
       ""},
      {"Next Inspection within 9999999 days", "9999999 days is too long a time", ""},
      {"Tenancy Start Date >= today - 99999 years", "99999 years is too long a time", ""},
      {"Print Date > today + 1 day + 1 day + 1 day + 1 day + 1 day",
       "Too much is added to a day or taken off it", ""},
      {"Balance Owing > 99999999999999999999",
       "\"99999999999999999999\" is no number that can be "
       "compared",
       ""},
      {std::string(100, '(') + "Closed", "The condition has too many brackets", ""},
  };
  for (const Case& one : cases) {
    try {
      Condition(one.condition, Names());
      ADD_FAILURE() << one.condition << " was taken";
    } catch (const ConditionError& error) {
      EXPECT_STREQ(error.what(), one.sentence) << one.condition;
      EXPECT_NE(error.possible().find(one.possible), std::string::npos)
          << one.condition << ": " << error.possible();
    }
  }
}

TEST(Condition, NamesTheFactsThatItNeeds) {
  const Condition condition("Email is empty or balance owing > 0 and Email contains '@'", Names());
  EXPECT_EQ(condition.Names(), (std::vector<std::string>{"Email", "Balance Owing"}));
}

TEST(ReadDay, TakesTheLatestDayWithoutAYear) {
  const std::pair<const char*, Date> cases[] = {
      {"1 April", Date::FromCalendar(2026, 4, 1)},
      {"22 November", kToday},
      {"23 Nov", Date::FromCalendar(2025, 11, 23)},
      {"29 February", Date::FromCalendar(2024, 2, 29)},
      {"today - 3 months", Date::FromCalendar(2026, 8, 22)},
      {"2026-01-31 + 1 month", Date::FromCalendar(2026, 2, 28)},
  };
  for (const auto& [text, day] : cases) EXPECT_EQ(ReadDay(text, kToday), day) << text;
  EXPECT_THROW(ReadDay("soon", kToday), ConditionError);
}

TEST(RecipientFacts, KnowEveryCodeThatHasAValue) {
  const std::pair<TemplateKind, const FactNames*> kinds[] = {
      {TemplateKind::kTenant, &TenantFactNames()}, {TemplateKind::kOwner, &OwnerFactNames()}};
  for (const auto& [kind, names] : kinds) {
    for (const MergeCode& code : MergeCodesOf(kind)) {
      if (code.value != nullptr) {
        EXPECT_NE(names->Find(code.name), nullptr) << code.name;
      }
    }
  }
}

}  // namespace
}  // namespace tenora
