#include "ui/window/main/generate_letters.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QTimer>

#include "platform/server/branch_import.h"
#include "support/postgres_server.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class GenerateLettersTest : public WindowPartsTest {
 protected:
  GenerateLettersTest() {
    LoadTenants();
    QObject::connect(&runs_, &LetterRuns::Told,
                     [this](const QString& message) { told_ = message.toStdString(); });
  }
  void Select(const QString& key) {
    auto* shown = tree_.view().model();
    tree_.ExpandGroups({key.section('/', 0, 0)});
    const QModelIndexList found =
        shown->match(shown->index(0, 0), Qt::DisplayRole, key.section('/', 1), 1,
                     Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(found.size(), 1) << key.toStdString();
    tree_.view().setCurrentIndex(found.front());
  }
  // What the user does in the dialog once it is up: searches and ticks, presses the buttons. The
  // dialog's number of ticked recipients is checked to be what was wanted by what is made.
  void InDialog(const char* search, std::initializer_list<const char*> buttons) {
    QTimer::singleShot(0, &desk_, [=, this, names = std::vector<const char*>(buttons)] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      ++dialogs_;
      if (*search != '\0') dialog->findChild<QLineEdit*>("txtSearch")->setText(search);
      for (const char* name : names) dialog->findChild<QAbstractButton*>(name)->click();
    });
  }
  std::string NameOf(const char* code) {
    for (const TenantRecord& tenant : session_.caches.Tenants) {
      if (tenant.Reference == code) return tenant.KeyName;
    }
    throw std::runtime_error(code);
  }

  LetterRuns runs_{session_,  tree_,  letters_,
                   printers_, AtOnce, [](const std::filesystem::path&) { return false; },
                   &desk_};
  RentalDataLoad rental_data_{session_, AtOnce};
  QueuedRuns queued_runs_{session_, letters_, AtOnce, &desk_};
  GenerateLetters command_{session_,     tree_, letters_,     printers_,
                           rental_data_, runs_, queued_runs_, &desk_};
  std::string told_;
  int dialogs_ = 0;
};

TEST_F(GenerateLettersTest, SaysWhatToDoWhereThereIsNoTemplateToGenerateFrom) {
  command_.Generate();
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre("Select a template in the left menu section first."));
  letters_.StartNew("Templates");
  command_.Generate();
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("not in the library yet"));
  letters_.StartNew("Cheque");
  command_.Generate();
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("Select a template"));
}

TEST_F(GenerateLettersTest, MakesOneLetterFromTheSelectedTemplateAndOpensIt) {
  SaveTemplate("Notice", "Dear <<Tenant Name>>");
  Select("Templates/Notice");
  const std::string name = NameOf("T00001");
  InDialog(name.c_str(), {"cmdSelectAll", "optFolder", "cmdGenerate"});
  command_.Generate();
  EXPECT_EQ(dialogs_, 1);
  EXPECT_EQ(told_, "1 of 1 letters were made.");
  ASSERT_NE(letters_.Active(), nullptr);
  EXPECT_EQ(InFront().FilePath, Data() / name / "Notice.rtf");
  EXPECT_EQ(InFront().Kind, "Tenant Letter");
  EXPECT_THAT(letters_.Active()->editor().toPlainText().toStdString(), HasSubstr("Dear " + name));
}

// Namesakes share a folder; the letter that is opened is mailed to the one it was made for.
TEST_F(GenerateLettersTest, WritesToTheNamesakeWhomTheUserChose) {
  SaveTemplate("Notice", "<<Tenant Code>>");
  platform_.dialogs.WillChoose(0);
  InDialog("", {"optFolder", "cmdGenerate"});
  command_.GenerateFor(Entry("Tenants/<Closed Tenants>/T00006"));
  ASSERT_NE(letters_.Active(), nullptr);
  EXPECT_EQ(InFront().TenantCode, "T00006");
  EXPECT_EQ(letters_.Active()->editor().toPlainText().toStdString(), "T00006");
}

TEST_F(GenerateLettersTest, SavesTheTemplateInFrontBeforeItIsRead) {
  SaveTemplate("Notice", "old text");
  letters_.Open(Entry("Templates/Notice"));
  letters_.Active()->letter().rtfLetter.SetText("new text");
  // Unanswered, the question keeps the run from starting; not to save makes the letters of the
  // file.
  platform_.dialogs.WillPress(Answer::kCancel).WillPress(Answer::kYes);
  command_.Generate();
  EXPECT_EQ(dialogs_, 0);
  const std::string name = NameOf("T00001");
  InDialog(name.c_str(), {"cmdSelectAll", "optFolder", "cmdGenerate"});
  command_.Generate();
  EXPECT_EQ(dialogs_, 1);
  EXPECT_THAT(ReadWholeFile(Data() / name / "Notice.rtf"), HasSubstr("new text"));
}

TEST_F(GenerateLettersTest, TicksTheRecipientThatTheTreeNamesAndAsksForTheTemplate) {
  SaveTemplate("Arrears", "one");
  SaveTemplate("Notice", "two");
  const TreeModel::Entry recipient = Entry("Tenants/T00001");
  platform_.dialogs.WillChoose(1);
  InDialog("", {"optFolder", "cmdGenerate"});
  command_.GenerateFor(recipient);
  EXPECT_EQ(dialogs_, 1);
  EXPECT_TRUE(std::filesystem::exists(Data() / NameOf("T00001") / "Notice.rtf"));
  EXPECT_FALSE(std::filesystem::exists(Data() / NameOf("T00001") / "Arrears.rtf"));

  platform_.dialogs.WillCancel();
  command_.GenerateFor(recipient);
  EXPECT_EQ(dialogs_, 1);
  std::filesystem::remove_all(Data() / "Templates");
  command_.GenerateFor(recipient);
  EXPECT_EQ(platform_.dialogs.Texts().back(), "There is no template in the 'Templates' group yet.");
}

TEST_F(GenerateLettersTest, NeedsPrintersOnlyForPaper) {
  SaveTemplate("Notice", "Dear <<Tenant Name>>");
  Select("Templates/Notice");
  WindowPrinters unread(session_);
  GenerateLetters command(session_, tree_, letters_, unread, rental_data_, runs_, queued_runs_,
                          &desk_);
  const std::string name = NameOf("T00001");
  InDialog(name.c_str(), {"cmdSelectAll", "optFolder", "cmdGenerate"});
  command.Generate();
  EXPECT_TRUE(std::filesystem::exists(Data() / name / "Notice.rtf"));
  InDialog(name.c_str(), {"cmdSelectAll", "optPrinter", "cmdGenerate"});
  try {
    command.Generate();
    ADD_FAILURE() << "printed without printers";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.number(), error_number::kPrinterError);
  }
}

// What the template asks is asked once, before; the letters are the workers'.
TEST_F(GenerateLettersTest, PutsTheLettersIntoTheQueueOfTheServer) {
  auto& server = test::PostgresServer::Get();
  server.MakeDatabase("offices");
  server::ImportBranch(*server::Connection::Open("offices", std::chrono::seconds(0)), "North",
                       test::SampleDatabase(), server::LayoutChange::kTake);
  session_.settings.SaveSettingText("Settings", "Networkable", "1");
  session_.settings.SaveSettingText("Settings", "DatabaseLocation", "service=offices branch=North");
  ASSERT_TRUE(session_.ReloadRentalData());
  SaveTemplate("Notice", "<<?Who comes?>> to <<Tenant Name>>");
  SaveTemplate("Greeting", "<<?How is <<Tenant Name>>?>>");
  const std::string name = NameOf("T00001");

  Select("Templates/Greeting");
  QTimer::singleShot(0, &desk_, [] {
    QWidget* dialog = QApplication::activeModalWidget();
    const auto* box = dialog->findChild<QAbstractButton*>("chkWorkers");
    EXPECT_FALSE(box->isEnabled());
    EXPECT_THAT(box->toolTip().toStdString(), HasSubstr("another question for each letter"));
    dialog->close();
  });
  command_.Generate();

  Select("Templates/Notice");
  const auto put = [&](const char* answered_by) {
    InDialog(name.c_str(), {"cmdSelectAll", "optFolder", "chkWorkers", "cmdGenerate"});
    // Only once the first dialog is up: its own event loop takes the second shot.
    QTimer::singleShot(0, &desk_, [this, answered_by] {
      QTimer::singleShot(0, &desk_, [answered_by] {
        QWidget* ask = QApplication::activeModalWidget();
        ASSERT_EQ(ask->objectName(), "frmAnswers");
        ask->findChild<QLineEdit*>("txtAnswer1")->setText("Kahu");
        ask->findChild<QAbstractButton*>(answered_by)->click();
      });
    });
    command_.Generate();
  };
  const auto queued = [&] {
    return server.Run("offices",
                      "select r.state, r.as_of, a.answer, l.code from queue.run r join "
                      "queue.answer a on a.run = r.id join queue.letter l on l.run = r.id");
  };
  put("cmdCancel");
  EXPECT_EQ(queued(), "");
  put("cmdShow");
  EXPECT_EQ(queued(), "open|2026-11-21 09:30:00|Kahu|T00001\n");
  EXPECT_EQ(platform_.dialogs.Texts().back(),
            "Run 1: 1 letter is in the queue. Tools > Queue shows how it stands.");
  EXPECT_FALSE(std::filesystem::exists(Data() / name / "Notice.rtf"));
}

}  // namespace
}  // namespace tenora
