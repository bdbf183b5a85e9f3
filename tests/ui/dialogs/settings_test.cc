#include <gmock/gmock.h>

#include <QLabel>
#include <QTabWidget>
#include <QThreadPool>
#include <algorithm>

#include "platform/runtime/clock.h"
#include "platform/runtime/format.h"
#include "platform/server/branch_import.h"
#include "support/postgres_server.h"
#include "support/smtp_server.h"
#include "ui/dialogs/dialogs_fixture.h"
#include "ui/dialogs/frm_settings.h"
#include "ui/dialogs/settings_tests.h"

namespace tenora {
namespace {

using testing::HasSubstr;

TEST(TestDatabase, SaysWhatIsThereOrWhatIsWrong) {
  const test::ScratchFolder folder;
  const auto path = folder / "property.mdb";
  EXPECT_THAT(TestDatabase(path).text, HasSubstr("There is no file"));
  EXPECT_THAT(TestDatabase(folder.path()).text, HasSubstr("is a folder"));
  EXPECT_THAT(TestDatabase({}).text, HasSubstr("full path"));
  WriteWholeFile(path, "not a database");
  EXPECT_FALSE(TestDatabase(path).good);
  WriteWholeFile(path, ReadWholeFile(test::SampleDatabase()));
  EXPECT_TRUE(TestDatabase(path).good);
  EXPECT_THAT(TestDatabase(path).text, HasSubstr("42 tenancies, 5 of them closed"));
  std::filesystem::rename(path, folder / "other.mdb");
  EXPECT_TRUE(TestDatabase(folder / "OTHER.MDB").good);

  test::PostgresServer::Get().MakeDatabase("rents");
  server::ImportBranch(*server::Connection::Open("rents", std::chrono::seconds(0)), "Old Mill",
                       test::SampleDatabase(), server::LayoutChange::kTake);
  const TestResult branch = TestDatabase("service=rents branch='Old Mill'");
  EXPECT_TRUE(branch.good);
  EXPECT_THAT(branch.text,
              AllOf(HasSubstr(test::PostgresServer::Get().folder()), HasSubstr("\"Old Mill\""),
                    HasSubstr(FormatDate(Clock().Now(), "d mmmm yyyy at hh:")),
                    HasSubstr("42 tenancies, 5 of them closed")));
  for (const auto& [location, problem] : {
           std::pair("service=rents branch=South", "no branch 'South'"),
           {"service=nowhere branch=North", "'nowhere'"},
           {"service=rents", "names no branch"},
       }) {
    const TestResult refused = TestDatabase(location);
    EXPECT_FALSE(refused.good) << location;
    EXPECT_THAT(refused.text, HasSubstr(problem)) << location;
  }
}

TEST(TestMailServer, LogsInAndSendsNothing) {
  const test::SmtpServer server("plain");
  mail::Server local;
  local.host = "localhost";
  local.port = server.port();
  EXPECT_TRUE(TestMailServer(local).good) << TestMailServer(local).text;
  EXPECT_THAT(server.Messages(), testing::IsEmpty());
  EXPECT_FALSE(TestMailServer({}).good);
  mail::Server refused = local;
  refused.user = "office";
  refused.password = "s3cret!";
  const TestResult result = TestMailServer(refused);
  EXPECT_FALSE(result.good);
  EXPECT_THAT(result.text, testing::Not(HasSubstr("s3cret!")));
}

class SettingsTest : public DialogsTest {};

TEST_F(SettingsTest, TestsTheLocationWhenItIsEnteredAndStoresIt) {
  machine_.InstallSampleDatabase();
  session_.options.SmtpPassword = "s3cret!";
  frmSettings dialog(session_);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  Press(dialog, "optNetworked");
  const std::string path = (machine_.ProgramFolder() / "property.mdb").string();
  Find<QLineEdit>(dialog, "txtDatabaseLocation")->setFocus();
  Type(dialog, "txtDatabaseLocation", path.c_str());
  QTest::keyClick(Find<QLineEdit>(dialog, "txtDatabaseLocation"), Qt::Key_Tab);
  QThreadPool::globalInstance()->waitForDone();
  QCoreApplication::processEvents();
  EXPECT_THAT(Find<QLabel>(dialog, "lblTestDatabase")->text().toStdString(), HasSubstr("42"));
  for (const QLabel* label : dialog.findChildren<QLabel*>())
    EXPECT_FALSE(label->text().contains("s3cret!"));
  Type(dialog, "txtDollar", "Pounds");
  Press(dialog, "chkUnderline");
  Press(dialog, "cmdOK");
  EXPECT_EQ(Stored("Settings", "Networkable"), "1");
  EXPECT_EQ(Stored("Settings", "DatabaseLocation"), path);
  EXPECT_EQ(Stored("Cheque", "Dollar"), "Pounds");
  EXPECT_EQ(Stored("Mail\\Spelling", "Underline"), "0");
}

TEST_F(SettingsTest, TheExampleOfAFilesNameFollowsTheTypingAndOnlySoundPatternsAreKept) {
  frmSettings dialog(session_);
  const auto says = [&](const char* text) {
    return std::ranges::any_of(dialog.findChildren<QLabel*>(), [&](const QLabel* label) {
      return label->text().contains(QString::fromUtf8(text));
    });
  };
  EXPECT_TRUE(says("For example Rent review.rtf"));
  Type(dialog, "txtTenantFileNames", "{Number} {Tenant Name}");
  EXPECT_TRUE(says("For example 07 Jane Smith.rtf"));
  Type(dialog, "txtOwnerFileNames", "{Tenant Name}");
  EXPECT_TRUE(says("There is no \"Tenant Name\" for a file's name"));
  Press(dialog, "cmdOK");
  EXPECT_EQ(Stored("Mail", "TenantFileNames"), "{Number} {Tenant Name}");
  EXPECT_EQ(Stored("Mail", "OwnerFileNames"), "not stored");
}

}  // namespace
}  // namespace tenora
