#include "letters/template_lint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "letters/custom_field_codes.h"
#include "letters/frm_letter.h"
#include "platform/richtext/reader.h"
#include "platform/richtext/writer.h"
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
  for (const std::string_view name : kTenantCodes) names.emplace_back(name);
  for (const std::string_view name : kOwnerCodes) names.emplace_back(name);
  for (const std::string_view name : kChequeCodes) names.emplace_back(name);
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

}  // namespace
}  // namespace tenora
