#include "letters/queue/worker_queue.h"

#include <algorithm>
#include <map>
#include <utility>

#include "letters/file_names.h"
#include "letters/letter_queue.h"

namespace tenora {
namespace {

using server::Query;
using server::Result;
using server::ServerError;

std::string Text(const Result& rows, int row, int column) {
  return std::string(rows.Text(row, column));
}

[[noreturn]] void RefuseRun(int run, const std::string& what) {
  throw ServerError(server::server_error::kCallFailed,
                    "Run " + std::to_string(run) + " of the queue " + what + ".");
}

LetterState StateIn(const Result& rows, int row, int column) {
  const auto state = LetterStateOf(rows.Text(row, column));
  if (!state) {
    throw ServerError(server::server_error::kCallFailed,
                      "A letter of the queue has the state '" + Text(rows, row, column) +
                          "', which this program does not know.");
  }
  return *state;
}

// A number that is in range by the column's type.
int IntegerIn(const Result& rows, int row, int column) {
  return static_cast<int>(rows.Integer(row, column));
}

constexpr std::string_view EndWord(LetterEnd end) {
  switch (end) {
    case LetterEnd::kOut:
      return "out";
    case LetterEnd::kAgain:
      return "again";
    case LetterEnd::kBack:
      return "back";
    case LetterEnd::kInHand:
      break;
  }
  return "";
}

// The columns of a call with a row for each of many letters.
class Columns {
 public:
  explicit Columns(std::size_t count) : columns_(count) {}
  void Add(std::vector<std::string> row) {
    for (std::size_t i = 0; i < row.size(); ++i) columns_[i].push_back(std::move(row[i]));
  }
  std::string Array(std::size_t column) const { return server::ArrayOf(columns_[column]); }

 private:
  std::vector<std::vector<std::string>> columns_;
};

}  // namespace

void WorkerQueue::Join(const std::string& host, int pid, const std::string& version) {
  // A cable that is cut is noticed by the server after twenty seconds, and by the next worker that
  // looks round within half a minute: it asks for a sign of life after eight seconds without any.
  connection_.RunScript(
      "set tcp_keepalives_idle = 8; set tcp_keepalives_interval = 4; set tcp_keepalives_count = 3; "
      "set tcp_user_timeout = 20000; listen tenora_queue");
  const auto joined = connection_.Run(Query{.sql = "select queue.join_pool($1, $2, $3)",
                                            .parameters = {host, std::to_string(pid), version}});
  worker_ = IntegerIn(*joined, 0, 0);
}

void WorkerQueue::Leave() {
  connection_.Run(
      Query{.sql = "select queue.leave_pool($1)", .parameters = {std::to_string(worker_)}});
}

std::optional<ClaimedLetters> WorkerQueue::Claim(const std::vector<std::string>& branches,
                                                 RunPart before, int most) {
  Query query{
      .sql =
          "select lease, run, branch, branch_name, in_part, number, name, code, "
          "owner_code, state, file, fingerprint, detail, send_held from queue.claim($1, $2, $3, "
          "$4, $5, $6, $7) order by number",
      .parameters = {std::to_string(worker_), std::to_string(kQueueVersion), std::nullopt,
                     std::to_string(before.run), std::to_string(before.branch),
                     std::to_string(most), std::to_string(lease_.count())}};
  if (!branches.empty()) query.parameters[2] = server::ArrayOf(branches);
  const auto rows = connection_.Run(query);
  if (rows->rows() == 0) return std::nullopt;
  ClaimedLetters claimed;
  claimed.lease = rows->Integer(0, 0);
  claimed.part.run = IntegerIn(*rows, 0, 1);
  claimed.part.branch = IntegerIn(*rows, 0, 2);
  claimed.branch_name = Text(*rows, 0, 3);
  claimed.in_part = static_cast<std::size_t>(rows->Integer(0, 4));
  claimed.send_held = rows->Boolean(0, 13);
  for (int row = 0; row < rows->rows(); ++row) {
    claimed.numbers.push_back(static_cast<std::size_t>(rows->Integer(row, 5)));
    claimed.recipients.push_back({.name = Text(*rows, row, 6),
                                  .code = Text(*rows, row, 7),
                                  .owner_code = Text(*rows, row, 8)});
    claimed.letters.push_back({.state = StateIn(*rows, row, 9),
                               .file = Text(*rows, row, 10),
                               .detail = Text(*rows, row, 12),
                               .fingerprint = Text(*rows, row, 11)});
    // Whoever may write to the queue's tables must not be able to lead the writing elsewhere.
    const std::string& file = claimed.letters.back().file;
    if (!file.empty() && !IsInFolderOf(claimed.recipients.back().name, file)) {
      RefuseRun(claimed.part.run, "names '" + file + "', which is not a letter in the folder of " +
                                      claimed.recipients.back().name);
    }
  }
  return claimed;
}

RunOrder WorkerQueue::OrderOf(int run) {
  const Query queries[] = {
      {.sql = "select extract(year from as_of)::int, extract(month from as_of)::int, "
              "extract(day from as_of)::int, extract(hour from as_of)::int, "
              "extract(minute from as_of)::int, extract(second from as_of)::int, source, "
              "template_kind, template_name, destination, subject, printer, pdf, name_pattern "
              "from queue.run_of($1)",
       .parameters = {std::to_string(run)}},
      {.sql = "select prompt, answer from queue.answers_of($1)",
       .parameters = {std::to_string(run)}}};
  const auto results = connection_.RunTogether(queries);
  const Result& rows = *results[0];
  if (rows.rows() != 1) RefuseRun(run, "is not there, or none of its branches is seen");
  const auto destination = DestinationOf(rows.Text(0, 9));
  if (!destination) RefuseRun(run, "has a destination that this program does not know");
  RunOrder order;
  order.as_of =
      Date::FromCalendar(IntegerIn(rows, 0, 0), IntegerIn(rows, 0, 1), IntegerIn(rows, 0, 2),
                         IntegerIn(rows, 0, 3), IntegerIn(rows, 0, 4), IntegerIn(rows, 0, 5));
  order.template_source = rows.BytesOf(0, 6);
  order.request.template_kind = Text(rows, 0, 7);
  order.request.template_name = Text(rows, 0, 8);
  order.request.destination = *destination;
  order.request.subject = Text(rows, 0, 10);
  order.request.printer = Text(rows, 0, 11);
  order.request.pdf = rows.Boolean(0, 12);
  order.request.name_pattern = Text(rows, 0, 13);
  for (int row = 0; row < results[1]->rows(); ++row) {
    order.request.answers[Text(*results[1], row, 0)] = Text(*results[1], row, 1);
  }
  return order;
}

std::vector<int> WorkerQueue::TooNew() {
  const auto rows = connection_.Run(
      Query{.sql = "select id from queue.run where state = 'open' and needs_version > $1",
            .parameters = {std::to_string(kQueueVersion)}});
  std::vector<int> runs;
  for (int row = 0; row < rows->rows(); ++row) runs.push_back(IntegerIn(*rows, row, 0));
  return runs;
}

std::vector<std::string> WorkerQueue::TakeNames(const ClaimedLetters& claimed,
                                                std::span<const NameWish> wishes) {
  Columns columns(5);
  for (const NameWish& wish : wishes) {
    columns.Add({std::to_string(wish.number), wish.series.string(), std::to_string(wish.place),
                 std::string(WordOf(wish.state)), wish.fingerprint});
  }
  const auto rows = connection_.Run(
      Query{.sql = "select number, file from queue.take_names($1, $2, $3, $4, $5, $6, $7, $8, $9)",
            .parameters = {std::to_string(claimed.part.run), std::to_string(claimed.part.branch),
                           std::to_string(claimed.lease), std::to_string(lease_.count()),
                           columns.Array(0), columns.Array(1), columns.Array(2), columns.Array(3),
                           columns.Array(4)}});
  std::map<std::size_t, std::string> files;
  for (int row = 0; row < rows->rows(); ++row) {
    files[static_cast<std::size_t>(rows->Integer(row, 0))] = Text(*rows, row, 1);
  }
  std::vector<std::string> names;
  for (const NameWish& wish : wishes) {
    const auto file = files.find(wish.number);
    if (file == files.end() || !file->second.starts_with(wish.series.string())) return {};
    names.push_back(file->second);
  }
  return names;
}

std::vector<std::size_t> WorkerQueue::Note(const ClaimedLetters& claimed,
                                           std::span<const LetterNote> notes, bool last) {
  Columns columns(6);
  for (const LetterNote& note : notes) {
    columns.Add({std::to_string(note.number), std::string(WordOf(note.letter.state)),
                 note.letter.file, note.letter.fingerprint, note.letter.detail,
                 std::string(EndWord(note.end))});
  }
  const auto rows = connection_.Run(
      Query{.sql = "select queue.note($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11)",
            .parameters = {std::to_string(claimed.part.run), std::to_string(claimed.part.branch),
                           std::to_string(claimed.lease), std::to_string(lease_.count()),
                           columns.Array(0), columns.Array(1), columns.Array(2), columns.Array(3),
                           columns.Array(4), columns.Array(5), last ? "true" : "false"}});
  std::vector<std::size_t> numbers;
  for (int row = 0; row < rows->rows(); ++row) {
    numbers.push_back(static_cast<std::size_t>(rows->Integer(row, 0)));
  }
  return numbers;
}

void WorkerQueue::PausePart(RunPart part, const std::string& reason) {
  connection_.Run(Query{.sql = "select queue.pause_part($1, $2, $3, $4)",
                        .parameters = {std::to_string(part.run), std::to_string(part.branch),
                                       std::to_string(worker_), reason}});
}

int WorkerQueue::LookRound() {
  const auto found = connection_.Run("select queue.look_round()");
  return IntegerIn(*found, 0, 0);
}

}  // namespace tenora
