// `tenora generate --queue`, `tenora status` and `tenora work` against a real PostgreSQL, as they
// are typed.
#include "agency.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_import.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A name that labels of metrics must escape.
constexpr const char* kQuoted = R"(So"uth\)";

class QueueCommand : public test::Agency {
 protected:
  void SetUp() override {
    fs::copy(test::SourceDir() / "examples/agency", Home(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    server_.MakeDatabase("pool");
    const auto connection = server::Connection::Open("pool", std::chrono::seconds(0));
    for (const char* branch : {"North", kQuoted}) {
      server::ImportBranch(*connection, branch, Database(), server::LayoutChange::kTake);
    }
    StoreSetting("Settings", "Networkable", "1");
    StoreSetting("Settings", "DatabaseLocation", "service=pool branch=North");
    for (const char* role : {"reader", "clerk"}) {
      server_.MakeLogin("pool", role, std::string("tenora_") + role);
    }
    server_.MakeLogin("pool", "northern", "tenora_clerk");
    Sql("insert into rental.may_see select l, id from rental.branch, "
        "unnest(array['reader', 'clerk', 'northern']) l where name = 'North' or l <> 'northern'");
  }

  std::string Sql(const std::string& sql) { return server_.Run("pool", sql); }
  void Queue() {
    const auto put =
        Run({"generate", "--queue", "--all-branches", "--template", "Rent review", "--recipient",
             "T00001", "--recipient", "T00002", "--recipient", "T00003", "--recipient", "T00005"});
    ASSERT_EQ(put.status, 0) << put.errors;
    EXPECT_EQ(put.output, "Run 1: 8 letters in 2 branches\n");
    letter_ = Sql("select name from queue.letter where number = 1 limit 1");
    letter_.pop_back();
  }
  // As workers would have left the letters of the branch North.
  void MakeAPast() {
    Sql("update queue.letter l set place = 'out', state = p.state, detail = p.detail from (values "
        "(1, 'sending', ''), (2, 'failed', 'no template, says \"Bo\"'), (3, 'saved', ''), "
        "(4, 'held', 'a code')) p(number, state, detail) where l.number = p.number and l.branch = "
        "(select id from rental.branch where name = 'North')");
    Sql("update queue.part set paused_until = now() + interval '1 hour', reason = 'login refused' "
        "where branch <> (select id from rental.branch where name = 'North')");
  }

  test::PostgresServer& server_ = test::PostgresServer::Get();
  std::string letter_;  // the name of the first one
};

TEST_F(QueueCommand, StatusShowsHowTheLettersStand) {
  Queue();
  MakeAPast();
  const struct {
    std::vector<std::string> call;
    std::vector<std::string> texts;
  } cases[] = {
      {{},
       {"Run 1: \"Rent review\" to the folder, asked for by tenora on ", ": in progress\n",
        "\nNorth          4     1        0      0      0     1           0       1         1",
        "\nTotal          8     1        0      4 ", ": login refused\n"}},
      {{"1"},
       {"\nNot done:\nBranch  Number  Name", "  in doubt",
        "  failed          no template, says \"Bo\"\nNorth ", "--arrived BRANCH:NUMBER"}},
      {{"--format=csv"},
       {"Seconds Left,Paused Until,Reason\r\n1,Rent review,folder,open,tenora,",
        ",North,4,1,0,0,0,1,0,1,1,0,", ",\"So\"\"uth\\\",4,0,0,4,0,0,0,0,0,0,0.00,,",
        ",login refused\r\n"}},
      {{"--format=json"}, {R"("Branch": "So\"uth\\", "Letters": 4, )", R"("In Doubt": 1, )"}},
      {{"1", "--only=letters", "--format=csv"},
       {"\r\nNorth,1," + letter_, ",in doubt,,\r\nNorth,2,",
        ",failed,,\"no template, says \"\"Bo\"\"\"\r\nNorth,4,", ",held,,a code\r\n"}},
      {{"--only=workers", "--format=json"}, {"[]\n"}},
      {{"--metrics"},
       {"# HELP tenora_queue_letters Letters ", "# TYPE tenora_queue_letters gauge\n",
        "\ntenora_queue_letters{run=\"1\",branch=\"North\",standing=\"in_doubt\"} 1\n",
        "\ntenora_queue_letters{run=\"1\",branch=\"So\\\"uth\\\\\",standing=\"ready\"} 4\n",
        "\ntenora_queue_paused{run=\"1\",branch=\"North\"} 0\n",
        "\ntenora_queue_paused{run=\"1\",branch=\"So\\\"uth\\\\\"} 1\n",
        "\ntenora_queue_workers 0\n"}},
      {{"--service", "pool-reader", "1"}, {"\nTotal          8 "}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> call = {"status"};
    call.insert(call.end(), c.call.begin(), c.call.end());
    const auto shown = Run(call);
    EXPECT_EQ(shown.status, 0) << shown.errors;
    for (const std::string& text : c.texts) EXPECT_THAT(shown.output, HasSubstr(text));
  }
  EXPECT_THAT(Run({"status", "--service", "pool-northern"}).output, Not(HasSubstr("uth")));
  Run({"status", "1", "--cancel"});
  EXPECT_THAT(Run({"status"}).output, HasSubstr("Run 1, cancelled: 1 in doubt, 1 failed, 1 held"));
}

TEST_F(QueueCommand, DecidesWhatALoginMayAndSaysWhatFollows) {
  Queue();
  MakeAPast();
  const struct {
    std::vector<std::string> call;
    int status;
    std::string text;
    const char* service = "pool";
  } cases[] = {
      {{"--pause"}, 2, "Which run?"},
      {{"1", "--pause", "--resume"}, 2, "are given alone"},
      {{"1", "--send-held"}, 2, "goes with --resume"},
      {{"1", "--arrived", "North"}, 2, "does not have the form \"BRANCH:NUMBER\""},
      {{"1", "--arrived", "North:0"}, 2, "does not have the form"},
      {{"1", "--pause", "--metrics"}, 2, "nothing can be done with them"},
      {{"0"}, 2, "RUN"},
      {{"7", "--pause"}, 1, "There is no run 7"},
      {{"1", "--pause"}, 1, "that takes the role 'clerk'", "pool-reader"},
      {{"1", "--pause"}, 1, "branches that this login does not see", "pool-northern"},
      {{"1", "--remove"}, 1, "Run 1 is in progress: cancel it first"},
      {{"1", "--pause"}, 0, "Run 1 is paused. \"tenora status 1 --resume\"", "pool-clerk"},
      {{"1", "--pause"}, 0, "Run 1 is paused already"},
      {{"1", "--arrived", "North:3", "--arrived", "North:1"},
       1,
       "North:1, " + letter_ + " (T00001): noted that it arrived"},
      {{"1", "--send-again", "North:1"}, 1, "not in doubt"},
      {{"1", "--resume"},
       0,
       "Run 1 goes on: 2 letters that had failed, had no address or were held"},
      {{"1", "--cancel"}, 0, "Run 1 is cancelled: 6 letters will not be made"},
      {{"1", "--cancel"}, 0, "is cancelled already"},
      {{"1", "--resume"}, 1, "is cancelled, and stays so"},
      {{"1", "--remove"}, 0, "Run 1 is removed, with what was known of its 8 letters"},
      {{"1"}, 1, "There is no run 1"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> call = {"status", "--service", c.service};
    call.insert(call.end(), c.call.begin(), c.call.end());
    const auto result = Run(call);
    EXPECT_EQ(result.status, c.status) << testing::PrintToString(c.call);
    EXPECT_THAT(result.output + result.errors, HasSubstr(c.text));
  }
}

TEST_F(QueueCommand, ARunIsPutWholeOrNotAtAll) {
  const struct {
    std::vector<std::string> call;
    std::string text;
  } cases[] = {
      {{"--template", "Inspection notice", "--all"},
       "--answer \"Who will inspect the property=...\" --answer \"What should"},
      {{"--template", "Rent review", "--recipient", "Only North"}, "no recipient \"Only North\""},
      {{"--template", "Rent review", "--where", "Balance Owing > 999999"}, "holds of nobody"},
      {{"--template", "Rent review", "--all", "--to", "email", "--subject", "x"}, "mail program"},
      {{"--template", "Gone", "--all"}, "File not found"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> call = {"generate", "--queue", "--all-branches"};
    call.insert(call.end(), c.call.begin(), c.call.end());
    const auto result = Run(call);
    EXPECT_EQ(result.status, 1) << testing::PrintToString(c.call);
    EXPECT_THAT(result.errors, HasSubstr(c.text));
  }
  // The second branch has no such tenancy.
  Sql("delete from rental.tenancy where reference = 'T00002' and branch <> (select id from "
      "rental.branch where name = 'North')");
  const auto second = Run({"generate", "--queue", "--all-branches", "--template", "Rent review",
                           "--recipient", "T00002"});
  EXPECT_THAT(second.errors, AllOf(HasSubstr("uth\\: There is no recipient \"T00002\""),
                                   HasSubstr("Nothing was put into the queue")));
  StoreSetting("Settings", "DatabaseLocation", "service=pool-reader branch=North");
  EXPECT_THAT(Run({"generate", "--queue", "--template", "Rent review", "--all"}).errors,
              HasSubstr("that takes the role 'clerk'"));
  EXPECT_EQ(Sql("select count(*) from queue.run"), "0\n");
}

TEST_F(QueueCommand, SeveralWorkersDoARunAndEnd) {
  const auto refused = Run({"work", "--workers", "2", "--until-done", "--service", "pool-clerk"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors, HasSubstr("that takes the role 'worker'"));
  Queue();
  const auto worked = Run(
      {"work", "--workers", "2", "--until-done", "--branch", std::string("Gone,North,") + kQuoted});
  EXPECT_EQ(worked.status, 0) << worked.errors;
  EXPECT_THAT(worked.errors, HasSubstr("no branch \"Gone\" that this login may see"));
  EXPECT_THAT(Run({"status", "--all"}).output,
              AllOf(HasSubstr("\nTotal          8     8 "), Not(HasSubstr("in progress"))));
}

}  // namespace
}  // namespace tenora
