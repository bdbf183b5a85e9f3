#include "letters/letter_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "letters/frm_letter.h"
#include "letters/template_library.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class LetterCheckTest : public testing::Test {
 protected:
  LetterCheckTest() {
    machine_.InstallSampleDatabase();
    session_.database.OpenDatabase();
    session_.caches.Load(session_.database);
    session_.database.CloseDatabase();
  }
  TenantRecord& Tenant() { return *session_.caches.FindTenant("T00001"); }
  // A tenancy of which the database knows neither payments nor dates.
  TenantRecord& AddTenant(const char* reference) {
    TenantRecord tenant;
    tenant.Reference = reference;
    return session_.caches.Tenants.emplace_back(tenant);
  }
  // Merges a template's text for the tenant and checks the letter.
  std::vector<LetterFinding> Merge(const std::string& text, const PromptAnswers& answers = {},
                                   const char* tenant = "T00001") {
    letter_.members() = LetterMembers();
    letter_.members().Kind = kTenantLetter;
    letter_.members().TenantCode = tenant;
    letter_.rtfLetter.SetTextRTF(
        R"({\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fnil Arial;}}\pard )" + text + R"(\par})");
    EXPECT_FALSE(letter_.InsertTenantDetails().error);
    letter_.InsertPrompts(answers);
    return letter_.Check();
  }
  std::string Shown() const {
    std::string text = letter_.rtfLetter.Text();
    while (text.ends_with("\r\n")) text.resize(text.size() - 2);
    return text;
  }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
  frmLetter letter_{session_};
};

// "hold Tenant Name", "warn Fax".
std::vector<std::string> Short(const std::vector<LetterFinding>& findings) {
  std::vector<std::string> texts;
  for (const LetterFinding& finding : findings) {
    texts.push_back((finding.weight == FindingWeight::kHold ? "hold " : "warn ") + finding.code);
  }
  return texts;
}

TEST_F(LetterCheckTest, HoldsALetterWhoseValuesDoNotStandAsInTheData) {
  const struct {
    const char* value;
    bool held;
  } cases[] = {
      {"Close } brace", true},
      {R"(5\99 High St)", true},
      {"{tidy}", true},
      {R"(back\\slash)", true},
      {"bell\x07", true},
      {"form\ffeed", true},
      {"<<Tenant Code>>", true},    // a code that is filled later
      {"<<?Who are you?>>", true},  // a question that is asked later
      {"<<TCustom:", true},         // takes the letter's text with it
      {"<<Pets", false},            // never closed
      {"a << b", false},
      {"a >> b", false},
      {"Māhuta & O'Brien, €5 <x@y.z>", false},
      {"tab\tstays", false},
      {"5-9 High St", false},
      {"", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    Tenant().Fax = c.value;
    const auto findings =
        Merge(R"(Dear <<Fax>>, <<TCustom:None>> yours <<Tenant Code>>)", {{"Who are you", "Jane"}});
    EXPECT_EQ(Holds(findings), c.held) << testing::PrintToString(Short(findings));
    if (c.held) {
      EXPECT_EQ(findings.front().code, "Fax");
    } else {
      EXPECT_THAT(Shown(), HasSubstr(c.value));
    }
  }
}

TEST_F(LetterCheckTest, HoldsALetterWhoseAnswersDoNotStandAsTyped) {
  const struct {
    const char* answer;
    std::vector<std::string> findings;
  } cases[] = {
      {"Tuesday", {}},
      {"at {noon}", {"hold When"}},
      {"first\r\nsecond", {}},
      {"<<Tenant Name>>", {"hold Tenant Name"}},  // is not filled any more
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Short(Merge("<<?When?>> <<?When?>>", {{"When", c.answer}})), c.findings) << c.answer;
  }
}

TEST_F(LetterCheckTest, HoldsALetterWithCodesOrQuestionsLeft) {
  const struct {
    const char* text;
    std::vector<std::string> findings;
  } cases[] = {
      {"Dear <<Tenent Name>>, <<Tenent Name>>", {"hold Tenent Name"}},
      {"<<TENANT NAME>>", {"hold TENANT NAME"}},
      {R"(<<Tenant {\b Name}>>)", {"hold Tenant Name"}},
      {R"(<{\b <Fax>>})", {"hold Fax"}},
      {"<<Fee Value>> <<Payee Name>>", {"hold Fee Value", "hold Payee Name"}},
      {"<<?x?>> <<?When?>>", {"hold x", "hold When"}},
      {"<<?Never closed", {"hold Never closed"}},
      {"<<Tenant Name", {"hold "}},
      {R"({\footnote\pard <<Nme>>})", {"hold Nme"}},
      {"a << b, 1 < 2 <3", {}},
      {"<<Fax>> >>", {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Short(Merge(c.text)), c.findings) << c.text;
  }
  EXPECT_THAT(Merge("<<Tenent Name>>").front().sentence, HasSubstr("write <<Tenant Name>>"));
}

TEST_F(LetterCheckTest, TellsDatesThatAreNone) {
  AddTenant("TNEW").EndDate = Date::FromCalendar(1234, 1, 1);
  session_.caches.Tenants.back().RentReviewDate = Date::FromCalendar(1234, 1, 1);
  const struct {
    const char* text;
    const char* shown;
    std::vector<std::string> findings;
  } cases[] = {
      {"<<Tenancy End Date>>", "1 January 1234", {"warn Tenancy End Date"}},
      {"<<Next Inspection>>", "21 November 2026 09:30 AM", {"warn Next Inspection"}},
      {"<<Last Inspection>>", "21 November 2026 09:30 AM", {"warn Last Inspection"}},
      {"<<Last Rent Rise>><<Last Rent Rise>>", "", {"warn Last Rent Rise"}},
      {"<<Current Period Start>>", "", {"warn Current Period Start"}},
      {"<<Next Period Start>>", "", {"warn Next Period Start"}},
      {"<<Paid To Date>>", "", {"warn Paid To Date"}},
      {"<<Rent Review Date>>", "", {}},  // whose year 1234 says that none is set
      {"<<Print Date>>", "21 November 2026", {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Short(Merge(c.text, {}, "TNEW")), c.findings) << c.text;
    EXPECT_EQ(Shown(), c.shown);
    EXPECT_FALSE(Holds(letter_.Check()));
  }
}

TEST_F(LetterCheckTest, HoldsAReceiptWithoutAPayment) {
  const std::string receipt =
      "<<Last Payment Number>> <<Last Payment Date>> <<Last Payment Amount>>";
  EXPECT_THAT(Merge(receipt), IsEmpty());
  // The element may have been filled for another payment before.
  AddTenant("TNEW").LastPaymentNumber = 77;
  EXPECT_THAT(Short(Merge(receipt, {}, "TNEW")), ElementsAre("hold Last Payment Date"));
  EXPECT_EQ(Shown(), "0  0.00");
  EXPECT_THAT(Merge("<<Balance Owing>>", {}, "TNEW"), IsEmpty());
}

TEST_F(LetterCheckTest, TellsWhatWillNotAppearOnPaper) {
  const std::string png =
      R"({\pict\pngblip\picwgoal300\pichgoal300 89504e470d0a1a0a0000000d494844520000000100000001080600)"
      "00001f15c4890000000d49444154789c6360606060000000050001a5f645400000000049454e44ae426082}";
  const struct {
    std::string text;
    std::vector<std::string> words;
  } cases[] = {
      {"plain <<Fax>>", {}},
      {png, {}},
      {R"({\pict\wmetafile8\picwgoal300\pichgoal300 010009000003})", {"a WMF picture"}},
      {R"({\pict\emfblip\picwgoal300\pichgoal300 01000000})", {"an EMF picture"}},
      {R"({\pict\pngblip\picwgoal300\pichgoal300 89504e47})", {"a picture that cannot be read"}},
      {R"(text{\footnote\pard <<Fax>>\par})", {}},
      {R"(text{\footnote\pard {\mmath one}})", {"a formula"}},
      {R"({\footer\pard text{\footnote\pard note}})", {"a note in a header or footer"}},
      {R"({\shp{\*\shpinst{\shptxt text{\footnote\pard note}}}})", {"a note in a text box"}},
      {png + R"({\mmath one}{\mmath two})", {"a formula"}},
      {R"({\object\objemb{\*\objdata 00}})", {"an embedded object"}},
      {png, {}},  // after a letter that had something
      // A script that computers have no font for; and what every font has, or a symbol font.
      {R"(\u-10206?\u-8448? and \u-10206?\u-8448?)",
       {"no installed font has \"\U00018B00\", which"}},
      {R"(\u937?\u8364?\u8205?\u-3913?\ul x)", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    for (int again = 0; again < 2; ++again) {
      const auto findings = Merge(c.text);
      ASSERT_EQ(findings.size(), c.words.size());
      for (std::size_t i = 0; i < findings.size(); ++i) {
        EXPECT_EQ(findings[i].weight, FindingWeight::kWarning);
        EXPECT_THAT(findings[i].sentence, testing::StartsWith(c.words[i]));
      }
    }
  }
}

TEST_F(LetterCheckTest, ForgetsTheMergeWhenAFileIsLoaded) {
  Tenant().Fax = "{5}";
  EXPECT_TRUE(Holds(Merge("<<Fax>>")));
  const auto file = machine_.ProgramFolder() / "Letter.rtf";
  letter_.rtfLetter.SaveFile(file);
  letter_.LoadLetter(file, kTenantLetter);
  EXPECT_THAT(letter_.Check(), IsEmpty());
}

TEST(FindingText, NamesRecipientAndCode) {
  const LetterFinding finding{FindingWeight::kHold, "Fax", "is wrong"};
  EXPECT_EQ(FindingText({"Jane Smith", "T00001"}, finding), "Jane Smith (T00001): Fax: is wrong");
  EXPECT_EQ(FindingText({"Ann Owner", ""}, {FindingWeight::kWarning, "", "is odd"}),
            "Ann Owner: is odd");
}

}  // namespace
}  // namespace tenora
