#include "merge/template_forms.h"

#include "merge/form_names.h"
#include "merge/owner_merge.h"
#include "merge/tenant_merge.h"
#include "merge_fixture.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/search_text.h"
#include "platform/runtime/text.h"
#include "support/sample_rows.h"

namespace tenora {
namespace {

using testing::HasSubstr;
using Kind = FormFinding::Kind;

std::string Rtf(std::string_view body, std::string_view head = {}) {
  return std::string(
             R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fnil Arial;}{\f1\fnil Courier;}})")
      .append(head)
      .append(R"(\pard )")
      .append(body)
      .append("}");
}

std::string Row(std::initializer_list<const char*> cells) {
  std::string row = R"(\trowd)";
  int edge = 0;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    row += R"(\cellx)" + std::to_string(edge += 2000);
  }
  row += R"(\pard\intbl )";
  for (const char* const cell : cells) row += cell + std::string(R"(\cell )");
  return row + R"(\row\pard )";
}

class TemplateFormsTest : public test::MergeTest {
 protected:
  TemplateFormsTest() {
    machine_.InstallSampleDatabase();
    SetNow(2026, 11, 22);
    session_.database.OpenDatabase();
    session_.caches.Load(session_.database);
    session_.database.CloseDatabase();
  }

  std::string Canonical(const std::string& source) {
    return richtext::WriteRtf(richtext::ReadRtf(source));
  }

  // Merges a template; what comes out is in canonical form.
  std::string Merge(const std::string& source, const std::string& tenant_code = "T00001") {
    letter_ = LetterMembers{};
    letter_.TenantCode = tenant_code;
    editor_.SetTextRTF(Canonical(source));
    const TemplateForms forms(editor_.TextRTF(), TemplateKind::kTenant);
    EXPECT_TRUE(forms.Findings().empty()) << forms.Findings().front().problem;
    const TenantMergeOutcome outcome = InsertTenantDetails(target_, &forms);
    EXPECT_TRUE(outcome.tenant_found);
    EXPECT_FALSE(outcome.error) << outcome.error->what();
    EXPECT_EQ(editor_.TextRTF(), Canonical(editor_.TextRTF())) << source;
    return Text();
  }
  std::string MergeOwner(const std::string& source, const std::string& name) {
    letter_ = LetterMembers{};
    letter_.RecipientName = name;
    editor_.SetTextRTF(Canonical(source));
    const TemplateForms forms(editor_.TextRTF(), TemplateKind::kOwner);
    EXPECT_TRUE(forms.Findings().empty()) << forms.Findings().front().problem;
    const OwnerMergeOutcome outcome = InsertOwnerDetails(target_, &forms);
    EXPECT_TRUE(outcome.owner_found);
    EXPECT_FALSE(outcome.error) << outcome.error->what();
    EXPECT_EQ(editor_.TextRTF(), Canonical(editor_.TextRTF()));
    return Text();
  }
  // Paragraphs and rows as lines, cells ended by "|".
  std::string Text() const {
    return ReplaceAll(ReplaceAll(editor_.Text(), "\r\n", "/"), "\t", "|") + "/";
  }
};

// The first payments of T00001 have the numbers 13, 25 and 56; its rent is 680.00.
constexpr const char* kYes = "<<If Current Rent > 0>>";
constexpr const char* kNo = "<<If Current Rent < 0>>";
constexpr const char* kEach = "<<Each Payment where Payment Number < 60>>";

TEST_F(TemplateFormsTest, GiveEveryRowTheFormatOfItsOwnParagraph) {
  Merge(Rtf(R"(\ql <<Each Rent Period until 2025-01-01>>\par)"
            R"(\pard\qc\li700 <<Period From:short>><<End Each>>\par)"));
  int rows = 0;
  for (const richtext::Block& block : editor_.Document().blocks) {
    const auto& paragraph = std::get<richtext::Paragraph>(block);
    if (paragraph.runs.empty()) continue;
    ++rows;
    EXPECT_EQ(paragraph.format.alignment, richtext::Alignment::kCentre) << rows;
    EXPECT_EQ(paragraph.format.left_indent, 700) << rows;
  }
  EXPECT_GT(rows, 3);
}

TEST_F(TemplateFormsTest, PutInAndTakeOutWordsParagraphsAndRows) {
  const std::string yes = kYes, no = kNo, each = kEach, end_if = "<<End If>>",
                    end_each = "<<End Each>>", number = "<<Payment Number>>";
  const auto par = [](const std::string& text) { return text + R"(\par )"; };
  struct Case {
    std::string body, shown;
  };
  const Case cases[] = {
      {par("a " + yes + "b" + end_if + " c"), "a b c/"},
      {par("a " + no + "b" + end_if + "c"), "a c/"},
      {par("a " + no + "b<<else>>c" + end_if), "a c/"},
      {par(no + "a<<Else If Current Rent = 680>>b<<Else>>c" + end_if), "b/"},
      {par("a" + no + "b" + end_if) + par(no + "c" + end_if) + par("d"), "a/d/"},
      // Neither markers of their own lines nor empty blocks leave paragraphs behind.
      {par("a") + par(yes) + par("b") + par(end_if) + par("c"), "a/b/c/"},
      {par("a") + par(no) + par("b") + par("") + par(end_if) + par("c"), "a/c/"},
      {par("a") + par("") + par(no) + par("b") + par("<<Else>>") + par("") + par(end_if) + par("c"),
       "a///c/"},
      {par("a" + no) + par("b" + end_if + "c"), "ac/"},
      {par("a\\line " + no + "b" + end_if + "\\line c"), "a/c/"},
      {par("a\\line " + no + "b" + end_if), "a/"},
      {par("a\\line\\line " + no + "b" + end_if + "\\line c"), "a//c/"},
      {par(each + number + " " + end_each), "13 25 56 /"},
      {par(each) + par(number) + par(end_each) + par("x"), "13/25/56/x/"},
      {par(each) + par(number + "<<If Payment Number = 25>>!" + end_if) + par(end_each),
       "13/25!/56/"},
      {par(each) + par("<<If Payment Number = 25>>") + par("x") + par("<<End If>>") + par(end_each),
       "x/"},
      // A code that is empty keeps its line, as it does outside.
      {par(each) + par("<<Payment Comment>>") + par(end_each), "///"},
      {par("<<Each Payment where Payment Number < 0>>") + par("a") + par(end_each), "/"},
      {Row({"h", "i"}) + Row({(each + number).c_str(), ("x" + end_each).c_str()}) + Row({"f", "g"}),
       "h|i/13|x/25|x/56|x/f|g//"},
      {Row({each.c_str(), ""}) + Row({number.c_str(), "x"}) +
           Row({"<<If Payment Number = 25>>only<<End If>>", "y"}) + Row({end_each.c_str(), ""}),
       "13|x/|y/25|x/only|y/56|x/|y//"},
      {Row({(no + "a").c_str(), ("b" + end_if).c_str()}) + par("c"), "c/"},
      {Row({(R"({\*\bkmkstart _GoBack}{\*\bkmkend _GoBack})" + no).c_str()}) + Row({"a"}) +
           Row({end_if.c_str()}) + par("c"),
       "c/"},
      {par("b") + Row({no.c_str()}) + Row({"a"}) + Row({"<<Else>>"}) + Row({"e"}) +
           Row({end_if.c_str()}) + par("c"),
       "b/e/c/"},
      {Row({(no + "a" + end_if).c_str(), "b"}), "|b//"},
      {Row({(each + number + R"(\par )" + end_each).c_str(), "b"}), "13/25/56|b//"},
      {par(each) + Row({number.c_str()}) + par(end_each) + par("z"), "13/25/56/z/"},
      {par(no) + Row({"a"}) + par(end_if) + par("z"), "z/"},
      {par("A " + no + "b" + end_if + " <<Tenant Name>>"), "A  Noor Whaanga/"},
      // Ordinary codes and questions stay for the merges.
      {par(each + "<<?What of " + number + " ?>>" + end_each),
       "<<?What of 13 ?>><<?What of 25 ?>><<?What of 56 ?>>/"},
  };
  for (const Case& one : cases) EXPECT_EQ(Merge(Rtf(one.body)), one.shown) << one.body;
}

TEST_F(TemplateFormsTest, PrintSumsFormatsAndFacts) {
  struct Case {
    const char* body;
    const char* shown;
  };
  const Case cases[] = {
      {"<<Each Payment where Payment Number < 60>><<Total Payment Amount>> <<End Each>>= "
       "<<Total Payment Amount>> in <<Number of Payments>>",
       "680.00 1360.00 2040.00 = 2040.00 in 3"},
      {"<<Each Payment until 25 Nov 2024 since 12 November 2024 newest first>>"
       "<<Payment Date:short>> <<End Each>>",
       "25/11/2024 12/11/2024 "},
      {"<<Each Payment where Payment Amount < 0>>x<<End Each>><<If Number of Payments = 0>>none"
       "<<End If>>",
       "none"},
      {"<<Current Rent:words>>, <<Current Rent:currency>>, <<current rent : whole>>",
       "Six Hundred and Eighty Dollars and 00 Cents, $680.00, 680"},
      {"<<Print Date:short>> <<Print Date:long>> <<Print Date:month>> <<Print Date:weekday>>",
       "22/11/2026 22 November 2026 November 2026 Sunday"},
      {"<<Tenant Name:capitals>> <<Tenant Name:small letters>> <<Rent Frequency:title>>",
       "NOOR WHAANGA noor whaanga Week"},
      {"<<Property Address>>", "189 Karaka Street, Ōrākei, Auckland"},
      {"<<closed>> <<Days Behind>>", "No 55"},
      {"<<Each Inspection>><<Inspection Date>><<End Each>>", "16 August 2026"},
      {"<<If Current Rent > 0>><<Tenant Name>><<Else>><<Email>><<End If>>", "Noor Whaanga"},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(Merge(Rtf(std::string(one.body) + R"(\par )")), one.shown + std::string("/"))
        << one.body;
  }
}

TEST_F(TemplateFormsTest, KeepFormatsListsBookmarksAndSections) {
  Merge(Rtf(
      R"(<<Each Payment where Payment Number < 30>>{\b <<Payment Number>>} {\i <<Tenant Code>>}<<End Each>>\par )"));
  EXPECT_THAT(editor_.TextRTF(), HasSubstr("\\b\\f0\\fs24 13\\b0  \\i T00001\\b\\i0 25"));
  Merge(Rtf(
      R"(a {\*\bkmkstart m}<<Each Payment where Payment Number < 30>>b<<End Each>>{\*\bkmkend m} )"
      R"(<<If Current Rent < 0>>{\*\bkmkstart n}c<<End If>>{\*\bkmkend n}\par )"));
  EXPECT_THAT(editor_.TextRTF(), HasSubstr("{\\*\\bkmkstart m}bb{\\*\\bkmkend m}"));
  EXPECT_THAT(editor_.TextRTF(), testing::Not(HasSubstr("bkmkstart n")));
  EXPECT_THAT(editor_.TextRTF(), testing::Not(HasSubstr("bkmkend n")));
  Merge(Rtf(R"(a\par <<If Current Rent < 0>>\par b\sect\sectd\pgwsxn5000 <<End If>>\par c\par )"));
  EXPECT_THAT(editor_.TextRTF(), HasSubstr("a\\sect"));
  EXPECT_THAT(editor_.TextRTF(), HasSubstr("\\pgwsxn5000"));
  // Two links that follow each other stay two.
  Merge(Rtf(
      R"(<<Each Payment where Payment Number < 30>>{\field{\*\fldinst{HYPERLINK "x"}}{\fldrslt y}}<<End Each>>\par )"));
  const std::string& source = editor_.TextRTF();
  EXPECT_NE(source.find("HYPERLINK"), source.rfind("HYPERLINK"));
  // Values are text, whatever they hold.
  EXPECT_EQ(Merge(Rtf(R"(<<Tenant Name:capitals>>\par )"), "T00003"),
            "SMITH-JONES, FLAT 2-REAR `RED`/");
}

TEST_F(TemplateFormsTest, FillHeadersAndFooters) {
  Merge(Rtf(
      R"(text\par )",
      R"({\header\pard a <<If Current Rent > 0>>b<<End If>> <<Tenant Code:small letters>>\par}{\footer\pard plain <<Tenant Code>>\par})"));
  const auto groups = editor_.Document().head_groups;
  ASSERT_EQ(groups.size(), 2U);
  EXPECT_THAT(groups[0].source, HasSubstr("a b t00001"));
  EXPECT_THAT(groups[1].source, HasSubstr("plain T00001"));
}

TEST_F(TemplateFormsTest, RepeatAnOwnersPropertiesAndTenancies) {
  const std::string body =
      R"(<<Name>>: <<Each Property>>\par <<Property Code>> <<Property Address 1>><<Each Tenancy>> )"
      R"([<<Tenant Code>> <<Current Rent>><<Each Payment where Payment Number < 60>> )"
      R"(<<Payment Number>><<End Each>>]<<End Each>> <<Number of Tenancies>> <<Total Current Rent>>)"
      R"(<<End Each>>\par <<Number of Properties>> <<Number of Tenancies>> <<Total Current Rent>>\par )";
  std::string expected;
  long all = 0, tenancies = 0, properties = 0;
  for (const test::SampleRow& property : test::SampleTable("property")) {
    if (property.at("ownercode") != "OW0006") continue;
    ++properties;
    expected += "/" + property.at("code") + " " + property.at("address1");
    long here = 0, rent = 0;
    std::vector<test::SampleRow> rows = test::SampleTable("tenancy");
    std::ranges::stable_sort(
        rows, {}, [](const test::SampleRow& row) { return FoldedForSearch(row.at("name")); });
    for (const test::SampleRow& tenancy : rows) {
      if (tenancy.at("Property Code") != property.at("code") || tenancy.at("closed_yn") != "0") {
        continue;
      }
      ++here;
      rent += std::lround(std::atof(tenancy.at("current rent").c_str()));
      expected += " [" + tenancy.at("reference") + " " +
                  std::to_string(std::lround(std::atof(tenancy.at("current rent").c_str()))) +
                  ".00";
      for (const test::SampleRow& payment : test::SampleTable("revenues")) {
        if (payment.at("tenant_code") == tenancy.at("reference") &&
            std::atoi(payment.at("recordnumber").c_str()) < 60) {
          expected += " " + payment.at("recordnumber");
        }
      }
      expected += "]";
    }
    all += rent;
    tenancies += here;
    expected += " " + std::to_string(here) + " " + std::to_string(rent) + ".00";
  }
  expected = "Søren Ngata: " + expected + "/" + std::to_string(properties) + " " +
             std::to_string(tenancies) + " " + std::to_string(all) + ".00/";
  EXPECT_EQ(MergeOwner(Rtf(body), "Søren Ngata"), expected);
}

TEST_F(TemplateFormsTest, EndTheLedgerWithTheBalanceOwing) {
  for (const TenantRecord& tenant : session_.caches.Tenants) {
    const std::string shown = Merge(
        Rtf(R"(<<Each Ledger Entry>><<End Each>><<Each Ledger Entry since today - 100 days>>)"
            R"(<<If Running Balance = Balance Owing>>y<<Else>>n<<End If>><<End Each>>)"
            R"(|<<Opening Balance>>|<<Total Entry Charge>>|<<Total Entry Payment>>|<<Balance Owing>>\par )"),
        tenant.Reference);
    std::vector<std::string> parts = Split(shown, "|");
    ASSERT_EQ(parts.size(), 5U) << shown;
    // A tenancy that ended long ago has no late entry.
    EXPECT_TRUE(parts[0].empty() || parts[0].ends_with("y")) << tenant.Reference << shown;
    const auto cents = [](const std::string& text) {
      return std::lround(std::atof(text.c_str()) * 100);
    };
    EXPECT_EQ(cents(parts[1]) + cents(parts[2]) - cents(parts[3]), cents(parts[4]))
        << tenant.Reference << " " << shown;
  }
}

TEST_F(TemplateFormsTest, SayWhatTheAccountDoesNotCount) {
  session_.database.OpenDatabase();
  session_.database.ExecuteSQL("delete from rent_periods where tenant_code = 'T00001'");
  session_.database.CloseDatabase();
  long paid = 0;
  for (const test::SampleRow& payment : test::SampleTable("revenues")) {
    if (payment.at("tenant_code") == "T00001" && payment.at("revenue group") != "BOND") {
      paid += std::lround(std::atof(payment.at("amount").c_str()));
    }
  }
  EXPECT_EQ(Merge(Rtf(R"(<<Each Ledger Entry where Entry Charge > 0>><<Entry Text>>: )"
                      R"(<<Entry Charge:whole>> <<Running Balance>><<End Each>> <<Balance Owing>>)"
                      R"(\par )")),
            "Payments without rent periods, not counted: " + std::to_string(paid) + " 0.00 0.00/");
}

TEST_F(TemplateFormsTest, FindWhatIsWrong) {
  struct Case {
    const char* body;
    Kind kind;
    const char* code;
    const char* problem;
    TemplateKind of = TemplateKind::kTenant;
  };
  const Case cases[] = {
      {"<<If Closed>>a", Kind::kUnclosed, "<<If Closed>>", "has no <<End If>>"},
      {"<<Each Payment>>a", Kind::kUnclosed, "<<Each Payment>>", "has no <<End Each>>"},
      {"a<<End If>>", Kind::kOutside, "<<End If>>", "nothing that it ends"},
      {"a<<End Each>>", Kind::kOutside, "<<End Each>>", "nothing that it ends"},
      {"a<<Else>>", Kind::kOutside, "<<Else>>", "nothing that it belongs to"},
      {"<<Each Payment>><<Else>><<End Each>>", Kind::kOutside, "<<Else>>", "in a repetition"},
      {"<<If Closed>>a<<Else>>b<<Else>>c<<End If>>", Kind::kOutside, "<<Else>>",
       "stands behind <<Else>>"},
      {"<<If Closed>>a<<Else>>b<<Else If Closed>>c<<End If>>", Kind::kOutside, "<<Else If Closed>>",
       "stands behind <<Else>>"},
      {"<<If Closed>>a<<Each Payment>>b<<End If>>c<<End Each>>", Kind::kCrossed, "<<End If>>",
       "stands inside <<Each Payment>>"},
      {"<<If>>a<<End If>>", Kind::kCondition, "<<If>>", "There is no condition"},
      {"<<If Balance Oving > 0>>a<<End If>>", Kind::kCondition, "<<If Balance Oving > 0>>",
       "is Balance Owing meant?"},
      {"<<If Tenant Name > 5>>a<<End If>>", Kind::kCondition, "<<If Tenant Name > 5>>",
       "cannot be compared"},
      {"<<If Payment Amount > 5>>a<<End If>>", Kind::kCondition, "<<If Payment Amount > 5>>",
       "no name or value"},
      {"<<Each Paymant>>a<<End Each>>", Kind::kCollection, "<<Each Paymant>>",
       "no \"Paymant\" to repeat"},
      {"<<Each Property>>a<<End Each>>", Kind::kCollection, "<<Each Property>>",
       "is for owner templates"},
      {"<<Each Payment>>a<<End Each>>", Kind::kCollection, "<<Each Payment>>",
       "belongs to a tenancy", TemplateKind::kOwner},
      {"<<Each Tenancy newest first>>a<<End Each>>", Kind::kCollection,
       "<<Each Tenancy newest first>>", "have no day", TemplateKind::kOwner},
      {"<<Each Payment since Friday>>a<<End Each>>", Kind::kCollection,
       "<<Each Payment since Friday>>", "no day"},
      {"<<Each Payment since 1 May since 1 June>>a<<End Each>>", Kind::kCollection,
       "<<Each Payment since 1 May since 1 June>>", "there twice"},
      {"<<Each Payment newest first since 1 July>>a<<End Each>>", Kind::kCollection,
       "<<Each Payment newest first since 1 July>>", "\"newest first\" stands behind"},
      {"<<Each Payment where Payment Amount > 1 since 1 July>>a<<End Each>>", Kind::kCondition,
       "<<Each Payment where Payment Amount > 1 since 1 July>>", "\"since\" stands before"},
      {"<<Each Payment since until 1 May>>a<<End Each>>", Kind::kCollection,
       "<<Each Payment since until 1 May>>", "Behind \"since\" a day is missing before \"until\""},
      {"<<Each Payment where>>a<<End Each>>", Kind::kCollection, "<<Each Payment where>>",
       "a condition is missing"},
      {"<<Each Payment>>a<<End Each>><<Payment Date>>", Kind::kName, "<<Payment Date>>",
       "only inside <<Each Payment>>"},
      {"a <<Payment Date>>", Kind::kName, "<<Payment Date>>", "only inside <<Each Payment>>"},
      {"a <<Total Payment Amount>> <<Each Payment>><<End Each>>", Kind::kName,
       "<<Total Payment Amount>>", "stands before"},
      {"<<Opening Balance>>", Kind::kName, "<<Opening Balance>>", "Each Ledger Entry"},
      {"<<Current Rent:wrods>>", Kind::kFormat, "<<Current Rent:wrods>>", "\"wrods\""},
      {"<<Current Rent:short>>", Kind::kFormat, "<<Current Rent:short>>", "does not fit"},
      {"<<Curent Rent:words>>", Kind::kName, "<<Curent Rent:words>>", "is no value here"},
      {"<<If {\\b Closed}>>a<<End If>>", Kind::kSplit, "<<If Closed>>", "more than one format"},
  };
  for (const Case& one : cases) {
    const TemplateForms forms(Rtf(std::string(one.body) + R"(\par )"), one.of);
    ASSERT_EQ(forms.Findings().size(), 1U) << one.body;
    const FormFinding& found = forms.Findings().front();
    EXPECT_EQ(found.kind, one.kind) << one.body << ": " << found.problem;
    EXPECT_EQ(found.code, one.code) << one.body;
    EXPECT_THAT(found.problem, HasSubstr(one.problem)) << one.body;
    EXPECT_FALSE(found.advice.empty());
    EXPECT_TRUE(TemplateForms::MayHold(Rtf(one.body), one.of)) << one.body;
  }
  const std::pair<std::string, Kind> tables[] = {
      {Row({"<<If Closed>>a"}) + "<<End If>>\\par ", Kind::kUnclosed},
      {Row({"a", "<<End If>>b", "<<If Closed>>c"}) + "\\par ", Kind::kOutside},
      {Row({"<<If Closed>>a"}) + Row({"a<<End If>>", "<<If Closed>>b"}) + Row({"<<End If>>"}),
       Kind::kCrossed},
      {R"(<<Each Payment>>\par )" + Row({"x<<End Each>>"}), Kind::kUnclosed},
  };
  for (const auto& [body, kind] : tables) {
    const TemplateForms forms(Rtf(body), TemplateKind::kTenant);
    ASSERT_FALSE(forms.Findings().empty()) << body;
    const bool found = std::ranges::any_of(
        forms.Findings(), [&](const FormFinding& one) { return one.kind == kind; });
    EXPECT_TRUE(found) << body;
  }
  std::string deep;
  for (int i = 0; i < 1000; ++i) deep += kYes;
  const TemplateForms forms(Rtf(deep + R"(\par )"), TemplateKind::kTenant);
  ASSERT_EQ(forms.Findings().size(), 1U);
  EXPECT_EQ(forms.Findings().front().kind, Kind::kTooDeep);
}

TEST(TemplateForms, AreNotSeenInTemplatesOfToday) {
  for (const char* body :
       {"Dear <<Tenant Name>>,", "<<TCustom:Pet:capitals>>", "<<FutureDate:14:Days>>",
        "<<?If so, when ?>>", "a << b", "<<tenant name>>", "<<Eachway>>", "<<Iffy>>",
        "<<Property Code>>", "If <<Tenant Name>> >> Else", "<<Unknown:thing>>"}) {
    EXPECT_FALSE(TemplateForms::MayHold(Rtf(body), TemplateKind::kTenant)) << body;
  }
  for (const char* body : {"<<if Closed>>", "<{\\b <}If Closed>>", "<<End {\\b If}>>",
                           "<<Print Date:short>>", "<<Days Behind>>", "<<Each\\tab Payment>>"}) {
    EXPECT_TRUE(TemplateForms::MayHold(Rtf(body), TemplateKind::kTenant)) << body;
    EXPECT_FALSE(TemplateForms::MayHold(Rtf(body), TemplateKind::kCheque)) << body;
  }
}

}  // namespace
}  // namespace tenora
