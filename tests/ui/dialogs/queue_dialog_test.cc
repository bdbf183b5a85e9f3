// The window of the queue, over a real server.
#include <gmock/gmock.h>

#include <QTreeWidget>
#include <functional>

#include "platform/runtime/files.h"
#include "support/postgres_server.h"
#include "ui/dialogs/dialogs_fixture.h"
#include "ui/dialogs/frm_queue.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kPatience = 20000;  // milliseconds until what does not come about has failed

class QueueDialogTest : public DialogsTest {
 protected:
  QueueDialogTest() {
    server_.MakeDatabase("queue");
    server_.Run("queue", "insert into rental.branch(name) values ('North'), ('South')");
    server_.MakeLogin("queue", "queue_clerk", "tenora_clerk");
    server_.MakeLogin("queue", "queue_reader", "tenora_reader");
    server_.Run("queue",
                "insert into rental.may_see select l, id from rental.branch, "
                "unnest(array['queue_clerk', 'queue_reader']) l");
    PutRun("Rent review", {"Jane", "Ben", "Mei", "Ana"});
    Set("North", 1, "sending", "no answer from mail.example.test");
    Set("North", 2, "held", "a code was not filled in");
    Set("South", 3, "failed", "550 no such mailbox");
    server_.Run("queue", "update queue.letter set file = 'Ben/Notice.rtf' where number = 2");
  }

  // Each branch's letters are to the same people.
  void PutRun(const std::string& name, const std::vector<std::string>& people) {
    const auto connection = server::Connection::Open("queue-queue_clerk", std::chrono::seconds(0));
    GenerationRequest request;
    request.template_kind = "Templates";
    request.template_name = name;
    request.name_pattern = "";
    request.destination = Destination::kEmail;
    NewQueuedRun run(*connection, request, "{\\rtf1 text}", machine_.clock.Now());
    std::vector<Recipient> recipients;
    for (const std::string& person : people) recipients.push_back({person, "T-" + person});
    for (const char* branch : {"North", "South"}) run.Add(branch, recipients);
    run.Open();
  }
  void Set(const std::string& branch, int number, const std::string& state,
           const std::string& detail) {
    server_.Run("queue",
                "update queue.letter set place = 'out', state = '" + state + "', detail = '" +
                    detail + "' where number = " + std::to_string(number) +
                    " and branch = (select id from rental.branch where name = '" + branch + "')");
  }
  std::string Standing(const std::string& branch, int number) {
    return server_.Run(
        "queue", "select standing from queue.letter where number = " + std::to_string(number) +
                     " and branch = (select id from rental.branch where name = '" + branch + "')");
  }

  std::unique_ptr<frmQueue> Open(const std::string& service) {
    auto dialog = std::make_unique<frmQueue>(machine_.dialogs, machine_.locale, service,
                                             machine_.ProgramFolder());
    dialog->show();
    return dialog;
  }
  static bool Comes(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, kPatience);
  }
  // The rows as they are seen, those of branches after a dash.
  static std::vector<std::string> Rows(QWidget& dialog, const char* list) {
    std::vector<std::string> rows;
    for (QTreeWidgetItemIterator at(Find<QTreeWidget>(dialog, list)); *at != nullptr; ++at) {
      QStringList texts;
      for (int column = 0; column < (*at)->columnCount(); ++column) texts << (*at)->text(column);
      rows.push_back(((*at)->parent() == nullptr ? "" : "- ") + texts.join("|").toStdString());
    }
    return rows;
  }
  static std::string State(QWidget& dialog) {
    return Find<QLabel>(dialog, "lblState")->text().toStdString();
  }
  static void ChooseLetter(QWidget& dialog, int row) {
    auto* list = Find<QTreeWidget>(dialog, "lstLetters");
    list->setCurrentItem(list->topLevelItem(row));
  }

  test::PostgresServer& server_ = test::PostgresServer::Get();
};

TEST_F(QueueDialogTest, ShowsHowRunsStandAndWhatTheyHaveLeft) {
  const std::filesystem::path file = machine_.ProgramFolder() / "Branches/North/Ben/Notice.rtf";
  std::filesystem::create_directories(file.parent_path());
  WriteWholeFile(file, "{\\rtf1 text}");
  const auto dialog = Open("queue-queue_reader");
  ASSERT_TRUE(Comes([&] { return Rows(*dialog, "lstLetters").size() == 3; }));
  EXPECT_THAT(Rows(*dialog, "lstRuns"),
              ElementsAre("1   Rent review|Open|E-mail|8|0||5|1||1|1||", "- North|||4|0||2|1|||1||",
                          "- South|||4|0||3|||1|||"));
  EXPECT_THAT(Rows(*dialog, "lstLetters"),
              ElementsAre("Jane (T-Jane)|North|In doubt|no answer from mail.example.test",
                          "Mei (T-Mei)|South|Failed|550 no such mailbox",
                          "Ben (T-Ben)|North|Held back|a code was not filled in"));
  EXPECT_EQ(State(*dialog), "No worker is there: nothing is made of what is to do.");

  // What can be done with a letter depends on how it stands, and on whether it is on this disk.
  const struct {
    int row;
    bool open, doubt;
  } letters[] = {{0, false, true}, {1, false, false}, {2, true, false}};
  for (const auto& letter : letters) {
    SCOPED_TRACE(letter.row);
    ChooseLetter(*dialog, letter.row);
    EXPECT_EQ(Find<QPushButton>(*dialog, "cmdOpen")->isEnabled(), letter.open);
    EXPECT_EQ(Find<QPushButton>(*dialog, "cmdArrived")->isEnabled(), letter.doubt);
    EXPECT_EQ(Find<QPushButton>(*dialog, "cmdSendAgain")->isEnabled(), letter.doubt);
  }
  std::filesystem::path opened;
  QObject::connect(dialog.get(), &frmQueue::OpenAsked,
                   [&](const std::filesystem::path& asked) { opened = asked; });
  ChooseLetter(*dialog, 2);
  Press(*dialog, "cmdOpen");
  EXPECT_EQ(opened, file);

  // It follows the server, and the chosen letter stays chosen.
  server_.Run(
      "queue",
      "update queue.part set reason = 'login refused', paused_until = now() + "
      "interval '1 hour' where branch = (select id from rental.branch where name = 'South');"
      "insert into queue.worker(host, pid, version) values ('office2', 77, '1.0')");
  Set("North", 4, "mailed", "");
  ASSERT_TRUE(Comes([&] { return !Rows(*dialog, "lstWorkers").empty(); }));
  EXPECT_THAT(Rows(*dialog, "lstWorkers").front(), HasSubstr("|office2|77|1.0||0|"));
  EXPECT_THAT(Rows(*dialog, "lstRuns")[1], StartsWith("- North|||4|1||1|1|||1"));
  EXPECT_THAT(Rows(*dialog, "lstRuns")[2], StartsWith("- South|Waits until "));
  EXPECT_TRUE(Find<QPushButton>(*dialog, "cmdOpen")->isEnabled());
  auto* runs = Find<QTreeWidget>(*dialog, "lstRuns");
  runs->setCurrentItem(runs->topLevelItem(0)->child(1));
  EXPECT_EQ(State(*dialog), "login refused");
}

TEST_F(QueueDialogTest, DoesWhatIsAskedAfterAQuestionWhereItCannotBeUndone) {
  const auto dialog = Open("queue-queue_clerk");
  ASSERT_TRUE(Comes([&] { return Rows(*dialog, "lstLetters").size() == 3; }));
  const auto run = [this] {
    return server_.Run("queue", "select state, send_held from queue.run");
  };
  const auto enabled = [&](const char* button) {
    return Find<QPushButton>(*dialog, button)->isEnabled();
  };

  machine_.dialogs.WillPress(Answer::kNo);
  Press(*dialog, "cmdSendAgain");
  EXPECT_EQ(Standing("North", 1), "in doubt\n");
  Press(*dialog, "cmdArrived");
  ASSERT_TRUE(Comes([&] { return Rows(*dialog, "lstLetters").size() == 2; }));
  EXPECT_EQ(State(*dialog), "The letter to Jane counts as done.");
  EXPECT_EQ(Standing("North", 1), "done\n");
  Set("North", 1, "sending", "");
  ASSERT_TRUE(Comes([&] { return Rows(*dialog, "lstLetters").size() == 3; }));
  ChooseLetter(*dialog, 0);
  machine_.dialogs.WillPress(Answer::kYes);
  Press(*dialog, "cmdSendAgain");
  ASSERT_TRUE(Comes([&] { return Rows(*dialog, "lstLetters").size() == 2; }));
  EXPECT_EQ(Standing("North", 1), "ready\n");

  Press(*dialog, "cmdPause");
  ASSERT_TRUE(Comes([&] { return !enabled("cmdPause"); }));
  EXPECT_EQ(run(), "paused|f\n");
  machine_.dialogs.WillPress(Answer::kCancel).WillPress(Answer::kOther);
  Press(*dialog, "cmdResume");
  Press(*dialog, "cmdResume");
  ASSERT_TRUE(Comes([&] { return enabled("cmdPause"); }));
  EXPECT_EQ(run(), "open|t\n");
  EXPECT_EQ(State(*dialog), "Run 1 goes on; letters looked at again: 2.");
  // Nothing is held any more.
  EXPECT_FALSE(enabled("cmdResume"));

  machine_.dialogs.WillPress(Answer::kNo).WillPress(Answer::kYes);
  Press(*dialog, "cmdCancelRun");
  EXPECT_EQ(run(), "open|t\n");
  Press(*dialog, "cmdCancelRun");
  ASSERT_TRUE(Comes([&] { return !enabled("cmdCancelRun"); }));
  EXPECT_EQ(run(), "cancelled|t\n");
}

// Nor does a server that is away bring up a box every two seconds.
TEST_F(QueueDialogTest, TellsInOurWordsWhatTheServerRefusesAndInALineThatItIsAway) {
  const auto dialog = Open("queue-queue_reader");
  ASSERT_TRUE(Comes([&] { return Rows(*dialog, "lstLetters").size() == 3; }));
  Press(*dialog, "cmdPause");
  ASSERT_TRUE(Comes([&] { return !machine_.dialogs.shown().empty(); }));
  EXPECT_THAT(machine_.dialogs.Texts(), ElementsAre(HasSubstr("that takes the role 'clerk'")));
  machine_.dialogs.ForgetShown();
  server_.Crash();
  ASSERT_TRUE(Comes([&] { return State(*dialog).starts_with("What is shown is old"); }));
  EXPECT_EQ(Rows(*dialog, "lstRuns").size(), 3u);
  server_.Restart();
  ASSERT_TRUE(Comes([&] { return !State(*dialog).starts_with("What is shown is old"); }));
  EXPECT_THAT(machine_.dialogs.Texts(), IsEmpty());
}

}  // namespace
}  // namespace tenora
