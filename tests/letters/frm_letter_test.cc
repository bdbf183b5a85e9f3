#include "letters/frm_letter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "support/counting_host.h"
#include "support/errors.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FrmLetterTest : public testing::Test {
 protected:
  FrmLetterTest() {
    machine_.InstallSampleDatabase();
    fs::create_directory(Data() / "Templates");
    WriteWholeFile(Template(), R"({\rtf1\ansi Dear <<Tenant Name>>\par})");
  }
  void MakeTenantLetter() {
    session_.database.OpenDatabase();
    session_.caches.CacheTenants(session_.database);
    session_.database.CloseDatabase();
    letter_.rtfLetter.SetText("Code: ");
    letter_.members().Kind = kTenantLetter;
    letter_.members().TenantCode = "T00001";
    letter_.members().Caption = "as it was";
    letter_.rtfLetter.Select(6, 0);
  }
  // The letter's text without the end of its last paragraph.
  std::string Shown() const {
    std::string text = letter_.rtfLetter.Text();
    while (text.ends_with("\r\n")) text.resize(text.size() - 2);
    return text;
  }
  fs::path Data() const { return machine_.ProgramFolder(); }
  fs::path Template() const { return Data() / "Templates/Notice.rtf"; }
  std::vector<std::string> FilesOf(const std::string& recipient) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(Data() / recipient)) {
      names.push_back(entry.path().filename());
    }
    return names;
  }
  std::vector<std::string> Boxes() const { return machine_.dialogs.Texts(); }

  test::FakePlatform machine_;
  Session session_{machine_.Parts()};
  test::CountingHost host_;
  frmLetter letter_{session_, host_};
};

TEST_F(FrmLetterTest, LoadingRecordsTheFileAndClearsTheChangedFlag) {
  letter_.members().LetterTitle = "Notice";
  letter_.rtfLetter.SetText("changed");
  EXPECT_TRUE(letter_.members().Changed);
  letter_.LoadLetter(Template(), kTemplates);
  EXPECT_FALSE(letter_.members().Changed);
  EXPECT_EQ(letter_.members().FilePath, Template());
  EXPECT_EQ(letter_.members().Caption, "Notice : Templates");
  EXPECT_EQ(Shown(), "Dear <<Tenant Name>>");

  WriteWholeFile(Data() / "plain.txt", "{\\b plain}");
  letter_.LoadLetter(Data() / "plain.txt", kTemplates, "TXT");
  EXPECT_THAT(Shown(), HasSubstr("{\\b plain}"));

  letter_.StartNew(kOwnerTemplates);
  EXPECT_EQ(letter_.members().FilePath, "");
  EXPECT_THAT(letter_.members().Caption, testing::EndsWith(" : New Owner Templates"));
  EXPECT_FALSE(letter_.members().Changed);
}

TEST_F(FrmLetterTest, AFailedLoadNamesTheFileAndKeepsTheLetter) {
  letter_.LoadLetter(Template(), kTemplates);
  const auto load = [&] { letter_.LoadLetter(Data() / "Templates/None.rtf", kOwnerTemplates); };
  EXPECT_THAT(test::ErrorOf(load),
              testing::AllOf(testing::StartsWith("53 - "), HasSubstr("None.rtf")));
  EXPECT_EQ(letter_.members().FilePath, Template());
  EXPECT_EQ(letter_.members().Kind, kTemplates);
}

TEST_F(FrmLetterTest, SavesUnderTheFirstFreeNumberAndOverwritesNothing) {
  letter_.members().RecipientName = "Jane Smith";
  letter_.members().LetterTitle = "Notice";
  for (const char* text : {"one", "two", "three"}) {
    letter_.rtfLetter.SetText(text);
    EXPECT_TRUE(letter_.SaveTenantTemplate());
    EXPECT_FALSE(letter_.members().Changed);
  }
  EXPECT_EQ(host_.saves, 3);
  EXPECT_THAT(FilesOf("Jane Smith"),
              UnorderedElementsAre("Notice.rtf", "Notice(1).rtf", "Notice(2).rtf"));
  EXPECT_EQ(letter_.members().FilePath, Data() / "Jane Smith/Notice(2).rtf");
  EXPECT_THAT(ReadWholeFile(Data() / "Jane Smith/Notice.rtf"), HasSubstr("one"));

  // A gap is filled, and a dangling link is no free name.
  fs::remove(Data() / "Jane Smith/Notice(1).rtf");
  fs::create_symlink("/nowhere/x", Data() / "Jane Smith/Notice(3).rtf");
  EXPECT_TRUE(letter_.SaveTenantTemplate());
  EXPECT_EQ(letter_.members().FilePath, Data() / "Jane Smith/Notice(1).rtf");
  EXPECT_TRUE(letter_.SaveTenantTemplate());
  EXPECT_EQ(letter_.members().FilePath, Data() / "Jane Smith/Notice(4).rtf");
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(FrmLetterTest, SavesNothingThroughALinkOutOfTheDataFolder) {
  const test::ScratchFolder elsewhere;
  fs::create_directory_symlink(elsewhere.path(), Data() / "Jane Smith");
  letter_.members().Kind = kTenantLetter;
  letter_.members().RecipientName = "Jane Smith";
  letter_.members().LetterTitle = "Notice";
  EXPECT_FALSE(letter_.SaveTenantTemplate());
  machine_.dialogs.WillType("Notice");
  EXPECT_FALSE(letter_.SaveAs());
  EXPECT_THAT(Boxes().front(), HasSubstr("Jane Smith is a link"));
  EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST_F(FrmLetterTest, AFailedSaveNamesTheFileAndLeavesNothing) {
  WriteWholeFile(Data() / "Jane Smith", "in the way");
  letter_.members().RecipientName = "Jane Smith";
  letter_.members().LetterTitle = "Notice";
  letter_.members().FilePath = "before";
  EXPECT_FALSE(letter_.SaveTenantTemplate());
  EXPECT_THAT(Boxes(), ElementsAre(HasSubstr((Data() / "Jane Smith").string())));
  EXPECT_EQ(machine_.dialogs.shown().at(0).title, "frmLetter - SaveTenantTemplate");
  EXPECT_EQ(letter_.members().FilePath, "before");
}

// A new folder in the place of one on a server that is not connected would hide the letters there.
TEST_F(FrmLetterTest, MakesNoNewDataFolderWhereThatIsAway) {
  fs::rename(Data(), machine_.folder / "gone");
  letter_.members().LetterTitle = "Notice";
  for (const std::string_view kind : {kTemplates, kOwnerTemplates, kTenantLetter}) {
    letter_.members().Kind = kind;
    letter_.members().RecipientName = kind == kTenantLetter ? "Jane Smith" : kind;
    letter_.rtfLetter.SetText("precious");
    machine_.dialogs.WillType("Notice");
    EXPECT_FALSE(letter_.SaveAs()) << kind;
    EXPECT_TRUE(letter_.members().Changed);
    EXPECT_EQ(host_.last_error, "76 - Path not found: " + Data().string());
  }
  machine_.dialogs.ForgetShown();
  EXPECT_FALSE(letter_.SaveTenantTemplate());
  EXPECT_THAT(Boxes(), ElementsAre("76 - Path not found: " + Data().string()));
  session_.database.DataErrorReport("Execute SQL", RuntimeError(3075, "x", "DAO.Database"));
  EXPECT_FALSE(fs::exists(Data()));
  fs::rename(machine_.folder / "gone", Data());
  fs::remove_all(Data() / "Templates");
  letter_.members().Kind = letter_.members().RecipientName = kTemplates;
  machine_.dialogs.WillType("Notice");
  EXPECT_TRUE(letter_.SaveAs());
  EXPECT_TRUE(fs::exists(Template()));
}

TEST_F(FrmLetterTest, InsertsACodeInATemplateAndItsValueInALetter) {
  letter_.LoadLetter(Template(), kTemplates);
  letter_.rtfLetter.Select(5, 15);
  letter_.InsertItem("TCustom:Pet");
  EXPECT_EQ(Shown(), "Dear <<TCustom:Pet>>");
  EXPECT_EQ(host_.focused, 1);

  MakeTenantLetter();
  letter_.InsertItem("Tenant Name");
  EXPECT_THAT(Shown(), testing::StartsWith("Code: Noor Whaanga"));
  EXPECT_EQ(letter_.rtfLetter.SelStart(), 18);
  EXPECT_EQ(letter_.members().Caption, "as it was");
  EXPECT_FALSE(letter_.members().Inserting);
}

TEST_F(FrmLetterTest, InsertsAnOwnersValueInAnOwnerLetter) {
  OwnerRecord& owner = session_.caches.Owners.emplace_back();
  owner.Name = "Jane";
  owner.FeeValue = 7.25;
  letter_.rtfLetter.SetText("Fee: ");
  letter_.members().Kind = kOwnerLetter;
  letter_.members().RecipientName = "Jane";
  letter_.rtfLetter.Select(5, 0);
  letter_.InsertItem("Fee Value");
  EXPECT_EQ(Shown(), "Fee: 7.25");
  EXPECT_EQ(letter_.rtfLetter.SelStart(), 9);
}

TEST_F(FrmLetterTest, TakesPromptMessagesOnlyInTemplates) {
  letter_.LoadLetter(Template(), kTemplates);
  letter_.rtfLetter.Select(0, 0);
  machine_.dialogs.WillType("Why {so}?").WillType("").WillCancel();
  for (int i = 0; i < 3; ++i) letter_.InsertItem("Prompt Message");
  EXPECT_EQ(Shown(),
            "<<?Why {so}?"
            "?>>Dear <<Tenant Name>>");
  EXPECT_FALSE(letter_.members().Inserting);

  MakeTenantLetter();
  machine_.dialogs.ForgetShown();
  letter_.InsertItem("Prompt Message");
  EXPECT_THAT(Boxes(), ElementsAre("Prompt messages are only available in template letters."));
  EXPECT_THAT(Shown(), testing::StartsWith("Code: "));
  EXPECT_TRUE(letter_.members().Inserting);  // the refusal leaves it set
}

TEST_F(FrmLetterTest, LeavesTheFutureDateToItsDialog) {
  letter_.LoadLetter(Template(), kTemplates);
  host_.choose_future_date = [](RichTextBox& editor) {
    editor.Select(0, 0);
    editor.SetSelText("<<FutureDate:1:Days>>");
  };
  letter_.InsertItem("Future Date");
  EXPECT_EQ(Shown(), "<<FutureDate:1:Days>>Dear <<Tenant Name>>");
  host_.choose_future_date = [](RichTextBox&) { throw StandardError(5); };
  letter_.InsertItem("Future Date");
  EXPECT_FALSE(letter_.members().Inserting);
  EXPECT_THAT(Boxes(), IsEmpty());
}

}  // namespace
}  // namespace tenora
