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
  // Merges a template's text for the tenant and checks the letter.
  std::vector<LetterFinding> Merge(const std::string& text, const PromptAnswers& answers = {}) {
    letter_.members() = LetterMembers();
    letter_.members().Kind = kTenantLetter;
    letter_.members().TenantCode = "T00001";
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

}  // namespace
}  // namespace tenora
