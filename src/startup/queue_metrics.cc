#include "startup/queue_metrics.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

namespace tenora {
namespace {

using Labels = std::vector<std::pair<std::string, std::string>>;

constexpr std::array<std::pair<const char*, std::int64_t QueueCounts::*>, 9> kStandings{{
    {"ready", &QueueCounts::ready},
    {"in_hand", &QueueCounts::in_hand},
    {"later", &QueueCounts::later},
    {"done", &QueueCounts::done},
    {"held", &QueueCounts::held},
    {"no_address", &QueueCounts::no_address},
    {"failed", &QueueCounts::failed},
    {"in_doubt", &QueueCounts::in_doubt},
    {"cancelled", &QueueCounts::cancelled},
}};

std::string LabelValue(std::string_view text) {
  std::string value;
  for (const char c : text) {
    if (c == '\n') {
      value += "\\n";
      continue;
    }
    if (c == '\\' || c == '"') value += '\\';
    value += c;
  }
  return value;
}

void PrintGauge(const std::string& name, const std::string& help, std::ostream& output) {
  output << "# HELP " << name << ' ' << help << "\n# TYPE " << name << " gauge\n";
}

template <typename Number>
void PrintSample(const std::string& name, const Labels& labels, Number number,
                 std::ostream& output) {
  output << name;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    output << (i == 0 ? "{" : ",") << labels[i].first << "=\"" << LabelValue(labels[i].second)
           << '"';
  }
  output << (labels.empty() ? " " : "} ") << number << '\n';
}

// A gauge with a value for each run and branch.
template <typename Value>
void PrintParts(const std::string& name, const std::string& help,
                const std::vector<QueuedRun>& runs, const Value& value, std::ostream& output) {
  PrintGauge(name, help, output);
  for (const QueuedRun& run : runs) {
    for (const QueuedPart& part : run.parts) {
      PrintSample(name, {{"run", std::to_string(run.id)}, {"branch", part.branch}},
                  value(run, part), output);
    }
  }
}

template <typename Value>
void PrintWorkers(const std::string& name, const std::string& help,
                  const std::vector<PresentWorker>& workers, const Value& value,
                  std::ostream& output) {
  PrintGauge(name, help, output);
  for (const PresentWorker& worker : workers) {
    PrintSample(name,
                {{"worker", std::to_string(worker.id)},
                 {"host", worker.host},
                 {"pid", std::to_string(worker.pid)}},
                value(worker), output);
  }
}

}  // namespace

void PrintQueueMetrics(const std::vector<QueuedRun>& runs,
                       const std::vector<PresentWorker>& workers, std::ostream& output) {
  const std::string letters = "tenora_queue_letters";
  PrintGauge(letters, "Letters of the runs in the queue, by how they stand.", output);
  for (const QueuedRun& run : runs) {
    for (const QueuedPart& part : run.parts) {
      for (const auto& [standing, member] : kStandings) {
        PrintSample(
            letters,
            {{"run", std::to_string(run.id)}, {"branch", part.branch}, {"standing", standing}},
            part.counts.*member, output);
      }
    }
  }
  PrintParts(
      "tenora_queue_letters_per_second", "Letters done a second, of late.", runs,
      [](const QueuedRun&, const QueuedPart& part) { return part.counts.per_second; }, output);
  PrintParts(
      "tenora_queue_paused", "1 while the run, or its letters of the branch, are paused.", runs,
      [](const QueuedRun& run, const QueuedPart& part) {
        return run.state == "paused" || !part.paused_until.empty() ? 1 : 0;
      },
      output);
  PrintGauge("tenora_queue_workers", "Workers that are connected.", output);
  PrintSample("tenora_queue_workers", {},
              std::ranges::count(workers, true, &PresentWorker::connected), output);
  PrintWorkers(
      "tenora_queue_worker_connected", "0 of a worker that was lost, until another one notices.",
      workers, [](const PresentWorker& worker) { return worker.connected ? 1 : 0; }, output);
  PrintWorkers(
      "tenora_queue_worker_last_sign_seconds", "Seconds since a worker's last sign.", workers,
      [](const PresentWorker& worker) { return worker.seconds_since_seen; }, output);
  PrintWorkers(
      "tenora_queue_worker_letters_in_hand", "Letters that a worker has in hand.", workers,
      [](const PresentWorker& worker) { return worker.letters_in_hand; }, output);
}

}  // namespace tenora
