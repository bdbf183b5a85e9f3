// Letters to the tenants of a database, from its file and from a branch on a PostgreSQL server of
// the benchmark's own: processor time a letter here and on the server, round trips, peak memory,
// and whether all letters are the same to the byte. One thread merges.
//
//   server_benchmark DATABASE TEMPLATES [LETTERS]
//
// TEMPLATES is a folder of templates for tenants, each of which is used.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "platform/access/database_writer.h"
#include "platform/query/engine.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_import.h"
#include "support/fake_platform.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBranch = "service=bench branch=North";
constexpr double kTogether = 32;  // letters of whose rows the server is asked at once

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Of the server's process at the other end of our connection.
double BackendSeconds() {
  const std::string pid = test::PostgresServer::Get().Run(
      "bench", "select pid from pg_stat_activity where application_name = 'tenora'");
  std::ifstream stream("/proc/" + std::string(TrimBlanks(Split(pid, "\n").front())) + "/stat");
  std::string line;
  std::getline(stream, line);
  // The fields after the program's name, which is in parentheses.
  constexpr std::size_t kUserTime = 11, kSystemTime = 12;
  const std::vector<std::string> fields = Split(line.substr(line.rfind(')') + 2), " ");
  return static_cast<double>(std::stoll(fields.at(kUserTime)) +
                             std::stoll(fields.at(kSystemTime))) /
         static_cast<double>(::sysconf(_SC_CLK_TCK));
}

GenerationSummary Generate(Session& session, const std::string& name, std::size_t letters) {
  GenerationObserver nobody;
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.template_name = name;
  Generation generation(session, AfterError::kNextRecipient, nobody);
  generation.MergeOn(1);
  return generation.Run(request, [&](const Caches& caches) {
    std::vector<Recipient> some;
    for (std::size_t i = 0; i < letters; ++i) {
      const TenantRecord& tenant = caches.Tenants.at(i % caches.Tenants.size());
      some.push_back({tenant.KeyName, tenant.Reference});
    }
    return some;
  });
}

// Makes the letters in this process and prints what they cost.
void Measure(const fs::path& database, const fs::path& templates, const std::string& name,
             std::size_t letters, bool on_server, const fs::path& made) {
  test::FakePlatform machine;
  fs::copy(templates, machine.ProgramFolder() / kTemplates);
  if (on_server) {
    Settings settings(machine.Parts());
    settings.SaveSettingText("Settings", "Networkable", "1");
    settings.SaveSettingText("Settings", "DatabaseLocation", kBranch);
  } else {
    fs::create_symlink(database, machine.ProgramFolder() / "property.mdb");
  }
  Session session(machine.Parts());
  session.ReloadRentalData();
  const auto trips = [&] {
    const auto origin = machine.workspace->OpenDatabase(session.database.Location())->Origin();
    return origin ? origin->round_trips : 0;
  };
  const int trips_before = trips();
  const double backend_before = on_server ? BackendSeconds() : 0;
  rusage before{}, after{};
  ::getrusage(RUSAGE_SELF, &before);
  const GenerationSummary summary = Generate(session, name, letters);
  ::getrusage(RUSAGE_SELF, &after);
  const auto count = static_cast<double>(letters);
  std::printf("  %-6s %6.2f ms of processor a letter", on_server ? "server" : "file",
              (Seconds(after.ru_utime) + Seconds(after.ru_stime) - Seconds(before.ru_utime) -
               Seconds(before.ru_stime)) *
                  1000 / count);
  if (on_server) {
    std::printf(", %.2f ms of the server's; %.1f round trips for 32 letters",
                (BackendSeconds() - backend_before) * 1000 / count,
                static_cast<double>(trips() - trips_before) * kTogether / count);
  }
  std::printf("; %.0f MB at most\n", static_cast<double>(after.ru_maxrss) / 1024);
  if (!summary.complete()) std::printf("%zu letters failed\n", summary.asked - summary.done);
  fs::remove_all(machine.ProgramFolder() / kTemplates);
  fs::remove(summary.log);
  fs::rename(machine.ProgramFolder(), made);
}

// In a process of its own, whose memory and time are then known.
void InChild(const std::function<void()>& run) {
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    run();
    std::fflush(stdout);
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (status != 0) std::printf("the run failed\n");
}

std::map<std::string, std::string> LettersIn(const fs::path& folder) {
  std::map<std::string, std::string> letters;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.path().extension() != ".rtf") continue;
    letters[entry.path().lexically_relative(folder)] = ReadWholeFile(entry.path());
  }
  return letters;
}

void Compare(const fs::path& database, const fs::path& templates, const std::string& name,
             std::size_t letters) {
  std::printf("%s, %zu letters\n", name.c_str(), letters);
  const test::ScratchFolder scratch;
  for (const bool on_server : {false, true}) {
    InChild([&] {
      Measure(database, templates, name, letters, on_server,
              scratch / (on_server ? "server" : "file"));
    });
  }
  InChild([&] {
    const auto from_file = LettersIn(scratch / "file");
    const bool same = from_file == LettersIn(scratch / "server");
    std::printf("  %zu letters, %s\n", from_file.size(),
                same ? "the same to the byte" : "DIFFERENT");
  });
}

void Run(const fs::path& database, const fs::path& templates, std::size_t letters) {
  test::PostgresServer::Get().MakeDatabase("bench");
  InChild([&] {
    const auto start = std::chrono::steady_clock::now();
    const auto connection = server::Connection::Open("bench", std::chrono::seconds(0));
    const auto report =
        server::ImportBranch(*connection, "North", database, server::LayoutChange::kTake);
    std::printf("Import: %lld rows in %.1f s\n", static_cast<long long>(report.rows),
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  });
  for (const auto& entry : fs::directory_iterator(templates)) {
    const std::string source = ReadWholeFile(entry.path());
    // A number is issued by the file or by the server, never by both; and nobody answers a
    // question.
    if (source.find("BuildingReceiptNumber") != std::string::npos ||
        source.find("<<?") != std::string::npos) {
      continue;
    }
    Compare(database, templates, entry.path().stem().string(), letters);
  }
}

}  // namespace
}  // namespace tenora

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "server_benchmark DATABASE TEMPLATES [LETTERS]\n");
    return 2;
  }
  tenora::Run(std::filesystem::absolute(argv[1]), std::filesystem::absolute(argv[2]),
              argc > 3 ? std::stoul(argv[3]) : 2000);
  return 0;
}
