// The speed of the database engine on a large database, named by TENORA_BENCH_DB. Reading every row
// is compared with mdb-export writing the same rows to /dev/null.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/query/engine.h"

namespace tenora::query {
namespace {

using Seconds = std::chrono::duration<double>;

const char* DatabasePath() { return std::getenv("TENORA_BENCH_DB"); }

std::vector<std::string> TenantCodes(EngineDatabase& database) {
  std::vector<std::string> codes;
  const auto rows =
      database.OpenRecordset("select reference from tenancy", kForwardOnly, kReadOnly);
  for (; !rows->EndOfFile(); rows->MoveNext())
    codes.push_back(std::get<std::string>(rows->Field(std::size_t{0})));
  return codes;
}

std::int64_t ReadAll(EngineDatabase& database) {
  std::int64_t count = 0;
  for (const TableSummary& table : database.Tables()) {
    const auto rows =
        database.OpenRecordset("select * from [" + table.name + "]", kForwardOnly, kReadOnly);
    for (; !rows->EndOfFile(); rows->MoveNext(), ++count)
      for (std::size_t i = 0; i < rows->FieldNames().size(); ++i)
        benchmark::DoNotOptimize(rows->Field(i));
  }
  return count;
}

double PeerSeconds(EngineDatabase& database) {
  if (std::system("command -v mdb-export >/dev/null") != 0) return 0;
  const auto start = std::chrono::steady_clock::now();
  for (const TableSummary& table : database.Tables()) {
    const std::string command =
        "mdb-export '" + database.Name() + "' '" + table.name + "' >/dev/null";
    if (std::system(command.c_str()) != 0) return 0;
  }
  return Seconds(std::chrono::steady_clock::now() - start).count();
}

void ReadEveryRow(benchmark::State& state) {
  std::int64_t rows = 0;
  for (auto _ : state) {
    const auto workspace = Workspace::Create();
    rows = ReadAll(*workspace->OpenDatabase(DatabasePath()));
  }
  state.counters["rows"] = static_cast<double>(rows);
}

std::string Payments(const std::string& tenant) {
  return "select sum(amount)+0 as paid from revenues where [revenue group] = 'RENT' and "
         "tenant_code "
         "= '" +
         tenant + "'";
}

// Opens the file, reads and indexes the table and adds up one tenant's payments.
void FirstLookUp(benchmark::State& state) {
  for (auto _ : state) {
    const auto workspace = Workspace::Create();
    const auto database = workspace->OpenDatabase(DatabasePath());
    benchmark::DoNotOptimize(
        database->OpenRecordset(Payments("T00001"), kForwardOnly, kReadOnly)->Field("paid"));
  }
}

void FollowingLookUp(benchmark::State& state) {
  const auto workspace = Workspace::Create();
  const auto database = workspace->OpenDatabase(DatabasePath());
  const std::vector<std::string> tenants = TenantCodes(*database);
  std::size_t next = 0;
  for (auto _ : state) {
    const std::string sql = Payments(tenants[next++ % tenants.size()]);
    benchmark::DoNotOptimize(database->OpenRecordset(sql, kForwardOnly, kReadOnly)->Field("paid"));
  }
}

void LastPaymentLookUp(benchmark::State& state) {
  const auto workspace = Workspace::Create();
  const auto database = workspace->OpenDatabase(DatabasePath());
  const std::vector<std::string> tenants = TenantCodes(*database);
  std::size_t next = 0;
  for (auto _ : state) {
    const std::string sql =
        "select top 1 recordnumber, amount from revenues where tenant_code = '" +
        tenants[next++ % tenants.size()] + "' order by date desc, recordnumber desc";
    benchmark::DoNotOptimize(
        database->OpenRecordset(sql, kForwardOnly, kReadOnly)->Field(std::size_t{0}));
  }
}

void ReopenUnchanged(benchmark::State& state) {
  const auto workspace = Workspace::Create();
  const auto kept = workspace->OpenDatabase(DatabasePath());
  for (auto _ : state) benchmark::DoNotOptimize(workspace->OpenDatabase(DatabasePath()));
}

// Makes a change and rolls it back, so that the file stays the same and no sync is measured.
void ChangeAndRollBack(benchmark::State& state, const char* statement) {
  const std::filesystem::path copy =
      std::filesystem::temp_directory_path() / ("query_benchmark-" + std::to_string(getpid()));
  std::filesystem::copy_file(DatabasePath(), copy);
  {
    const auto workspace = Workspace::Create();
    const auto database = workspace->OpenDatabase(copy);
    for (auto _ : state) {
      database->BeginTrans();
      benchmark::DoNotOptimize(database->Execute(statement));
      database->Rollback();
    }
  }
  std::filesystem::remove(copy);
}

void InsertPlainValues(benchmark::State& state) {
  ChangeAndRollBack(state, "insert into rentchanges values ('T00001', #2026-11-21#, -5)");
}

void InsertComputedValues(benchmark::State& state) {
  ChangeAndRollBack(state, "insert into rentchanges values ('T00001', date(), -(5))");
}

void UpdateByCondition(benchmark::State& state) {
  ChangeAndRollBack(state, "update glcodes set description = description & '.' where type > 200");
}

BENCHMARK(InsertPlainValues)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(InsertComputedValues)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(UpdateByCondition)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(ReadEveryRow)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(FirstLookUp)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(FollowingLookUp)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(LastPaymentLookUp)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(ReopenUnchanged)->Unit(benchmark::kMicrosecond)->UseRealTime();

void PrintPeerRatio() {
  const auto database = Workspace::Create()->OpenDatabase(DatabasePath());
  const double peer = PeerSeconds(*database);
  if (peer == 0) {
    std::printf("mdb-export is not installed: no ratio\n");
    return;
  }
  const auto start = std::chrono::steady_clock::now();
  ReadAll(*database);
  const double ours = Seconds(std::chrono::steady_clock::now() - start).count();
  std::printf("every row: mdb-export %.2f s, record sets %.2f s: %.1f times as fast\n", peer, ours,
              peer / ours);
}

}  // namespace
}  // namespace tenora::query

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (tenora::query::DatabasePath() == nullptr) {
    std::printf("TENORA_BENCH_DB names no database: nothing to measure\n");
    return 0;
  }
  benchmark::RunSpecifiedBenchmarks();
  tenora::query::PrintPeerRatio();
  return 0;
}
