#include "letters/template_lint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "letters/custom_field_codes.h"
#include "letters/frm_letter.h"
#include "merge/merge_codes.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/text.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::HasSubstr;
using Kind = TemplateFinding::Kind;

constexpr TemplateKind kKinds[] = {TemplateKind::kTenant, TemplateKind::kOwner,
                                   TemplateKind::kCheque};

std::string Document(std::string_view body) {
  return R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fnil Arial;}{\f1\fnil Courier;}})"
         R"({\colortbl ;\red255\green0\blue0;}\pard )" +
         std::string(body) + "\\par}";
}

class TemplateLintTest : public testing::Test {
 protected:
  TemplateLintTest() {
    machine_.InstallSampleDatabase();
    machine_.clock = Clock(Date::FromCalendar(2026, 11, 21, 9, 30));
    session_.database.OpenDatabase();
    session_.caches.CacheTenants(session_.database);
    session_.caches.CacheOwners(session_.database);
    session_.database.CloseDatabase();
    fields_ = ReadCustomFieldCodes(*machine_.workspace->OpenDatabase(test::SampleDatabase()));
  }

  static void Load(RichTextBox* box, std::string_view body) {
    box->SetTextRTF(richtext::WriteRtf(richtext::ReadRtf(Document(body))));
  }

  std::vector<TemplateFinding> Lint(std::string_view body,
                                    TemplateKind kind = TemplateKind::kTenant) const {
    RichTextBox box;
    Load(&box, body);
    return LintTemplate(box, kind, machine_.clock.Today(), &fields_);
  }

  // What the real merges make of a template: what stands in its source before and after.
  struct Sources {
    std::string before, after;
    bool Unchanged() const { return before == after; }
  };
  Sources Merge(std::string_view body, TemplateKind kind) {
    frmLetter letter(session_);
    Load(&letter.rtfLetter, body);
    const std::string before = letter.rtfLetter.TextRTF();
    if (kind == TemplateKind::kTenant) {
      letter.members().TenantCode = "T00001";
      letter.InsertTenantDetails();
    } else if (kind == TemplateKind::kOwner) {
      letter.members().RecipientName = session_.caches.Owners.front().Name;
      letter.InsertOwnerDetails();
    } else {
      letter.InsertChequeDetails("Somebody", 12.5);
    }
    if (kind != TemplateKind::kCheque) letter.InsertPrompts();
    return {before, letter.rtfLetter.TextRTF()};
  }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
  CustomFieldCodes fields_;
};

// Every name of every catalogue and every form, as it should be written.
std::vector<std::string> AllNames() {
  std::vector<std::string> names{"BuildingReceiptNumber", "FutureDate:14:Days", "TCustom:Pet",
                                 "PCustom:AlarmCode", "OCustom:Salutation"};
  for (const TemplateKind kind : kKinds) {
    for (const MergeCode& code : MergeCodesOf(kind)) names.emplace_back(code.name);
  }
  return names;
}

// A code is found where the merge leaves it, and only there: every code, in and out of its
// template, right and with each kind of slip.
TEST_F(TemplateLintTest, FindsACodeExactlyWhereTheMergeLeavesIt) {
  // "@" is the name, "^" its first letter and "$" the rest of it.
  constexpr const char* kForms[] = {
      "<<@>>",
      "{\\header\\pard <<@>>\\par}x",
      "a{\\b\\cf1 <<@>>}",
      "<<^{\\*\\bkmkstart b}$>>",
      "{\\field{\\*\\fldinst HYPERLINK \"<<@>>\"}{\\fldrslt x}}",
      "{\\shp{\\*\\shpinst{\\shptxt <<@>>\\par}}}",
      "x << <<@>>",
      "<{\\b <@>>}",
      "<<^{\\cf1 $}>>",
      "x{\\footnote <<^{\\f1 $}>>}",
      "x\\sect\\sectd{\\footerf <<^{\\f1 $}>>\\par}y",
      "{\\shp{\\*\\shpinst{\\shptxt <<^{\\ul $}>>\\par}}}",
      "<< @ >>",
      "<<@\\par >",
      "<<^\\line $>>",
      "\\'ab@\\'bb",
      "<@>",
  };
  for (const TemplateKind kind : kKinds) {
    for (const std::string& name : AllNames()) {
      for (const std::string_view form : kForms) {
        std::string body = ReplaceAll(std::string(form), "^", name.substr(0, 1));
        body = ReplaceAll(ReplaceAll(body, "$", name.substr(1)), "@", name);
        const auto found = Lint(body, kind);
        const bool expected_two = form.starts_with("x <<");  // the brackets before it stay, too
        EXPECT_EQ(found.size() > (expected_two ? 1 : 0), Merge(body, kind).Unchanged()) << body;
      }
    }
  }
}

TEST_F(TemplateLintTest, SaysOnceThatFormsAreNestedTooDeep) {
  std::string body;
  for (int i = 0; i < 500; ++i) body += "<<If Closed>>";
  for (int i = 0; i < 500; ++i) body += "<<End If>>";
  const auto found = Lint(body, TemplateKind::kTenant);
  ASSERT_EQ(found.size(), 1U) << found[1].Text();
  EXPECT_THAT(found[0].Text(), HasSubstr("stands inside 20 others"));
}

TEST_F(TemplateLintTest, FindsWrongFormsInTheirPlaces) {
  struct Case {
    const char* body;
    const char* text;  // empty: nothing is wrong
    TemplateKind kind = TemplateKind::kTenant;
  };
  const Case cases[] = {
      {"<<If Closed>>a<<End If>> <<Each Payment>><<Payment Date:short>><<End Each>> <<Days "
       "Behind>>",
       ""},
      {"{\\header\\pard <<If Closed>>a<<End If>>\\par}b", ""},
      {"<<Each Tenancy>><<Tenant Name>> <<TCustom:ParkingBay>><<End Each>>", "",
       TemplateKind::kOwner},
      {"a\\par b <<Else>>", "line 2: \"b <<Else>>\": <<Else>> has nothing that it belongs to"},
      {"{\\header\\pard x\\par <<If Closed>>a\\par}b", "header, line 2: \"<<If Closed>>a\""},
      {"a{\\footnote <<Days Behind>>}",
       "footnote, line 1: \"<<Days Behind>>\": <<Days Behind>> "
       "cannot stand in a footnote"},
      {"{\\shp{\\*\\shpinst{\\shptxt <<If Closed>>\\par}}}<<Print Date:short>>",
       "text box, line 1: \"<<If Closed>>\": <<If Closed>> cannot stand in a text box"},
      {"<<Print Date:{\\b short}>>", "<<Print Date:short>> has more than one format"},
      {"<<If Days Behind > <<Monthly Rent Date>>>>a<<Days Behind>>",
       "has a code in brackets inside it; write names there without brackets: "
       "<<If Days Behind > Monthly Rent Date>>"},
  };
  for (const Case& one : cases) {
    const auto found = Lint(one.body, one.kind);
    if (*one.text == 0) {
      EXPECT_TRUE(found.empty()) << found.front().Text();
      continue;
    }
    ASSERT_EQ(found.size(), 1U) << one.body;
    EXPECT_EQ(found[0].kind, Kind::kForm);
    EXPECT_THAT(found[0].Text(), HasSubstr(one.text));
  }
  const auto split = Lint("\\u333?<<Print Date:{\\b short}>>");
  EXPECT_EQ(split[0].position, 1);
  EXPECT_EQ(split[0].replacement, "<<Print Date:short>>");
}

TEST_F(TemplateLintTest, SaysWhatIsWrongAndWhatToDo) {
  struct Case {
    const char* body;
    TemplateKind kind;
    const char* found;  // parts of the lines found, apart by "|"; empty: nothing
  };
  constexpr auto kTenant = TemplateKind::kTenant;
  constexpr auto kOwner = TemplateKind::kOwner;
  const Case kCases[] = {
      {"a\\par b\\line Dear <<Tenent Name>>,", kTenant,
       "line 3: \"Dear <<Tenent Name>>,\": <<Tenent Name>> is not a merge code and stays in the "
       "letter; "
       "write "
       "<<Tenant Name>> if"},
      {"<<TENANT NAME>>", kTenant,
       "differs from the code in letter case and stays in the letter; write <<Tenant Name>>"},
      {"<<EndIf>>", kTenant, "write <<End If>> if that is what you mean"},
      {"<<elseif>>", kOwner, "write <<Else If>> if that is what you mean"},
      {"<<Zebra>>", kTenant, "the Insert menu lists the codes of tenant templates"},
      {"<<Tenant Name>> <<Fee Value>>", kOwner,
       "<<Tenant Name>> is a code of tenant templates and stays as it is in this owner template"},
      {"<<Prompt Message>>", kTenant, "write <<?Your question?>>"},
      {"<<Tenant\\~Name>>", kTenant, "differs from the code in spacing"},
      {"{\\footer\\pard\\par{\\b <<}Email>>\\par}", kTenant,
       "footer, line 2: \"<<Email>>\": <<Email>> has more than one format (bold)"},
      {"<<Em\\b a\\fs40 i\\b0 l>>", kTenant, "(bold, size): the merge does not find it"},
      {"<<FutureDate:3:W\\b eeks>>", kTenant, "(bold): the merge loses the format"},
      {"{\\field{\\*\\fldinst MERGEFIELD Tenant_Name \\\\* UPPER}{\\fldrslt "
       "\\'abTenant_Name\\'bb}}",
       kTenant,
       "merge field \"Tenant_Name\" is not filled by this program; remove the field; "
       "write "
       "<<Tenant Name>>"},
      {"1 << 2", kTenant, "\"<<\" without \">>\""},
      {"\\'abBonjour\\'bb, a < b > c", kTenant, ""},
      {"<<<Tenant Name>>>", kTenant, ""},
      {"<<TCustom:<<Tenant Code>>>> <<FutureDate:<<Tenant Code>>:Days>>", kTenant, ""},
      {"<<TCustom:Pett>> <<PCustom:Pet>> <<TCustom:>> <<TCustom:Pet>>", kTenant,
       "removed from every letter; write <<TCustom:Pet>> if|a field of the tenant: write "
       "<<TCustom:Pet>>|does not name a field"},
      {"<<FutureDate:14:days>> <<FutureDate:2.5:Weeks>> <<FutureDate:-3:Days>> <<FutureDate: 7 "
       ":Days>>",
       kTenant, "unknown unit \"days\"|counts 2|a date in the past"},
      {"<<FutureDate:x:Days>> <<FutureDate:14>> <<FutureDate:99999:Years>> <<FutureDate::Days>>",
       kTenant,
       "is not a number: neither this nor any later|has no unit|beyond the calendar|is not a "
       "number"},
      {"<<FutureDate:1:Days\\par <<Email>>", kTenant, "takes the text up to a later \">>\""},
      {"<<?Rent for <<Tenant Name>>?\?>> <<?Is 3 >> 2?>> <<?Two\\par lines?>> <<?abc?>>", kTenant,
       ""},
      {"<<?ab?>> <<?\?>> <<?>> <<?Later?>>", kTenant, "nor is any later prompt"},
      {"<<?Who>> comes", kTenant, "takes the text up to a later \"?>>\""},
      {"<<?Who?>>", TemplateKind::kCheque, "is not asked for a cheque"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.body);
    const std::vector<TemplateFinding> findings = Lint(c.body, c.kind);
    std::vector<std::string> expected = Split(c.found, "|");
    if (*c.found == '\0') expected.clear();
    ASSERT_EQ(findings.size(), expected.size());
    for (std::size_t i = 0; i < findings.size(); ++i) {
      EXPECT_THAT(findings[i].Text(), HasSubstr(expected[i]));
    }
  }
}

TEST_F(TemplateLintTest, TellsThatABuildingGetsTheSameReceiptNumberInEveryLetter) {
  const auto findings = [&] {
    session_.database.OpenDatabase();
    fields_ = ReadCustomFieldCodes(session_.database);
    session_.database.CloseDatabase();
    return Lint("No. <<BuildingReceiptNumber>>");
  };
  EXPECT_TRUE(findings().empty()) << "the first building of all gets its counter";
  frmLetter letter(session_);
  Load(&letter.rtfLetter, "<<BuildingReceiptNumber>>");
  letter.members().TenantCode = "T00007";
  letter.InsertTenantDetails();
  ASSERT_EQ(findings().size(), 1U);
  EXPECT_EQ(findings().front().kind, Kind::kReceiptNumber);
  EXPECT_THAT(findings().front().problem, HasSubstr("1000"));
  session_.database.OpenDatabase();
  for (const std::string& building : fields_.uncounted_buildings) {
    session_.database.ExecuteSQL(
        "insert into custom_fields(parentcode, parenttype, fieldcode, [value]) values ('" +
        building + "', 202, 'NxtReceipt', '1500')");
  }
  EXPECT_TRUE(findings().empty());
}

TEST_F(TemplateLintTest, PointsAtTheCodeInTheEditor) {
  RichTextBox box;
  Load(&box,
       "M\\u257?\\'e9 <<Zebra>>\\par\\trowd\\cellx900\\cellx1800\\pard\\intbl a\\cell "
       "<<Yak>>\\cell\\row\\pard <<Ok{\\b api}>>{\\footnote long text <<Gnu>>} <<Emu>>");
  std::vector<std::string> selected;
  for (const TemplateFinding& finding :
       LintTemplate(box, TemplateKind::kTenant, machine_.clock.Today())) {
    box.Select(finding.position, finding.length);
    selected.push_back(std::to_string(finding.line) + box.SelText());
  }
  EXPECT_THAT(selected,
              testing::ElementsAre("1<<Zebra>>", "2<<Yak>>", "3<<Okapi>>", "1", "3<<Emu>>"));
}

}  // namespace
}  // namespace tenora
