// Runs of letters from one template of nine codes for 500 and for 5,000 recipients, on all
// processors, saved as RTF and with a PDF each: letters a second beside a word processor's mail
// merge, time of the processors, peak memory, and the growth from 500 to 5,000. The argument is a
// database; its tenants take turns where they are fewer than the recipients.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "platform/runtime/files.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTemplate = "Rent review";

// LibreOffice 7.4's mail merge on a two-core machine with 500 recipients and nine fields, letters a
// second: the figures the goals were set by.
constexpr double kPeerRtf = 135, kPeerPdf = 31;

std::string Template() {
  std::string rtf =
      "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}{\\f1\\fswiss "
      "Arial;}}\\pard\\qr\\f0\\fs24 <<Print Date>>\\par\\pard\\par <<Tenant Name>>\\par "
      "<<Property Address 1>>\\par <<Property Address 2>>\\par\\par "
      "\\f1\\b\\fs32 Notice of rent review\\b0\\f0\\fs24\\par\\par Dear <<Tenant Name>>\\par\\par "
      "Your rent is \\b <<Current Rent>>\\b0  each <<Rent Frequency>>, paid to <<Paid To Date>>. "
      "<<Balance Owing>> is owing; your last payment was <<Last Payment Amount>>.\\par\\par ";
  for (int i = 0; i < 5; ++i) {
    rtf +=
        "The rent for the premises is reviewed once a year, and the law asks us to tell you of a "
        "change in writing before it takes effect. Please change your payments from that day on; "
        "the next payment falls due a week later.\\par\\par ";
  }
  return rtf + "Yours sincerely\\par\\par\\par The property manager\\par}";
}

void Batch(const fs::path& database, std::size_t recipients, bool pdf) {
  test::FakePlatform machine;
  fs::create_symlink(database, machine.ProgramFolder() / "property.mdb");
  fs::create_directory(machine.ProgramFolder() / kTemplates);
  WriteWholeFile(machine.ProgramFolder() / kTemplates / (std::string(kTemplate) + ".rtf"),
                 Template());
  Session session(machine.Parts());
  GenerationObserver nobody;
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.template_name = kTemplate;
  request.pdf = pdf;
  const GenerationSummary summary = Generation(session, AfterError::kNextRecipient, nobody)
                                        .Run(request, [&](const Caches& caches) {
                                          std::vector<Recipient> some;
                                          for (std::size_t i = 0; i < recipients; ++i) {
                                            const TenantRecord& tenant =
                                                caches.Tenants.at(i % caches.Tenants.size());
                                            some.push_back({tenant.KeyName, tenant.Reference});
                                          }
                                          return some;
                                        });
  if (!summary.complete()) std::printf("%zu letters failed\n", summary.asked - summary.done);
}

struct Cost {
  double seconds = 0, processor_seconds = 0, megabytes = 0;
};

// In a process of its own, whose peak memory is then known.
Cost Measure(const fs::path& database, std::size_t recipients, bool pdf) {
  std::fflush(stdout);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    Batch(database, recipients, pdf);
    std::fflush(stdout);
    ::_exit(0);
  }
  int status = 0;
  rusage usage{};
  ::wait4(child, &status, 0, &usage);
  if (status != 0) std::printf("the run failed\n");
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
          seconds(usage.ru_utime) + seconds(usage.ru_stime),
          static_cast<double>(usage.ru_maxrss) / 1024};
}

void Report(const fs::path& database, bool pdf) {
  Cost costs[2];
  const std::size_t sizes[] = {500, 5000};
  for (int i = 0; i < 2; ++i) {
    costs[i] = Measure(database, sizes[i], pdf);
    std::printf("%-4s %5zu letters %8.2f s %8.2f s of processor %8.1f MB %8.0f a second\n",
                pdf ? "PDF" : "RTF", sizes[i], costs[i].seconds, costs[i].processor_seconds,
                costs[i].megabytes, static_cast<double>(sizes[i]) / costs[i].seconds);
  }
  // The start is the same for both: what the 4,500 others took.
  const double rate = 4500 / (costs[1].seconds - costs[0].seconds);
  // Steadier than the rate where other programs run.
  const double processor_ms =
      (costs[1].processor_seconds - costs[0].processor_seconds) / 4500 * 1000;
  std::printf(
      "     further letters: %.0f a second, %.1f times LibreOffice's %.0f; %.2f ms of processor "
      "each; %+.1f MB\n",
      rate, rate / (pdf ? kPeerPdf : kPeerRtf), pdf ? kPeerPdf : kPeerRtf, processor_ms,
      costs[1].megabytes - costs[0].megabytes);
}

}  // namespace
}  // namespace tenora

int main(int argc, char** argv) {
  const std::filesystem::path database =
      argc > 1 ? std::filesystem::absolute(argv[1]) : tenora::test::SampleDatabase();
  tenora::Report(database, false);
  tenora::Report(database, true);
  return 0;
}
