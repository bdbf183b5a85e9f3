#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "letters/frm_letter.h"
#include "letters/letter/embedded_file.h"
#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "support/counting_host.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class LetterCommandsTest : public testing::Test {
 protected:
  LetterCommandsTest() { letter_.members().Kind = letter_.members().RecipientName = kTemplates; }
  fs::path Data() const { return machine_.ProgramFolder(); }
  ScriptedDialogs& Dialogs() { return machine_.dialogs; }
  const ShownBox& LastBox() const { return machine_.dialogs.shown().back(); }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
  test::CountingHost host_{"Templates"};
  frmLetter letter_{session_, host_};
};

TEST_F(LetterCommandsTest, FindsFromTheStartAndAgainBehindTheCaret) {
  letter_.rtfLetter.SetText("Rent, the rent, RENT");
  Dialogs().WillType("rent");
  letter_.Find();
  EXPECT_EQ(letter_.rtfLetter.SelStart(), 0);
  EXPECT_EQ(letter_.rtfLetter.SelLength(), 4);
  letter_.FindAgain();
  EXPECT_EQ(letter_.rtfLetter.SelStart(), 10);
  letter_.FindAgain();
  EXPECT_EQ(letter_.rtfLetter.SelStart(), 16);
  letter_.FindAgain();
  EXPECT_EQ(LastBox().text, "No more occurances found.");
  EXPECT_EQ(LastBox().icon, Icon::kInformation);
  Dialogs().WillType("lease");
  letter_.Find();
  EXPECT_EQ(LastBox().text, "Search text is not found.");
  EXPECT_EQ(Dialogs().shown().at(2).default_answer, "rent");
  // The empty answer replaces the text, so that there is nothing to find again.
  Dialogs().WillCancel();
  letter_.Find();
  const std::size_t boxes = Dialogs().shown().size();
  letter_.FindAgain();
  EXPECT_EQ(Dialogs().shown().size(), boxes);
}

TEST_F(LetterCommandsTest, SavesUnderTheTitleInTheLettersOwnFolder) {
  const std::string long_title(300, 'x');
  const struct {
    std::string kind, recipient, title, file;
  } cases[] = {
      {"Templates", "Templates", "Notice", "Templates/Notice.rtf"},
      {"Owner Templates", "", "Notice.rtf", "Owner Templates/Notice.rtf"},
      {"Templates", "Templates", "Notice.RTF", "Templates/Notice.RTF.rtf"},
      {"Templates", "Templates", "../../out", "Templates/__-..-out"},
      {"Tenant Letter", "Jane Smith", "a/b", "Jane Smith/a-b.rtf"},
      {"Tenant Letter", "Templates", "Notice", "Templates~"},
      {"Tenant Letter", "../x", "Notice", "__-x~"},
      {"Templates", "Templates", long_title, "Templates/" + std::string(120, 'x') + ".rtf"},
  };
  for (const auto& c : cases) {
    letter_.members().Kind = c.kind;
    letter_.members().RecipientName = c.recipient;
    letter_.members().FilePath.clear();
    letter_.rtfLetter.SetText("text of " + c.title);
    Dialogs().WillType(c.title);
    EXPECT_TRUE(letter_.Save());
    const fs::path saved = letter_.members().FilePath;
    EXPECT_THAT(fs::relative(saved, Data()).string(), testing::StartsWith(c.file));
    EXPECT_EQ(fs::canonical(saved).parent_path().parent_path(), fs::canonical(Data()));
    EXPECT_THAT(ReadWholeFile(saved), testing::HasSubstr("text of"));
    EXPECT_FALSE(letter_.members().Changed);
    EXPECT_EQ(LastBox().text, "Enter the name for this " +
                                  std::string(c.recipient == "Templates" ? "Templates" : "Letter"));
  }
  EXPECT_EQ(host_.refreshed, 8);
  EXPECT_THAT(host_.names_asked,
              testing::ElementsAre(testing::StartsWith("../../out -> __-..-out~"), "a/b -> a-b",
                                   long_title + " -> " + std::string(120, 'x')));
  Dialogs().WillCancel();
  EXPECT_FALSE(letter_.SaveAs());
  EXPECT_EQ(letter_.members().LetterTitle, "");
}

TEST_F(LetterCommandsTest, KeepsALetterThatCouldNotBeSavedMarkedAsChanged) {
  WriteWholeFile(Data() / "Templates", "a file where the folder should be");
  letter_.rtfLetter.SetText("precious");
  letter_.members().Caption = "Notice : Templates";
  Dialogs().WillPress(Answer::kYes).WillType("Notice");
  EXPECT_FALSE(letter_.CheckSave());
  EXPECT_EQ(Dialogs().shown().front().title, "Notice : Templates");
  EXPECT_EQ(Dialogs().shown().front().buttons, Buttons::kYesNoCancel);
  EXPECT_EQ(host_.failed, 1);
  EXPECT_TRUE(letter_.members().Changed);
  EXPECT_EQ(letter_.members().FilePath, "");
  EXPECT_EQ(Dialogs().shown().size(), 2u);
  Dialogs().WillPress(Answer::kCancel);
  EXPECT_FALSE(letter_.CheckSave());
  Dialogs().WillPress(Answer::kNo);
  EXPECT_TRUE(letter_.CheckSave());
  fs::remove(Data() / "Templates");
  host_.may_replace = false;
  fs::create_directory(Data() / "Templates");
  WriteWholeFile(Data() / "Templates/Other.rtf", "another's");
  Dialogs().WillType("Other").WillCancel();
  EXPECT_FALSE(letter_.SaveAs());
  EXPECT_EQ(LastBox().default_answer, "Other");
  EXPECT_EQ(ReadWholeFile(Data() / "Templates/Other.rtf"), "another's");
}

// On a Windows server both would be one file.
TEST_F(LetterCommandsTest, AsksBeforeItReplacesALetterWhoseNameDiffersInCaseOnly) {
  const struct {
    const char *there, *own, *typed;  // own: the letter's file before; empty for a new letter
    const char* asked;
    bool may_replace;
    std::vector<std::string> files;
    const char* shown;  // the file's name then
  } cases[] = {
      {"Welcome", "", "welcome", "Welcome.rtf", true, {"Welcome.rtf"}, "Welcome.rtf"},
      {"Ärger", "", "ÄRGER.rtf", "Ärger.rtf", true, {"Ärger.rtf"}, "Ärger.rtf"},
      {"Welcome", "Notice", "WELCOME", "Welcome.rtf", false, {"Notice.rtf", "Welcome.rtf"}, ""},
      {"Welcome", "Welcome", "welcome", "", true, {"welcome.rtf"}, "welcome.rtf"},
      {"Welcome", "Welcome", "Welcome", "", true, {"Welcome.rtf"}, "Welcome.rtf"},
      {"Straße", "", "Strasse", "", true, {"Strasse.rtf", "Straße.rtf"}, "Strasse.rtf"},
      {"Welcome.old", "", "welcome", "", true, {"Welcome.old.rtf", "welcome.rtf"}, "welcome.rtf"},
  };
  const fs::path folder = Data() / "Templates";
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.there) + " <- " + c.typed);
    fs::remove_all(folder);
    fs::create_directory(folder);
    host_.replacements_asked.clear();
    host_.may_replace = c.may_replace;
    for (const std::string name : {c.there, c.own}) {
      if (!name.empty()) WriteWholeFile(folder / (name + ".rtf"), "{\\rtf1 old}");
    }
    letter_.StartNew(kTemplates);
    if (*c.own != '\0') letter_.LoadLetter(folder / (std::string(c.own) + ".rtf"), kTemplates);
    letter_.rtfLetter.SetText("mine");
    Dialogs().WillType(c.typed);
    if (!c.may_replace) Dialogs().WillCancel();
    EXPECT_EQ(letter_.SaveAs(), c.may_replace);
    std::vector<std::string> asked, files;
    if (*c.asked != '\0') asked.emplace_back(c.asked);
    EXPECT_EQ(host_.replacements_asked, asked);
    for (const auto& entry : fs::directory_iterator(folder)) {
      files.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(files, testing::UnorderedElementsAreArray(c.files));
    if (!c.may_replace) continue;
    EXPECT_EQ(fs::path(letter_.members().FilePath), folder / c.shown);
    EXPECT_THAT(ReadWholeFile(folder / c.shown), testing::HasSubstr("mine"));
  }
}

TEST_F(LetterCommandsTest, AsksBeforeItWritesOverAnothersChangeOfTheFile) {
  const fs::path path = Data() / "Notice.rtf";
  WriteWholeFile(path, "{\\rtf1 old}");
  letter_.LoadLetter(path, kTemplates);
  host_.may_overwrite = false;
  letter_.rtfLetter.SetText("mine");
  EXPECT_TRUE(letter_.Save());
  EXPECT_TRUE(letter_.Save());
  EXPECT_EQ(host_.overwrites_asked, 0);
  WriteWholeFile(path, "{\\rtf1 another's}");
  letter_.rtfLetter.SetText("mine again");
  EXPECT_FALSE(letter_.Save());
  EXPECT_EQ(ReadWholeFile(path), "{\\rtf1 another's}");
  EXPECT_TRUE(letter_.members().Changed);
  host_.may_overwrite = true;
  EXPECT_TRUE(letter_.Save());
  EXPECT_EQ(host_.overwrites_asked, 2);
  EXPECT_NE(ReadWholeFile(path).find("mine again"), std::string::npos);
}

TEST_F(LetterCommandsTest, DeletesOnlyWhatIsSavedAndConfirmed) {
  letter_.Delete();
  EXPECT_EQ(LastBox().text, "This Templates has not been saved yet so cant be deleted.");
  Dialogs().WillType("Notice");
  letter_.SaveAs();
  const fs::path file = letter_.members().FilePath;
  Dialogs().WillPress(Answer::kNo);
  letter_.Delete();
  EXPECT_TRUE(fs::exists(file));
  EXPECT_EQ(LastBox().text, "Delete Templates 'Notice' perminantly from disk?");
  EXPECT_EQ(LastBox().icon, Icon::kQuestion);
  letter_.members().Changed = true;
  Dialogs().WillPress(Answer::kYes);
  letter_.Delete();
  EXPECT_FALSE(fs::exists(file));
  EXPECT_FALSE(letter_.members().Changed);
  EXPECT_EQ(host_.closed, 1);
}

TEST_F(LetterCommandsTest, CarriesAWorkbookThatCanBeGotOutAgain) {
  const fs::path book = Data() / "Māhuta's {figures}.xls";
  std::string bytes("\xD0\xCF\x11\xE0");
  for (int i = 0; i < 1000; ++i) bytes += static_cast<char>(i * 7);
  WriteWholeFile(book, bytes);
  letter_.rtfLetter.SetText("before after");
  letter_.rtfLetter.Select(7, 0);
  Dialogs().WillType(book.string());
  letter_.InsertExcel();
  EXPECT_EQ(LastBox().title, "Excel Files");
  EXPECT_EQ(LastBox().filter, "Excel Files|*xls");
  EXPECT_EQ(letter_.rtfLetter.Text(),
            "before \xEF\xBF\xBC"
            "after");
  EXPECT_EQ(letter_.rtfLetter.SelStart(), 8);
  letter_.rtfLetter.SaveFile(Data() / "carried.rtf");
  letter_.LoadLetter(Data() / "carried.rtf", kTemplates);
  Dialogs().WillType((Data() / "out.xls").string());
  letter_.SaveEmbeddedFile();
  EXPECT_EQ(LastBox().default_answer, book.filename().string());
  EXPECT_EQ(ReadWholeFile(Data() / "out.xls"), bytes);
}

TEST_F(LetterCommandsTest, PutsPicturesAtTheCaretAndRefusesWhatIsNone) {
  const struct {
    std::string bytes;
    const char* word;  // null: refused
  } cases[] = {
      {std::string("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\1\0\0\0\1\0\0\0\1\0\x18\0\0\0\0\0\4\0"
                   "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\xFF\0\0\0",
                   58),
       "\\pngblip"},
      {std::string("\xD7\xCD\xC6\x9A\0\0\0\0\0\0\xE8\3\xE8\3\xE8\3\0\0\0\0\0\0"
                   "\1\0\x09\0\0\3\x0C\0\0\0\0\0\3\0\0\0\0\0\3\0\0\0\0\0",
                   46),
       "\\wmetafile8"},
      {"no picture at all", nullptr},
      {"", nullptr},
      {"BM", nullptr},
  };
  for (const auto& c : cases) {
    const fs::path file = Data() / "picture.bmp";
    WriteWholeFile(file, c.bytes);
    letter_.rtfLetter.SetText("text");
    Dialogs().ForgetShown();
    Dialogs().WillType(file.string());
    letter_.InsertPicture();
    EXPECT_EQ(Dialogs().shown().front().filter,
              "PNG and JPEG pictures|*.png;*.jpg;*.jpeg|"
              "All Image files|*.bmp;*.dib;*.wmf;*.emf;*.ico;*.cur;");
    if (c.word != nullptr) {
      EXPECT_THAT(letter_.rtfLetter.TextRTF(), testing::HasSubstr(c.word));
      EXPECT_EQ(Dialogs().shown().size(), 1u) << LastBox().text;
    } else {
      EXPECT_EQ(letter_.rtfLetter.Text(), "text");
      EXPECT_THAT(LastBox().text, testing::HasSubstr("picture.bmp"));
    }
  }
}

TEST(EmbeddedFile, ReadsNothingBeyondDamagedData) {
  const std::string group = EmbeddedFileGroup({"a.xls", "content"}, "{\\pict}");
  const std::size_t data = group.find("objdata ") + 8, end = group.find('}', data);
  for (std::size_t cut = data; cut < end; ++cut) {
    const auto file = ReadEmbeddedFile(group.substr(0, cut) + "}}");
    if (file) {
      EXPECT_EQ(file->bytes, "content");
    }
    std::string changed = group;
    changed[cut] = 'f';
    ReadEmbeddedFile(changed);
  }
  EXPECT_EQ(ReadEmbeddedFile("{\\object\\objemb}"), std::nullopt);
}

TEST_F(LetterCommandsTest, WrapsAtThePaperLessTheMargins) {
  host_.paper_width = 12240;
  session_.settings.SaveSettingText("Mail\\PrinterSetup", "LeftMargin", "1440");
  session_.settings.SaveSettingText("Mail\\PrinterSetup", "RightMargin", "800");
  letter_.ChangeWidth(true);
  EXPECT_EQ(host_.width, 10000);
  letter_.ChangeWidth(false);
  EXPECT_EQ(host_.width, 0);
  session_.settings.SaveSettingText("Mail\\PrinterSetup", "RightMargin", "2147483647");
  letter_.ChangeWidth(true);
  EXPECT_EQ(host_.width, 1440);
}

}  // namespace
}  // namespace tenora
