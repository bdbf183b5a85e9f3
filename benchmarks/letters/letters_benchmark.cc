// The jobs that people wait for, on a scratch copy of the sample agency: letters merged and
// saved one after the other, and one receipt from start to PDF; beside the latter LibreOffice
// converting the same letter, where it is installed. And a step of the preview, over the sample
// agency and over the database that is the first argument. Over that also whole runs of letters, by
// the number of threads that merge them.
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

#include "letters/frm_letter.h"
#include "letters/generation.h"
#include "letters/letter_preview.h"
#include "letters/template_library.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

// Without forms, and with conditions and a repetition.
constexpr const char* kTemplate = "Rent review";
constexpr const char* kTemplateWithForms = "Rent arrears notice";
constexpr std::size_t kRows = 500;
constexpr int kLetters = 500;
constexpr int kReceipts = 10;

template <typename Action>
double Seconds(Action&& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void CopyAgency(const fs::path& home) {
  fs::create_directories(home);
  fs::copy(test::SourceDir() / "examples/agency", home,
           fs::copy_options::recursive | fs::copy_options::overwrite_existing);
}

void MergeLetters(const char* template_name, const char* what, bool save) {
  test::FakePlatform machine;
  CopyAgency(machine.ProgramFolder());
  Session session(machine.Parts());
  session.database.OpenDatabase();
  session.caches.CacheTenants(session.database);
  session.database.CloseDatabase();
  const TemplateLibrary library(session.database.DataFolder());
  const auto& tenants = session.caches.Tenants;
  const double seconds = Seconds([&] {
    for (int i = 0; i < kLetters; ++i) {
      frmLetter letter(session);
      letter.members().LetterTitle = template_name;
      letter.members().RecipientName = tenants.at(i % tenants.size()).KeyName;
      letter.LoadLetter(library.PathOf(kTemplates, template_name), kTemplates);
      letter.InsertTenantDetails();
      if (save) letter.SaveTenantTemplate();
    }
  });
  std::printf("%-44s %9.0f letters a second\n", what, kLetters / seconds);
}

double ProcessorSeconds(int whose) {
  rusage usage{};
  ::getrusage(whose, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Seconds; those of processors are steadier where other programs run.
struct Cost {
  std::size_t letters = 0;
  double wall = 0, processors = 0, own_thread = 0;
};

// A run for every so-many-th tenancy, saved as RTF, with a new session: the tables are read too.
Cost RunLetters(const fs::path& database, const char* template_name, std::size_t step,
                unsigned threads) {
  test::FakePlatform machine;
  CopyAgency(machine.ProgramFolder());
  fs::remove(machine.ProgramFolder() / "property.mdb");
  fs::create_symlink(fs::absolute(database), machine.ProgramFolder() / "property.mdb");
  Session session(machine.Parts());
  GenerationObserver nobody;
  Generation generation(session, AfterError::kNextRecipient, nobody);
  generation.MergeOn(threads);
  GenerationRequest request;
  request.template_kind = kTemplates;
  request.template_name = template_name;
  Cost cost{.processors = -ProcessorSeconds(RUSAGE_SELF),
            .own_thread = -ProcessorSeconds(RUSAGE_THREAD)};
  cost.wall = Seconds([&] {
    cost.letters =
        generation
            .Run(request,
                 [&](const Caches& caches) {
                   std::vector<Recipient> some;
                   for (std::size_t i = 0; i < caches.Tenants.size(); i += step) {
                     some.push_back({caches.Tenants[i].KeyName, caches.Tenants[i].Reference});
                   }
                   return some;
                 })
            .done;
  });
  cost.processors += ProcessorSeconds(RUSAGE_SELF);
  cost.own_thread += ProcessorSeconds(RUSAGE_THREAD);
  return cost;
}

void RunOnThreads(const fs::path& database, const char* template_name) {
  constexpr std::size_t kShare = 4;  // of the recipients, in the run that is mostly its start
  double alone = 0;
  const unsigned most = std::max(2U, std::thread::hardware_concurrency());
  for (unsigned threads = 1; threads <= most; threads *= 2) {
    const Cost few = RunLetters(database, template_name, kShare, threads);
    const Cost all = RunLetters(database, template_name, 1, threads);
    const auto further = static_cast<double>(all.letters - few.letters);
    const double rate = further / (all.wall - few.wall);
    if (threads == 1) alone = rate;
    std::printf(
        "%-44s %9.0f further letters a second, %.2f times one thread's; %.2f ms of processors "
        "each, %.2f on the run's own thread; all %zu in %.2f s\n",
        (std::string(template_name) + ", threads: " + std::to_string(threads)).c_str(), rate,
        rate / alone, (all.processors - few.processors) / further * 1000,
        (all.own_thread - few.own_thread) / further * 1000, all.letters, all.wall);
  }
}

// A table with a row for each payment, repeated until there are so many rows.
void RepeatRows() {
  test::FakePlatform machine;
  CopyAgency(machine.ProgramFolder());
  Session session(machine.Parts());
  session.database.OpenDatabase();
  session.caches.Load(session.database);
  session.database.CloseDatabase();
  const std::string row =
      R"(\trowd\cellx3000\cellx6000\cellx9000\pard\intbl <<Each Payment>><<Payment Date:short>>\cell )"
      R"(<<Payment Amount>>\cell <<Total Payment Amount>><<End Each>>\cell\row\pard )";
  std::string source = R"({\rtf1\ansi\deff0{\fonttbl{\f0\fnil Arial;}})";
  std::size_t rows = 0;
  double seconds = 0;
  while (rows < kRows) {
    source += row;
    frmLetter letter(session);
    letter.members().TenantCode = "T00001";
    letter.rtfLetter.SetTextRTF(source + "\\par}");
    seconds = Seconds([&] { letter.InsertTenantDetails(); });
    const std::string text = letter.rtfLetter.Text();
    rows = static_cast<std::size_t>(std::ranges::count(text, '\n'));
  }
  std::printf("%-44s %9.1f ms\n",
              ("read and fill a table of " + std::to_string(rows) + " rows").c_str(),
              seconds * 1000);
}

// Letters of the sample agency's templates to many recipients, one after the other.
void StepThroughPreviews(const fs::path& database) {
  test::FakePlatform machine;
  CopyAgency(machine.ProgramFolder());
  if (!database.empty()) {
    fs::remove(machine.ProgramFolder() / "property.mdb");
    fs::create_symlink(fs::absolute(database), machine.ProgramFolder() / "property.mdb");
  }
  Session session(machine.Parts());
  const TemplateLibrary library(machine.ProgramFolder());
  for (const std::string_view kind : {kTemplates, kOwnerTemplates}) {
    for (const std::string& name : library.Names(kind)) {
      RichTextBox text;
      text.LoadFile(library.PathOf(kind, name), RichTextBox::FileType::kRtf);
      LetterPreview preview(session, std::string(kind), name);
      const double load = Seconds([&] { preview.Load(); });
      preview.SetTemplate(text);
      const std::vector<RecipientRow> rows = preview.Recipients({.closed = true});
      const std::size_t steps = std::min<std::size_t>(rows.size(), 300);
      // The first of all reads the tables.
      const double first = Seconds([&] { preview.Show(rows.front().recipient); });
      double slowest = 0, all = 0;
      for (std::size_t i = 0; i < steps; ++i) {
        const double step = Seconds([&] { preview.Show(rows[i * rows.size() / steps].recipient); });
        slowest = std::max(slowest, step);
        all += step;
      }
      std::printf("%-44s %9.1f ms a step, at most %.1f; first %.1f, %zu recipients read in %.1f\n",
                  ("preview of " + name).c_str(), all / static_cast<double>(steps) * 1000,
                  slowest * 1000, first * 1000, rows.size(), load * 1000);
    }
  }
}

void PrintReceipts() {
  const test::ScratchFolder scratch;
  const fs::path home = scratch / "home";
  CopyAgency(home);
  const std::vector<std::string> environment{
      "TENORA_HOME=" + home.string(), "TENORA_SETTINGS=" + (scratch / "settings").string(),
      "TENORA_PRINTER=Print to PDF", "TENORA_PDF=" + (scratch / "pdf").string()};
  const std::string program = (test::BinaryDir() / "tenora").string();
  const double ours =
      Seconds([&] {
        for (int i = 0; i < kReceipts; ++i) {
          test::RunProcess({program, R"(PRINTRECEIPT="T00001" FORMAT="Receipt")"}, environment);
        }
      }) /
      kReceipts;
  std::printf("%-44s %9.1f ms\n", "start, merge one receipt, PDF, exit", ours * 1000);

  const std::string letter = (home / "Templates/Receipt.rtf").string();
  const std::vector<std::string> convert{
      "soffice", "--headless", "--convert-to", "pdf", "--outdir", scratch.path().string(), letter};
  // The first start of LibreOffice makes its profile.
  if (test::RunProcess(convert).status != 0) return;
  const double theirs = Seconds([&] { test::RunProcess(convert); });
  std::printf("%-44s %9.1f ms, %.1f times ours\n", "LibreOffice converting the letter",
              theirs * 1000, theirs / ours);
}

}  // namespace
}  // namespace tenora

int main(int argc, char** argv) {
  tenora::StepThroughPreviews({});
  if (argc > 1) {
    tenora::RunOnThreads(argv[1], tenora::kTemplate);
    tenora::RunOnThreads(argv[1], tenora::kTemplateWithForms);
    tenora::StepThroughPreviews(argv[1]);
  }
  tenora::MergeLetters(tenora::kTemplate, "load and merge", false);
  tenora::MergeLetters(tenora::kTemplate, "load, merge and save", true);
  tenora::MergeLetters(tenora::kTemplateWithForms, "load and merge, with forms", false);
  tenora::RepeatRows();
  tenora::PrintReceipts();
  return 0;
}
