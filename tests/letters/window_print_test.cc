#include "letters/window_print.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "letters/template_library.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

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
      return printer_works_;
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
  bool printer_works_ = true;
};

TEST_F(PrintFromWindowTest, RefusesATemplateWithCodesOfItsOwnList) {
  struct Case {
    std::string_view kind;
    const char* text;
    bool printed;
  };
  const Case cases[] = {
      {kTemplates, "Dear <<Tenant Name>>", false},
      {kTemplates, "<<Prompt Message>>", false},
      {kTemplates, "Dear <<Postal Address 1>> <<tenant name>> <<TCustom:Pet>>", true},
      {kOwnerTemplates, "<<Postal Address 1>>", false},
      {kOwnerTemplates, "Dear <<Tenant Name>>", true},
      {kTenantLetter, "Dear <<Tenant Name>>", true},
      {kOwnerLetter, "Dear <<Name>>", true},
      {"Check", "<<Payee Name>>", true},
  };
  for (const Case& c : cases) {
    machine_.dialogs.ForgetShown();
    EXPECT_EQ(Print(c.kind, c.text), c.printed) << c.text;
    EXPECT_EQ(!printed_.empty(), c.printed);
    if (c.printed) {
      EXPECT_THAT(machine_.dialogs.Texts(), IsEmpty());
    } else {
      EXPECT_THAT(machine_.dialogs.Texts(),
                  testing::ElementsAre(
                      "This letter should be 'Generated' before it is printed.  Select this letter "
                      "in the left menu section, and choose the 'Generate Letter(s)' button"));
    }
  }
}

TEST_F(PrintFromWindowTest, PrintsASampleOfAChequeOnYes) {
  for (const char* word : {"Cheque", "Check"}) {
    session_.cheque_word = word;
    const std::string codes = "<<Payee Name>> <<Value in numbers>> <<Value in words 2>>";
    machine_.dialogs.ForgetShown();
    machine_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes).WillPress(Answer::kYes);
    EXPECT_FALSE(Print(word, codes));
    EXPECT_EQ(printed_, "");
    EXPECT_TRUE(Print(word, codes));
    EXPECT_THAT(printed_, testing::StartsWith("This is the payyes name 1234.56 and 56 Cents"));
    printer_works_ = false;
    EXPECT_FALSE(Print(word, codes));
    printer_works_ = true;

    const std::string w = word;
    const ShownBox& box = machine_.dialogs.shown().at(0);
    EXPECT_EQ(box.text, "This will print a SAMPLE of the " + w +
                            " for printer alignment purposes.  The real " + w +
                            " can only be generated through Tenora expense entry.  Comtinue to "
                            "print this SAMPLE " +
                            w + "?");
    EXPECT_EQ(box.title, "Print " + w);
    EXPECT_EQ(box.buttons, Buttons::kYesNo);
    EXPECT_EQ(box.icon, Icon::kQuestion);
    EXPECT_EQ(box.default_choice, Answer::kNo);
  }
}

}  // namespace
}  // namespace tenora
