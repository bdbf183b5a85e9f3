#include "letters/window_print.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "letters/template_library.h"
#include "platform/runtime/text.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::HasSubstr;

class PrintFromWindowTest : public testing::Test {
 protected:
  // Whether a letter of this kind was printed; `printed_` is then its text.
  bool Print(std::string_view kind, const std::string& text) {
    printed_.clear();
    letter_.StartNew(kind);
    letter_.rtfLetter.SetText(text);
    letter_.members().Changed = false;
    const bool done = PrintFromWindow(session_, letter_, [&](frmLetter& printed) {
      printed_ = printed.rtfLetter.Text();
      return true;
    });
    // Whatever was printed, the letter in front is as it was.
    EXPECT_THAT(letter_.rtfLetter.Text(), HasSubstr(text));
    EXPECT_FALSE(letter_.members().Changed);
    return done;
  }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
  frmLetter letter_{session_};
  std::string printed_;
};

TEST_F(PrintFromWindowTest, RefusesATemplateWithCodesOfItsOwnList) {
  const std::tuple<std::string_view, const char*, bool> cases[] = {
      {kTemplates, "Dear <<Tenant Name>>", false},
      {kTemplates, "<<Prompt Message>>", false},
      {kTemplates, "Dear <<Postal Address 1>> <<tenant name>> <<TCustom:Pet>>", true},
      {kOwnerTemplates, "<<Postal Address 1>>", false},
      {kOwnerTemplates, "Dear <<Tenant Name>>", true},
      {kTenantLetter, "Dear <<Tenant Name>>", true},
      {kOwnerLetter, "Dear <<Name>>", true},
      {"Check", "<<Payee Name>>", true},
  };
  int refused = 0;
  for (const auto& [kind, text, prints] : cases) {
    EXPECT_EQ(Print(kind, text), prints) << text;
    if (!prints) ++refused;
  }
  EXPECT_EQ(machine_.dialogs.Texts(),
            std::vector<std::string>(
                refused,
                "This letter should be 'Generated' before it is printed.  Select this letter in "
                "the left menu section, and choose the 'Generate Letter(s)' button"));
}

TEST_F(PrintFromWindowTest, PrintsASampleOfAChequeOnYes) {
  for (const char* word : {"Cheque", "Check"}) {
    session_.cheque_word = word;
    const std::string codes = "<<Payee Name>> <<Value in numbers>> <<Value in words 2>>";
    machine_.dialogs.ForgetShown();
    machine_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes);
    EXPECT_FALSE(Print(word, codes));
    EXPECT_EQ(printed_, "");
    EXPECT_TRUE(Print(word, codes));
    EXPECT_THAT(printed_, testing::StartsWith("This is the payyes name 1234.56 and 56 Cents"));

    const ShownBox& box = machine_.dialogs.shown().at(0);
    EXPECT_EQ(box.text,
              ReplaceAll("This will print a SAMPLE of the X for printer alignment purposes.  The "
                         "real X can only be generated through Tenora expense entry.  Comtinue to "
                         "print this SAMPLE X?",
                         "X", word));
    EXPECT_EQ(box.title, std::string("Print ") + word);
    EXPECT_EQ(box.default_choice, Answer::kNo);
  }
}

}  // namespace
}  // namespace tenora
