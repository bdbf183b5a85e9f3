// The queue's promises to whoever gets the letters: each letter once, whatever becomes of workers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "letters/letter_queue.h"
#include "letters/queue/worker_queue.h"
#include "letters/queue_worker.h"
#include "letters/template_library.h"
#include "platform/server/branch_import.h"
#include "support/fake_platform.h"
#include "support/mail_options.h"
#include "support/postgres_server.h"
#include "support/smtp_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using server::Connection;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::chrono::seconds kLimit{20};
constexpr const char* kLetter =
    R"({\rtf1\ansi\deff0{\fonttbl{\f0 Arial;}}\f0 <<Tenant Code>>\par})";

test::PostgresServer& Postgres() { return test::PostgresServer::Get(); }

std::string Sql(const std::string& sql) {
  std::string printed = Postgres().Run("queue", sql);
  if (printed.ends_with('\n')) printed.pop_back();
  return printed;
}

NameWish Wish(std::size_t number, const fs::path& series, std::size_t place = 0) {
  return {number, series, place, LetterState::kSaving, "9 bytes, 0"};
}

// One worker's side, with a connection of its own.
struct Hand {
  explicit Hand(const std::string& service = "queue-worker",
                std::chrono::seconds lease = std::chrono::seconds(300))
      : connection(Connection::Open(service, kLimit)), queue(*connection, lease) {
    queue.Join("test", 1, "1");
  }
  ClaimedLetters Claim(int most = 1) {
    auto claimed = queue.Claim({}, {}, most);
    if (!claimed) throw std::runtime_error("nothing is ready");
    return *claimed;
  }
  std::size_t Note(const ClaimedLetters& claimed, LetterState state, LetterEnd end,
                   bool last = false) {
    LetterNote note{.number = claimed.numbers[0], .letter = {}, .end = end};
    note.letter.state = state;
    note.letter.file = claimed.recipients[0].name + "/Note.rtf";
    return queue.Note(claimed, {{note}}, last).size();
  }

  std::unique_ptr<Connection> connection;
  WorkerQueue queue;
};

class Queue : public testing::Test {
 protected:
  void SetUp() override {
    fs::copy(test::SourceDir() / "examples/agency", Home(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    Postgres().MakeDatabase("queue");
    Postgres().MakeLogin("queue", "worker", "tenora_worker");
    Postgres().MakeLogin("queue", "other", "tenora_worker");
    Postgres().MakeLogin("queue", "clerk", "tenora_clerk");
    Postgres().MakeLogin("queue", "reader", "tenora_reader");
    owner_ = Connection::Open("queue", kLimit);
  }

  fs::path Home() const { return machine_.ProgramFolder(); }
  void Import(const std::vector<std::string>& branches) {
    for (const std::string& branch : branches) {
      server::ImportBranch(*owner_, branch, Home() / "property.mdb", server::LayoutChange::kTake);
    }
    Sql("insert into rental.may_see select l, id from rental.branch, "
        "unnest(array['worker', 'other', 'clerk', 'reader']) l where not (l = 'other' and "
        "name = 'South')");
  }
  // A run of so many letters to people of the sample in each branch.
  int Put(const std::vector<std::string>& branches, int letters,
          Destination destination = Destination::kFolder) const {
    GenerationRequest request;
    request.template_kind = kTemplates;
    request.template_name = "Note";
    request.subject = "Note";
    request.printer = printing::kPdfPrinterName;
    request.destination = destination;
    NewQueuedRun run(*owner_, request, kLetter, machine_.clock.Now());
    for (const std::string& branch : branches) {
      std::vector<Recipient> recipients;
      for (int i = 1; i <= letters; ++i) {
        recipients.push_back({.name = "Tenant " + std::to_string(i),
                              .code = "T" + std::to_string(100000 + i).substr(1)});
      }
      run.Add(branch, recipients);
    }
    run.Open();
    return run.id();
  }
  // Every look finds what there is to find at once.
  static void LookRound(Hand& hand) {
    Sql("update queue.round set at = '-infinity'");
    hand.queue.LookRound();
  }
  static std::string Standings() {
    return Sql(
        "select coalesce(string_agg(standing || ' ' || n, ', ' order by standing), '') from "
        "(select standing, count(*) n from queue.letter group by standing) s");
  }
  // Works until nothing is left, or `enough` says so, which is asked before each letter.
  void Work(const std::function<bool()>& enough = {}) {
    const WorkerOptions options{
        .service = "queue-worker", .branches = {}, .data_folder = Home(), .until_done = true};
    const auto end = std::chrono::steady_clock::now() + kLimit;
    const WorkerParts parts{
        machine_.Parts(), [] { return printing::Printers::Create({}); },
        [&](const std::string& line) { told_ += line + "\n"; },
        [&] { return std::chrono::steady_clock::now() > end || (enough && enough()); }};
    WorkOnQueue(parts, options);
    EXPECT_LT(std::chrono::steady_clock::now(), end) << told_ << Standings();
  }

  test::FakePlatform machine_;
  std::unique_ptr<Connection> owner_;
  std::string told_;
};

TEST_F(Queue, KnowsWhatMayHaveGoneOutWithALostWorker) {
  using enum LetterState;
  Import({"North"});
  struct Case {
    const char* died;
    std::optional<LetterState> noted;
    LetterEnd end;
    const char* found;
    const char* sent_says;      // standing once the worker has said that the letter went out,
    const char* not_sent_says;  // or that it did not
  };
  const LetterEnd in_hand = LetterEnd::kInHand;
  const Case cases[] = {
      {"claimed", std::nullopt, in_hand, "ready 1", "ready 1", "ready 1"},
      {"about to be written", kSaving, in_hand, "ready 1", "ready 1", "ready 1"},
      {"about to be held back", kHolding, in_hand, "ready 1", "ready 1", "ready 1"},
      {"saved", kSaved, in_hand, "ready 1", "ready 1", "ready 1"},
      {"about to be mailed", kSending, in_hand, "in doubt 1", "done 1", "ready 1"},
      {"about to be printed", kPrinting, in_hand, "in doubt 1", "done 1", "ready 1"},
      {"mailed", kMailed, LetterEnd::kOut, "done 1", "done 1", "done 1"},
      {"held", kHeld, LetterEnd::kOut, "held 1", "held 1", "held 1"},
      {"failed", kFailed, LetterEnd::kAgain, "later 1", "later 1", "later 1"},
  };
  for (const Case& c : cases) {
    for (const bool killed : {true, false}) {
      for (const bool sent : {true, false}) {
        if (!sent && c.sent_says == std::string_view(c.not_sent_says)) continue;
        SCOPED_TRACE(std::string(c.died) + (killed ? ", killed" : ", stopped"));
        Sql("delete from queue.run; delete from queue.lease");
        Put({"North"}, 1);
        Hand worker, finder, stranger("queue-other");
        const ClaimedLetters claimed = worker.Claim();
        if (c.noted) {
          EXPECT_EQ(worker.Note(claimed, *c.noted, c.end), 1U);
        }
        if (killed) {
          Sql("select pg_terminate_backend(backend, 10000) from queue.worker where id = " +
              std::to_string(worker.queue.worker()));
        } else {
          Sql("update queue.lease set until = now() - interval '1 s'");
          EXPECT_THAT(worker.queue.TakeNames(claimed, {{Wish(1, "Jane/Note")}}), IsEmpty());
          EXPECT_EQ(worker.Note(claimed, kSending, in_hand), 0U) << "would be sent";
        }
        LookRound(finder);
        EXPECT_EQ(Standings(), c.found);
        EXPECT_EQ(stranger.Note(claimed, kMailed, LetterEnd::kOut), 0U) << "of another login";
        // On a new connection, as after a restart of the server.
        Hand back;
        back.Note(claimed, sent ? kMailed : kSaved, sent ? LetterEnd::kOut : LetterEnd::kBack,
                  true);
        EXPECT_EQ(Standings(), sent ? c.sent_says : c.not_sent_says);
      }
    }
  }
}

TEST_F(Queue, BelievesAWorkerWhoseLeaseNobodyFoundOver) {
  Import({"North"});
  Put({"North"}, 1);
  Hand worker, finder;
  const ClaimedLetters claimed = worker.Claim();
  worker.Note(claimed, LetterState::kSending, LetterEnd::kInHand);
  Sql("update queue.lease set until = now() - interval '1 s'");
  EXPECT_EQ(worker.Note(claimed, LetterState::kMailed, LetterEnd::kOut, true), 1U);
  LookRound(finder);
  EXPECT_EQ(Standings(), "done 1");
}

TEST_F(Queue, GivesNoLetterAndNoNameTwice) {
  Import({"North"});
  Put({"North"}, 6);
  Hand one, other;
  const ClaimedLetters first = one.Claim(3), second = other.Claim(3);
  EXPECT_THAT(first.numbers, ElementsAre(1, 2, 3));
  EXPECT_THAT(second.numbers, ElementsAre(4, 5, 6));
  EXPECT_FALSE(other.queue.Claim({}, {}, 3));
  const auto wishes = [](const ClaimedLetters& claimed) {
    return std::vector{Wish(claimed.numbers[0], "Jane Smith/Note"),
                       Wish(claimed.numbers[1], "JANE SMITH/note"),
                       Wish(claimed.numbers[2], "Jo/Note", 2)};
  };
  EXPECT_THAT(one.queue.TakeNames(first, wishes(first)),
              ElementsAre("Jane Smith/Note.rtf", "JANE SMITH/note(1).rtf", "Jo/Note(2).rtf"));
  EXPECT_THAT(other.queue.TakeNames(second, wishes(second)),
              ElementsAre("Jane Smith/Note(2).rtf", "JANE SMITH/note(3).rtf", "Jo/Note(3).rtf"));
}

TEST_F(Queue, TriesAFailedLetterFiveTimes) {
  Import({"North"});
  const int run = Put({"North"}, 1);
  Hand hand;
  for (int time = 1; time <= 5; ++time) {
    hand.Note(hand.Claim(), LetterState::kFailed, LetterEnd::kAgain, true);
    LookRound(hand);
    EXPECT_FALSE(hand.queue.Claim({}, {}, 1)) << "at once";
    EXPECT_EQ(Standings(), time < 5 ? "later 1" : "failed 1");
    Sql("update queue.letter set not_before = now() where not_before is not null");
    LookRound(hand);
  }
  EXPECT_EQ(Sql("select state from queue.run"), "ended");
  EXPECT_EQ(LetterQueue(*owner_).Resume(run, false), 1);
  EXPECT_EQ(hand.Claim().letters[0].state, LetterState::kFailed);
}

TEST_F(Queue, BeginsNoLetterOfACancelledRun) {
  Import({"North"});
  const int run = Put({"North"}, 3);
  Hand hand;
  const ClaimedLetters mailed = hand.Claim(), given_back = hand.Claim();
  // A letter comes back while the cancelling is under way, and not yet to be seen.
  owner_->Run("begin");
  LetterQueue(*owner_).Cancel(run);
  std::thread other([&] { hand.Note(given_back, LetterState::kSaved, LetterEnd::kBack, true); });
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (Sql("select exists (select from pg_locks where not granted) or not exists (select from "
             "queue.lease where id = " +
             std::to_string(given_back.lease) + ")") == "f") {
    ASSERT_LT(std::chrono::steady_clock::now(), end);
  }
  owner_->Run("commit");
  other.join();
  EXPECT_EQ(Standings(), "cancelled 2, leased 1");
  hand.Note(mailed, LetterState::kMailed, LetterEnd::kOut, true);
  EXPECT_EQ(Standings(), "cancelled 2, done 1");
  EXPECT_FALSE(hand.queue.Claim({}, {}, 1));
}

TEST_F(Queue, LetsALoginDoWhatItMay) {
  Import({"North", "South"});
  const std::string run = std::to_string(Put({"South"}, 2));
  Hand worker;
  const std::string lease = std::to_string(worker.Claim().lease);
  const struct {
    std::string login, statement;
    const char* outcome;  // the first field, or a part of what the server says
  } cases[] = {
      {"reader", "select count(*) from queue.letter", "2"},
      {"other", "select count(*) from queue.letter", "0"},
      {"other", "select count(*) from queue.progress", "0"},
      {"other", "select count(*) from queue.run_of(" + run + ")", "0"},
      {"other",
       "select count(*) from queue.claim(queue.join_pool('h', 1, '1'), 9, null, 0, 0, 9, 9)", "0"},
      {"other", "select queue.cancel_run(" + run + ")", "permission denied"},
      {"clerk", "select queue.join_pool('h', 1, '1')", "permission denied"},
      {"clerk", "select queue.look_round()", "permission denied"},
      {"reader", "select queue.pause_run(" + run + ")", "permission denied"},
      {"clerk", "update queue.letter set state = 'mailed'", "permission denied"},
      {"worker", "delete from queue.lease", "permission denied"},
      {"worker", "insert into queue.event(run, what) values (1, 'x')", "permission denied"},
      {"worker", "select count(*) from queue.claim(0, 9, null, 0, 0, 9, 9)", "given up"},
      {"other",
       "select count(*) from queue.note(" + run + ", (select branch from queue.lease), " + lease +
           ", 9, '{1}', '{mailed}', '{}', '{}', '{}', '{out}', true)",
       "0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.login + ": " + c.statement);
    const auto connection = Connection::Open("queue-" + c.login, kLimit);
    std::string outcome;
    try {
      outcome = connection->Run(c.statement)->Text(0, 0);
    } catch (const server::ServerError& error) {
      outcome = error.description();
    }
    EXPECT_THAT(outcome, HasSubstr(c.outcome));
  }
  EXPECT_EQ(Standings(), "leased 1, ready 1");
}

TEST_F(Queue, GivesLettersOnlyOfWhatIsOpen) {
  Import({"North"});
  Hand hand;
  const struct {
    const char* change;
    bool gives;
  } cases[] = {
      {"update queue.part set paused_until = now()", true},
      {"update queue.part set paused_until = now() + interval '1 min'", false},
      {"update queue.run set state = 'paused'", false},
      {"update queue.run set state = 'filling'", false},
      {"update queue.run set needs_version = needs_version + 1", false},
      {"delete from rental.may_see where login = 'worker'", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.change);
    Sql("delete from queue.run; delete from queue.lease");
    const int run = Put({"North"}, 1);
    Sql(c.change);
    const bool too_new = std::string_view(c.change).find("needs_version") != std::string::npos;
    EXPECT_EQ(hand.queue.TooNew(), too_new ? std::vector{run} : std::vector<int>{});
    EXPECT_EQ(hand.queue.Claim({}, {}, 1).has_value(), c.gives);
  }
}

// What was handed over before is known, too.
TEST_F(Queue, HandsNothingOverTwiceWhenItsLeaseOrTheServerEnds) {
  const test::SmtpServer mail("plain");
  test::SendMailTo(mail.port(), Home() / "property.mdb");
  Import({"North"});
  std::size_t mails = 0;
  for (const auto& way :
       {std::pair(Destination::kEmail, false), std::pair(Destination::kPrinter, false),
        std::pair(Destination::kEmail, true), std::pair(Destination::kPrinter, true)}) {
    const Destination destination = way.first;
    const bool crash = way.second;
    for (const int at : {1, 3, 5}) {
      SCOPED_TRACE(std::string(WordOf(destination)) + (crash ? ", crash " : " ") +
                   std::to_string(at));
      std::optional<Hand> finder(std::in_place);
      Sql("delete from queue.run; delete from queue.lease");
      fs::remove_all(Home() / "Branches");
      Put({"North"}, 4, destination);
      int asked = 0;
      std::string lost;
      Work([&] {
        const auto leases = owner_->Run("select count(*) from queue.lease");
        if (asked == at || leases->Integer(0, 0) == 0 || ++asked < at) {
          return false;
        }
        if (crash) {
          Postgres().Restart();
          owner_ = Connection::Open("queue", kLimit);
        } else {
          Sql("update queue.lease set until = now() - interval '1 s'");
          LookRound(*finder);
          lost = Standings();
        }
        return false;
      });
      EXPECT_EQ(asked, at);
      if (!crash) {
        EXPECT_THAT(lost, HasSubstr("ready")) << "another one could take them";
      }
      EXPECT_EQ(Standings(), "done 4") << told_;
      std::map<std::string, int> times;
      std::vector<std::string> texts = mail.Messages();
      texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(mails));
      mails += texts.size();
      for (const auto& entry : fs::recursive_directory_iterator(Home() / "Branches")) {
        if (entry.path().extension() != ".pdf") continue;
        texts.push_back(test::RunProcess({"pdftotext", entry.path().string(), "-"}).output);
      }
      for (const std::string& text : texts) {
        for (std::size_t p = 0; (p = text.find("T0000", p)) != std::string::npos; ++p) {
          ++times[text.substr(p, 6)];
          if (destination == Destination::kEmail) break;  // it is in each form of the text
        }
      }
      EXPECT_THAT(times, ElementsAre(std::pair("T00001", 1), std::pair("T00002", 1),
                                     std::pair("T00003", 1), std::pair("T00004", 1)));
    }
  }
}

TEST_F(Queue, LeavesABranchAloneWhoseMailServerIsAway) {
  std::optional<test::SmtpServer> mail("plain");
  const std::string port = "port=" + std::to_string(mail->port());
  test::SendMailTo(mail->port(), Home() / "property.mdb");
  mail.reset();
  Import({"North", "South"});
  Put({"North"}, 5, Destination::kEmail);
  const std::string to_folder = std::to_string(Put({"South"}, 5));
  Work([&] {
    return Sql("select count(*) from queue.letter where run = " + to_folder +
               " and standing = 'done'") == "5" &&
           Sql("select count(*) from queue.part where paused_until > now()") == "1";
  });
  EXPECT_EQ(Standings(), "done 5, ready 5") << told_;
  EXPECT_EQ(Sql("select sum(failures) || ' ' || sum(lost) from queue.letter"), "0 0");
  EXPECT_THAT(Sql("select reason from queue.part where pauses = 1"), HasSubstr("127.0.0.1"));

  mail.emplace("plain", std::vector<std::string>{port});
  Sql("update queue.part set paused_until = now()");
  Work();
  EXPECT_EQ(Standings(), "done 10") << told_;
  EXPECT_EQ(Sql("select max(pauses) from queue.part"), "0");
  std::map<std::string, int> got;
  for (int n = 1; n <= static_cast<int>(mail->Messages().size()); ++n) ++got[mail->Envelope(n)];
  EXPECT_THAT(got, SizeIs(5));
  EXPECT_THAT(mail->Messages(), SizeIs(5));
}

TEST_F(Queue, PausesARunWhoseMailServerNeverSaysWhetherItTookALetter) {
  const test::SmtpServer mail("hangup-BODY");
  test::SendMailTo(mail.port(), Home() / "property.mdb");
  Import({"North"});
  Put({"North"}, 12, Destination::kEmail);
  Work([] { return Sql("select count(*) from queue.part where paused_until > now()") == "1"; });
  EXPECT_EQ(Standings(), "in doubt 4, ready 8") << told_;
}

TEST_F(Queue, GivesLettersBackThatItsTemplateCannotMake) {
  Import({"North", "South"});
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.destination = Destination::kPrinter;  // which this computer does not have
  request.printer = "Nowhere";
  {
    NewQueuedRun run(*owner_, request, kLetter, machine_.clock.Now());
    run.Add("North", {{.name = "Jane", .code = "T00001"}});
    run.Open();
  }
  Put({"South"}, 3);
  const fs::path theirs = Home() / "Branches/South/Tenant 2/Note.rtf";
  fs::create_directories(theirs.parent_path());
  WriteWholeFile(theirs, "somebody else's");
  Work([] {
    return Sql("select count(*) from queue.letter where standing = 'done'") == "3" &&
           Sql("select count(*) from queue.part where paused_until > now()") == "1";
  });
  EXPECT_EQ(Standings(), "done 3, ready 1") << told_;
  EXPECT_EQ(Sql("select max(lost) from queue.letter"), "0");
  EXPECT_EQ(ReadWholeFile(theirs), "somebody else's");
  EXPECT_EQ(Sql("select file from queue.letter where name = 'Tenant 2'"), "Tenant 2/Note(1).rtf");
}

}  // namespace
}  // namespace tenora
