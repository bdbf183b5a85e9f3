#include "letters/letter_queue.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iterator>
#include <map>
#include <utility>

#include "letters/generate/logged_run.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/format.h"

namespace tenora {
namespace {

using server::Query;
using server::Result;
using server::ServerError;

// Sent to the server at once.
constexpr std::size_t kMostAtOnce = 5000;

int IntegerIn(const Result& rows, int row, int column) {
  return static_cast<int>(rows.Integer(row, column));
}

std::string TextIn(const Result& rows, int row, int column) {
  return std::string(rows.Text(row, column));
}

constexpr const char* kDayAndTime = "yyyy-mm-dd hh:nn:ss";

// Of seconds since 1970, as this computer's clock shows it; "" for none.
std::string TimeIn(const Result& rows, int row, int column, const char* format) {
  if (rows.IsNull(row, column)) return {};
  const std::chrono::sys_seconds time{std::chrono::seconds(rows.Integer(row, column))};
  return FormatDate(LocalTime(time), format);
}

double RateIn(const Result& rows, int row, int column) {
  const std::string_view text = rows.Text(row, column);
  double rate = 0;
  std::from_chars(text.data(), text.data() + text.size(), rate);
  return rate;
}

bool Call(server::Connection& connection, const std::string& function, int run) {
  return connection
      .Run(Query{.sql = "select " + function + "($1)", .parameters = {std::to_string(run)}})
      ->Boolean(0, 0);
}

}  // namespace

NewQueuedRun::NewQueuedRun(server::Connection& connection, const GenerationRequest& request,
                           const std::string& template_source, Date as_of)
    : connection_(connection) {
  std::vector<std::string> prompts, answers;
  for (const auto& [prompt, answer] : request.answers) {
    prompts.push_back(prompt);
    answers.push_back(answer);
  }
  const Query queries[] = {
      {.sql = "begin", .parameters = {}},
      {.sql = "select queue.put_run($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12)",
       .parameters = {FormatDate(as_of, kDayAndTime), std::to_string(kQueueVersion),
                      server::Bytes{template_source}, request.template_kind, request.template_name,
                      std::string(WordOf(request.destination)), request.subject, request.printer,
                      request.pdf ? "true" : "false", request.name_pattern.value_or(""),
                      server::ArrayOf(prompts), server::ArrayOf(answers)}}};
  id_ = IntegerIn(*connection_.RunTogether(queries)[1], 0, 0);
}

NewQueuedRun::~NewQueuedRun() {
  if (sending_.valid()) sending_.wait();
  if (open_ || connection_.IsBroken()) return;
  try {
    connection_.Run("rollback");
  } catch (const ServerError&) {
    // The server rolls back what a lost connection has begun.
  }
}

void NewQueuedRun::Add(const std::string& branch, std::vector<Recipient> recipients) {
  AwaitSent();
  sending_ = std::async(std::launch::async, [this, branch, added = std::move(recipients)] {
    try {
      Send(branch, added);
    } catch (const ServerError& error) {
      throw ServerError(error.number(), branch + ": " + std::string(error.description()),
                        error.failure());
    }
  });
}

void NewQueuedRun::AwaitSent() {
  if (sending_.valid()) sending_.get();
}

void NewQueuedRun::Send(const std::string& branch, std::span<const Recipient> recipients) {
  while (!recipients.empty()) {
    const auto some = recipients.first(std::min(recipients.size(), kMostAtOnce));
    recipients = recipients.subspan(some.size());
    const auto texts = [&](std::string Recipient::*member) {
      std::vector<std::string> column;
      std::ranges::transform(some, std::back_inserter(column), member);
      return server::ArrayOf(column);
    };
    connection_.Run(
        Query{.sql = "select queue.put_letters($1, (select id from rental.branch where name = $2), "
                     "$3, $4, $5)",
              .parameters = {std::to_string(id_), branch, texts(&Recipient::name),
                             texts(&Recipient::code), texts(&Recipient::owner_code)}});
  }
}

void NewQueuedRun::Open() {
  AwaitSent();
  const Query queries[] = {
      {.sql = "select queue.open_run($1)", .parameters = {std::to_string(id_)}},
      {.sql = "commit", .parameters = {}}};
  connection_.RunTogether(queries);
  open_ = true;
}

std::optional<std::int64_t> QueueCounts::SecondsLeft() const {
  if (Left() == 0) return 0;
  if (per_second <= 0) return std::nullopt;
  return static_cast<std::int64_t>(std::ceil(static_cast<double>(Left()) / per_second));
}

QueueCounts& QueueCounts::operator+=(const QueueCounts& other) {
  for (const auto member :
       {&QueueCounts::letters, &QueueCounts::ready, &QueueCounts::in_hand, &QueueCounts::later,
        &QueueCounts::done, &QueueCounts::held, &QueueCounts::no_address, &QueueCounts::failed,
        &QueueCounts::in_doubt, &QueueCounts::cancelled}) {
    this->*member += other.*member;
  }
  per_second += other.per_second;
  return *this;
}

QueueCounts QueuedRun::Total() const {
  QueueCounts total;
  for (const QueuedPart& part : parts) total += part.counts;
  return total;
}

void LetterQueue::Require(QueueUse use) {
  const auto refuse = [&](const std::string& why) {
    throw ServerError(server::server_error::kCallFailed, why);
  };
  const std::string place =
      "the database '" + connection_.DatabaseName() + "' on " + connection_.Address();
  // Without one of our roles the login may not even ask for the schema's tables.
  const auto there = connection_.Run(
      "select exists (select from pg_namespace where nspname = 'queue'), "
      "coalesce((select has_schema_privilege(oid, 'usage') from pg_namespace "
      "where nspname = 'queue'), false), session_user");
  if (!there->Boolean(0, 0)) {
    refuse("There is no queue in " + place + "; its owner makes it with 'tenora server init'.");
  }
  const std::string login = "The login '" + TextIn(*there, 0, 2) + "'";
  const std::string grant = "'tenora server grant'";
  if (!there->Boolean(0, 1)) {
    refuse(login + " has none of Tenora's roles in " + place + "; its owner gives it one with " +
           grant + ".");
  }
  const auto version = connection_.Run("select number from queue.version");
  if (version->rows() != 1 || version->Integer(0, 0) != kQueueVersion) {
    refuse("The queue in " + place +
           " was made by another version of Tenora, which keeps it otherwise.");
  }
  if (use == QueueUse::kLook) return;
  const auto rights = connection_.Run(
      "select has_function_privilege('queue.remove_run(int)', 'execute'), "
      "has_function_privilege('queue.look_round()', 'execute')");
  if (use == QueueUse::kRuns && !rights->Boolean(0, 0)) {
    refuse(login + " may look at the queue but not put runs there or decide on them: that takes " +
           "the role 'clerk', which the database's owner gives with " + grant + ".");
  }
  if (use == QueueUse::kLetters && !rights->Boolean(0, 1)) {
    refuse(login + " may not take letters of the queue: that takes the role 'worker', which the " +
           "database's owner gives with " + grant + ".");
  }
}

std::vector<QueuedRun> LetterQueue::Runs(std::optional<int> only) {
  Query query{.sql =
                  "select r.id, r.state, r.asked_by, extract(epoch from r.asked)::bigint, "
                  "r.template_kind, r.template_name, r.destination, r.needs_version, "
                  "p.branch_name, extract(epoch from p.paused_until)::bigint, p.reason, p.letters, "
                  "p.ready, p.in_hand, p.later, p.done, p.held, p.no_address, p.failed, "
                  "p.in_doubt, p.cancelled, p.per_second "
                  "from queue.run r join queue.progress p on p.run = r.id ",
              .parameters = {}};
  if (only) {
    query.sql += "where r.id = $1 ";
    query.parameters.emplace_back(std::to_string(*only));
  }
  query.sql += "order by r.id desc, p.branch_name";
  const auto rows = connection_.Run(query);
  std::vector<QueuedRun> runs;
  for (int row = 0; row < rows->rows(); ++row) {
    const int id = IntegerIn(*rows, row, 0);
    if (runs.empty() || runs.back().id != id) {
      runs.push_back({.id = id,
                      .state = TextIn(*rows, row, 1),
                      .asked_by = TextIn(*rows, row, 2),
                      .asked = TimeIn(*rows, row, 3, kDayAndTime),
                      .template_kind = TextIn(*rows, row, 4),
                      .template_name = TextIn(*rows, row, 5),
                      .destination = TextIn(*rows, row, 6),
                      .needs_version = IntegerIn(*rows, row, 7),
                      .parts = {}});
    }
    QueuedPart part{.branch = TextIn(*rows, row, 8),
                    .counts = {},
                    .paused_until = TimeIn(*rows, row, 9, "hh:nn:ss"),
                    .reason = TextIn(*rows, row, 10)};
    int column = 11;
    for (const auto member :
         {&QueueCounts::letters, &QueueCounts::ready, &QueueCounts::in_hand, &QueueCounts::later,
          &QueueCounts::done, &QueueCounts::held, &QueueCounts::no_address, &QueueCounts::failed,
          &QueueCounts::in_doubt, &QueueCounts::cancelled}) {
      part.counts.*member = rows->Integer(row, column++);
    }
    part.counts.per_second = RateIn(*rows, row, column);
    runs.back().parts.push_back(std::move(part));
  }
  return runs;
}

std::vector<PresentWorker> LetterQueue::Workers() {
  const auto rows = connection_.Run(
      "select w.id, w.host, w.version, w.pid, extract(epoch from w.started)::bigint, "
      "extract(epoch from now() - w.seen)::bigint, coalesce(sum(cardinality(e.numbers)), 0), "
      "coalesce(min(b.name), ''), exists (select from pg_locks k where k.locktype = 'advisory' and "
      "k.classid = 32266 and k.objid = w.id and k.pid = w.backend and k.granted and k.database = "
      "(select oid from pg_database where datname = current_database())) "
      "from queue.worker w left join queue.lease e on e.worker = w.id "
      "left join rental.branch b on b.id = e.branch where w.ended is null group by w.id "
      "order by w.id");
  std::vector<PresentWorker> workers;
  for (int row = 0; row < rows->rows(); ++row) {
    workers.push_back({.id = IntegerIn(*rows, row, 0),
                       .host = TextIn(*rows, row, 1),
                       .version = TextIn(*rows, row, 2),
                       .pid = IntegerIn(*rows, row, 3),
                       .started = TimeIn(*rows, row, 4, kDayAndTime),
                       .seconds_since_seen = rows->Integer(row, 5),
                       .letters_in_hand = rows->Integer(row, 6),
                       .branch = TextIn(*rows, row, 7),
                       .connected = rows->Boolean(row, 8)});
  }
  return workers;
}

std::vector<OpenLetter> LetterQueue::OpenLetters(int run, int most) {
  const auto rows = connection_.Run(Query{
      .sql = "select b.name, l.number, l.name, l.code, l.standing, l.detail, l.file "
             "from queue.letter l join rental.branch b on b.id = l.branch where l.run = $1 "
             "and l.standing in ('failed', 'later', 'held', 'in doubt', 'no address') "
             "order by array_position(array['in doubt', 'failed', 'held', 'later', 'no address'], "
             "l.standing), b.name, l.number limit $2",
      .parameters = {std::to_string(run), std::to_string(most)}});
  std::vector<OpenLetter> letters;
  for (int row = 0; row < rows->rows(); ++row) {
    letters.push_back({.branch = TextIn(*rows, row, 0),
                       .number = IntegerIn(*rows, row, 1),
                       .name = TextIn(*rows, row, 2),
                       .code = TextIn(*rows, row, 3),
                       .standing = TextIn(*rows, row, 4),
                       .detail = TextIn(*rows, row, 5),
                       .file = TextIn(*rows, row, 6)});
  }
  return letters;
}

bool LetterQueue::Pause(int run) { return Call(connection_, "queue.pause_run", run); }

bool LetterQueue::Cancel(int run) { return Call(connection_, "queue.cancel_run", run); }

int LetterQueue::Resume(int run, bool send_held) {
  return IntegerIn(
      *connection_.Run(Query{.sql = "select queue.resume_run($1, $2)",
                             .parameters = {std::to_string(run), send_held ? "true" : "false"}}),
      0, 0);
}

bool LetterQueue::ClearDoubt(int run, const std::string& branch, int number, bool arrived) {
  return connection_
      .Run(Query{.sql = "select queue.clear_doubt($1, $2, $3, $4)",
                 .parameters = {std::to_string(run), branch, std::to_string(number),
                                arrived ? "true" : "false"}})
      ->Boolean(0, 0);
}

void LetterQueue::Remove(int run) {
  connection_.Run(Query{.sql = "select queue.remove_run($1)", .parameters = {std::to_string(run)}});
}

}  // namespace tenora
