#include "ui/window/letter/letter_output.h"

#include <array>

#include "letters/template_library.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::HasSubstr;

class LetterOutputTest : public WindowPartsTest {
 protected:
  LetterOutputTest() { LoadTenants(); }

  // As a file of Ann's folder is opened from the tree.
  void OpenLetter(const std::string& text, const char* kind) {
    letters_.StartNew(kind);
    InFront().RecipientName = "Mei Huang";
    InFront().TenantCode = "T00007";
    letters_.Active()->letter().rtfLetter.SetTextRTF("{\\rtf1 " + text + "}");
  }

  LetterOutput output_{session_, printers_, letters_, AtOnce};
};

// What the user is asked about a finding, and whether the letter then leaves. Each further step
// (printer, file, subject) is cancelled, which shows that it was reached.
TEST_F(LetterOutputTest, AsksBeforeAWrongLetterLeavesAndOnlyWarnsOfTheRest) {
  struct Case {
    const char *text, *kind, *found;
    bool held, goes_on;
  };
  const Case cases[] = {
      {"Dear Mei", "Tenant Letter", "", false, true},
      {"Dear <<Tenant Nmae>>", "Tenant Letter", "\"<<Tenant Nmae>>\" was not filled in", true,
       false},
      {"Dear <<Tenant Nmae>>", "Owner Letter", "\"<<Tenant Nmae>>\" was not filled in", true, true},
      {"{\\pict\\wmetafile8 zz}", "Tenant Letter", "will not appear on paper", false, true},
      {"Dear <<Tenant Nmae>>", "Templates", "", false, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    OpenLetter(c.text, c.kind);
    frmLetter& letter = letters_.Active()->letter();
    const std::array<std::function<void()>, 3> commands = {[&] { output_.Print(letter); },
                                                           [&] { output_.ExportPdf(letter); },
                                                           [&] { output_.Email(letter); }};
    for (const auto& command : commands) {
      platform_.dialogs.ForgetShown();
      if (c.held) platform_.dialogs.WillPress(c.goes_on ? Answer::kYes : Answer::kNo);
      if (c.goes_on) platform_.dialogs.WillCancel();
      command();
      const auto& shown = platform_.dialogs.shown();
      ASSERT_EQ(shown.size(), (*c.found != '\0' ? 1U : 0U) + (c.goes_on ? 1U : 0U));
      EXPECT_EQ(platform_.dialogs.answers_left(), 0U);
      if (*c.found == '\0') continue;
      EXPECT_THAT(shown[0].text, HasSubstr("Mei Huang (T00007): "));
      EXPECT_THAT(shown[0].text, HasSubstr(c.found));
      EXPECT_EQ(shown[0].buttons, c.held ? Buttons::kYesNo : Buttons::kOk);
      EXPECT_EQ(shown[0].default_choice, c.held ? Answer::kNo : Answer::kOk);
    }
  }
}

}  // namespace
}  // namespace tenora
