#include "ui/window/letter/letter_output.h"

#include <array>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "letters/unfinished_runs.h"
#include "platform/dialogs/page_ranges.h"
#include "ui/window/letter/letter_recipient.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
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

// A value that the merge altered cannot be seen in the file: the run's log still says what is
// wrong, until the letter is changed or the run forgotten.
TEST_F(LetterOutputTest, AsksForAHeldLetterThatIsOpenedAgain) {
  SaveTemplate("Notice", "It is <<?What?>>.");
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.template_name = "Notice";
  request.recipients = {{"Mei Huang", "T00007"}};
  platform_.dialogs.WillType("a close } brace");
  GenerationObserver unseen;
  const GenerationSummary run = GenerateSelection(session_, request, unseen);
  ASSERT_EQ(run.held.size(), 1U);
  tree_.RefreshTree();
  ASSERT_TRUE(letters_.OpenListed(run.held[0].file));
  frmLetter& letter = letters_.Active()->letter();
  EXPECT_TRUE(letter.Check().empty());
  EXPECT_EQ(HeldReason(Data(), run.held[0].file), run.held[0].problem);
  platform_.dialogs.ForgetShown();
  platform_.dialogs.WillPress(Answer::kNo);
  output_.Print(letter);
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre(HasSubstr("Print it anyway?")));

  letter.rtfLetter.SetText("It is a brace.");
  platform_.dialogs.WillCancel();
  output_.Email(letter);
  EXPECT_EQ(platform_.dialogs.shown().size(), 2U);
  EXPECT_EQ(platform_.dialogs.shown()[1].kind, ShownBox::Kind::kText);
  ForgetRun(run.log, platform_.clock);
  EXPECT_EQ(HeldReason(Data(), run.held[0].file), "");
}

TEST_F(LetterOutputTest, NotesInItsRunThatAHeldLetterHasLeft) {
  SaveTemplate("Notice", "Dear <<Tenant Nmae>>");
  const struct {
    Destination destination;
    const char* printer;  // of the run
    Destination by;       // how its letters leave: here always from the window, as PDFs
    const char* noted;    // empty: they stay held
  } cases[] = {{Destination::kPrinter, "Print to PDF", Destination::kPrinter, "printed"},
               {Destination::kPrinter, "Laser", Destination::kPrinter, ""},
               {Destination::kEmail, "", Destination::kPrinter, ""},
               {Destination::kEmail, "", Destination::kEmail, "mailed"},
               {Destination::kFolder, "", Destination::kPrinter, ""}};
  for (const auto& c : cases) {
    GenerationRequest request;
    request.template_kind = kTemplates;
    request.template_name = "Notice";
    request.destination = c.destination;
    request.printer = c.printer;
    request.recipients = {{"Mei Huang", "T00007"}, {"Tama O'Brien", "T00006"}};
    GenerationObserver unseen;
    const GenerationSummary run = GenerateSelection(session_, request, unseen, printers_.IfRead());
    ASSERT_EQ(run.held.size(), 2U);
    tree_.RefreshTree();
    for (const LetterReport& held : run.held) {
      EXPECT_EQ(FindUnfinishedRuns(Data()).size(), 1U);
      if (c.by == Destination::kEmail) {
        NoteHandedOver(Data(), held.file, {c.by, "someone@example.test"}, platform_.clock);
        continue;
      }
      ASSERT_TRUE(letters_.OpenListed(held.file));
      platform_.dialogs.WillPress(Answer::kYes).WillChoose(0);
      EXPECT_TRUE(output_.Print(letters_.Active()->letter()));
    }
    const bool done = *c.noted != '\0';
    EXPECT_EQ(FindUnfinishedRuns(Data()).size(), done ? 0U : 1U);
    EXPECT_EQ(HeldReason(Data(), run.held[0].file).empty(), done);
    const std::string log = ReadWholeFile(run.log);
    if (done) {
      EXPECT_THAT(log, HasSubstr("\n" + std::string(c.noted) + "\t2\tTama O'Brien\t"));
      EXPECT_THAT(log, HasSubstr("\ncomplete\t"));
    } else {
      ForgetRun(run.log, platform_.clock);
    }
  }
}

// T00005 and T00006 are called Tama O'Brien; the latter has no address.
class NamesakesLetters : public LetterOutputTest {
 protected:
  // Letters of a template to both of them.
  GenerationSummary Make(const char* name, const char* text, GenerationRequest request = {}) {
    SaveTemplate(name, text);
    request.template_kind = kTemplates;
    request.template_name = name;
    request.recipients = {{"Tama O'Brien", "T00005"}, {"Tama O'Brien", "T00006"}};
    GenerationObserver unseen;
    GenerationSummary run = GenerateSelection(session_, request, unseen, printers_.IfRead());
    tree_.RefreshTree();
    return run;
  }
  void Exchange(const char* one, const char* other) {
    std::filesystem::rename(folder_ / one, folder_ / "aside");
    std::filesystem::rename(folder_ / other, folder_ / one);
    std::filesystem::rename(folder_ / "aside", folder_ / other);
  }
  LetterWindow& Open(const char* file) {
    tree_.RefreshTree();
    EXPECT_TRUE(letters_.OpenListed(folder_ / file)) << file;
    return *letters_.Active();
  }
  void Close() {
    letters_.Active()->CloseNow();
    QCoreApplication::processEvents();
  }

  const std::filesystem::path folder_ = Data() / "Tama O'Brien";
};

TEST_F(NamesakesLetters, AreMailedToTheTenancyThatTheyWereMadeForOrThatIsAskedFor) {
  const char* const code = "<<Tenant Code>>";
  for (const char* name : {"Notice", "Notice(2)", "Exchanged", "Typed", "Elsewhere"}) {
    EXPECT_EQ(Make(name, code).done, 2U);
  }
  Make("Same", "Dear <<Tenant Name>>");
  Exchange("Exchanged.rtf", "Exchanged(1).rtf");
  std::filesystem::copy_file(folder_ / "Notice(1).rtf", folder_ / "Copied.rtf");
  std::filesystem::copy_file(folder_ / "Same.rtf", folder_ / "Same again.rtf");
  WriteWholeFile(folder_ / "Elsewhere.rtf", "{\\rtf1 changed by another program}");
  WriteWholeFile(folder_ / "By hand.rtf", "{\\rtf1 x}");
  for (const char* name : {"Typed.rtf", "Typed(1).rtf"}) {
    frmLetter& letter = Open(name).letter();
    letter.rtfLetter.SetTextRTF("{\\rtf1 changed here, " + letter.members().TenantCode + "}");
    EXPECT_TRUE(letter.Save());
    Close();
  }
  Exchange("Typed.rtf", "Typed(1).rtf");
  const struct {
    const char *file, *code;
    int chosen;  // -1: nobody is asked for the tenancy
    const char *asked, *subject;
  } cases[] = {
      {"Notice.rtf", "T00005", -1, " at tenant5@example.test", "Notice"},
      {"Notice(1).rtf", "T00006", -1, "Tama O'Brien (T00006, ", "Notice"},
      {"Notice(2).rtf", "T00005", -1, "Tama O'Brien (T00005, ", "Notice(2)"},
      {"Exchanged.rtf", "T00006", -1, "Tama O'Brien (T00006, ", "Exchanged"},
      {"Exchanged(1).rtf", "T00005", -1, "Tama O'Brien (T00005, ", "Exchanged"},
      {"Typed.rtf", "T00006", -1, "Tama O'Brien (T00006, ", "Typed"},
      {"Typed(1).rtf", "T00005", -1, "Tama O'Brien (T00005, ", "Typed"},
      {"Copied.rtf", "T00006", -1, "Tama O'Brien (T00006, ", "Copied"},
      {"Same.rtf", "T00005", -1, "Tama O'Brien (T00005, ", "Same"},
      {"Same(1).rtf", "T00006", -1, "Tama O'Brien (T00006, ", "Same"},
      {"Same again.rtf", "T00006", 0, "Tama O'Brien (T00006, ", "Same again"},
      {"Elsewhere.rtf", "T00005", 1, "Tama O'Brien (T00005, ", "Elsewhere"},
      {"By hand.rtf", "T00006", 0, "Tama O'Brien (T00006, ", "By hand"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    Open(c.file);
    EXPECT_EQ(InFront().TenantCode, c.chosen < 0 ? c.code : "");
    platform_.dialogs.ForgetShown();
    if (c.chosen >= 0) platform_.dialogs.WillChoose(static_cast<std::size_t>(c.chosen));
    platform_.dialogs.WillCancel();
    EXPECT_FALSE(output_.Email(letters_.Active()->letter()));
    const auto& shown = platform_.dialogs.shown();
    ASSERT_EQ(shown.size(), c.chosen < 0 ? 1U : 2U);
    EXPECT_EQ(InFront().TenantCode, c.code);
    EXPECT_THAT(shown.back().text, HasSubstr(c.asked));
    EXPECT_EQ(shown.back().default_answer, c.subject);
    if (c.chosen >= 0) {
      EXPECT_EQ(shown[0].items.size(), 2U);
      EXPECT_EQ(shown[0].default_item, Dialogs::kNoItem);
    }
    // Once somebody has said for whom it is, that is kept with what is saved.
    EXPECT_TRUE(letters_.Active()->letter().Save());
    Close();
    Open(c.file);
    EXPECT_EQ(InFront().TenantCode, c.code);
    Close();
  }
}

// The content is somebody's also when the name that two had is corrected, and when the file is
// moved.
TEST_F(NamesakesLetters, AskForWhomTheyAreInAnothersFolder) {
  Make("Notice", "<<Tenant Code>>");
  Make("General", "Dear all");
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.template_name = "Notice";
  const std::string name = session_.caches.FindTenant("T00001")->KeyName;
  request.recipients = {{name, "T00001"}};
  GenerationObserver unseen;
  ASSERT_EQ(GenerateSelection(session_, request, unseen).done, 1U);
  const std::filesystem::path moved = Data() / "Mei Huang/Notice.rtf";
  std::filesystem::create_directories(moved.parent_path());
  std::filesystem::rename(Data() / name / "Notice.rtf", moved);
  std::filesystem::copy_file(folder_ / "General.rtf", moved.parent_path() / "General.rtf");
  session_.caches.FindTenant("T00006")->KeyName = "Tama Brown";
  const struct {
    std::filesystem::path file;
    std::string made_for;  // empty: nobody is asked
    const char* chosen;    // the tenancy that the answer gives
    std::size_t answer;
  } cases[] = {{folder_ / "Notice.rtf", "", "T00005", 0},
               {folder_ / "Notice(1).rtf", "T00006 Tama Brown", "T00005", 1},
               {moved, "T00001 " + name, "T00001", 0},
               {moved.parent_path() / "General.rtf", "", "T00007", 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    for (const bool edited : {false, true}) {
      tree_.RefreshTree();
      ASSERT_TRUE(letters_.OpenListed(c.file));
      const bool asked = !c.made_for.empty();
      EXPECT_EQ(WhichRecipient(session_, InFront()), asked ? "made for " + c.made_for : "");
      frmLetter& letter = letters_.Active()->letter();
      platform_.dialogs.ForgetShown();
      if (asked) {
        platform_.dialogs.WillCancel();
        EXPECT_FALSE(output_.Email(letter));
        EXPECT_THAT(platform_.dialogs.shown().back().title,
                    HasSubstr("made for " + c.made_for + ", "));
        EXPECT_EQ(platform_.dialogs.shown().back().default_item, Dialogs::kNoItem);
        EXPECT_EQ(platform_.dialogs.shown().size(), 1U);
        EXPECT_EQ(letter.EmailAddress(), "");
      }
      if (!edited && asked) {
        // What is corrected here is still for the one that it was made for.
        letter.rtfLetter.SetText("corrected for " + c.made_for);
        EXPECT_TRUE(letter.Save());
      } else {
        if (asked) platform_.dialogs.WillChoose(c.answer);
        platform_.dialogs.WillCancel();
        EXPECT_FALSE(output_.Email(letter));
        EXPECT_EQ(letter.members().TenantCode, c.chosen);
        EXPECT_EQ(letter.EmailAddress(), session_.caches.FindTenant(c.chosen)->Email);
      }
      Close();
    }
  }
}

TEST_F(NamesakesLetters, DoNotGoToTheOtherOneWhenTheirRunIsResumed) {
  printers_.Load([this] {
    return printing::Printers::Create({printing::kPdfPrinterName, Data() / "printed.pdf"});
  });
  GenerationRequest request;
  request.destination = Destination::kPrinter;
  request.printer = printing::kPdfPrinterName;
  for (const char* text : {"<<Tenant Code>>", "<<Tenant Code>> <<Tenant Nmae>>"}) {  // held back
    SCOPED_TRACE(text);
    const std::filesystem::path path = Make("Notice", text, request).log;
    // As a kill before the printing leaves it.
    const std::string log = ReadWholeFile(path);
    const std::size_t printing = log.find("\nprinting\t");
    if (printing != std::string::npos) WriteWholeFile(path, log.substr(0, printing + 1));
    GenerationObserver unseen;
    const auto resume = [&] {
      return Generation(session_, AfterError::kNextRecipient, unseen, printers_.IfRead())
          .Resume(path, [](std::size_t) { return Resuming::kAsItIs; });
    };
    Exchange("Notice.rtf", "Notice(1).rtf");
    const GenerationSummary exchanged = resume();
    EXPECT_EQ(exchanged.done, 0U);
    Exchange("Notice.rtf", "Notice(1).rtf");
    EXPECT_EQ(resume().done, 2U);
    std::filesystem::remove_all(folder_);
  }
}

// Answers the print dialog with pages.
class PagesDialogs : public ScriptedDialogs {
 public:
  std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>&,
                                           const PrintChoice& offered) override {
    shown.push_back(offered.pages ? PageRangesText(*offered.pages) : "none");
    EXPECT_EQ(offered.page_count, 1);
    PrintChoice choice = offered;
    choice.pages = ParsePageRanges(shown.size() == 1 ? "9" : "1");
    return choice;
  }
  std::vector<std::string> shown;
};

TEST_F(LetterOutputTest, AsksAgainForPagesThatTheLetterHas) {
  PagesDialogs dialogs;
  const Platform fake = platform_.Parts();
  Session session(Platform{fake.clock, dialogs, fake.locale, fake.registry, fake.workspace,
                           fake.program_folder, fake.state_folder});
  LetterOutput output(session, printers_, letters_, AtOnce);
  OpenLetter("Dear Mei", "Tenant Letter");
  EXPECT_TRUE(output.Print(letters_.Active()->letter()));
  EXPECT_THAT(dialogs.shown, ElementsAre("", "9"));
  EXPECT_THAT(dialogs.Texts(), ElementsAre(HasSubstr("has 1 page, and none of those")));
}

}  // namespace
}  // namespace tenora
