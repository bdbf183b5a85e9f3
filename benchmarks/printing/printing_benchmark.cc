// Letters to PDF, one file each, against a word processor that converts the same letters in one
// run; and whether a document of ten times the length takes ten times the time.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/printing/document_length.h"
#include "platform/printing/printing.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

constexpr int kPeerLetters = 50;

std::string Letter(int paragraphs) {
  std::string rtf =
      "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}{\\f1\\fswiss "
      "Arial;}}\\pard\\qc\\f1\\b\\fs32 Notice of rent increase\\b0\\par\\pard\\f0\\fs24\\par ";
  for (int i = 0; i < paragraphs; ++i) {
    rtf +=
        "The rent for the premises at 12 Kowhai Street changes from \\b $420.00\\b0  a week to "
        "$435.00 a week on Saturday, 21 November 2026. Please change your payments from that "
        "day on; the next payment falls due a week later.\\par\\par ";
  }
  return rtf + "Yours sincerely\\par}";
}

class Scratch {
 public:
  Scratch() {
    std::string name = (std::filesystem::temp_directory_path() / "tenora-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
  }
  ~Scratch() { std::filesystem::remove_all(path_); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

void PrintDocument(printing::Printer& printer, const richtext::Document& document,
                   const std::string& title = "Letter") {
  constexpr int kMargin = 1440;
  printer.StartDocument(title, {});
  printing::FormatRange range;
  range.document = &document;
  range.print_rect = {kMargin, kMargin, printer.Width() - kMargin, printer.Height() - kMargin};
  const int length = printing::DocumentLength(document);
  while ((range.range.from = printer.Format(range)) < length) printer.NewPage();
  printer.Format({});
  printer.EndJob();
}

// Seconds the word processor needs for as many letters; 0 where it is not installed.
double PeerSeconds(const std::filesystem::path& folder) {
  std::string command = "soffice --headless -env:UserInstallation=file://" + folder.string() +
                        "/profile --convert-to pdf --outdir " + folder.string() + "/out";
  for (int i = 0; i < kPeerLetters; ++i) {
    const auto file = folder / ("letter" + std::to_string(i) + ".rtf");
    WriteWholeFile(file, Letter(6));
    command += " " + file.string();
  }
  const auto start = std::chrono::steady_clock::now();
  const bool done = std::system((command + " >/dev/null 2>&1").c_str()) == 0;
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  return done ? taken.count() : 0;
}

// Start to finish of a program that prints one letter, fonts and all.
void FirstLetter(benchmark::State& state) {
  const Scratch scratch;
  for (auto _ : state) {
    const pid_t child = ::fork();
    if (child == 0) {
      const auto printers =
          printing::Printers::Create({printing::kPdfPrinterName, scratch.path() / "first.pdf"});
      RichTextBox box;
      box.SetTextRTF(Letter(6));
      PrintDocument(printers->Current(), box.Document());
      ::_exit(0);
    }
    ::waitpid(child, nullptr, 0);
  }
}
// Before the others, whose fonts a forked process would inherit.
BENCHMARK(FirstLetter)->Unit(benchmark::kMillisecond);

void OnePageLetters(benchmark::State& state) {
  const Scratch scratch;
  const auto printers =
      printing::Printers::Create({printing::kPdfPrinterName, scratch.path() / "pdf"});
  RichTextBox box;
  box.SetTextRTF(Letter(6));
  printing::Printer& printer = printers->Current();
  PrintDocument(printer, box.Document());
  const auto start = std::chrono::steady_clock::now();
  // As in an agency's run, no two letters have one name.
  int recipient = 0;
  for (auto _ : state) {
    PrintDocument(printer, box.Document(), "Letter - Tenant " + std::to_string(++recipient));
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const double rate = static_cast<double>(state.iterations()) / taken.count();
  state.counters["letters/s"] = rate;
  static const double peer_seconds = PeerSeconds(scratch.path());
  if (peer_seconds > 0) state.counters["times the peer"] = rate * peer_seconds / kPeerLetters;
}
BENCHMARK(OnePageLetters)->Unit(benchmark::kMillisecond);

void DocumentOfParagraphs(benchmark::State& state) {
  const Scratch scratch;
  const auto printers =
      printing::Printers::Create({printing::kPdfPrinterName, scratch.path() / "long.pdf"});
  RichTextBox box;
  box.SetTextRTF(Letter(static_cast<int>(state.range(0))));
  for (auto _ : state) PrintDocument(printers->Current(), box.Document());
  state.counters["us/paragraph"] =
      benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)) / 1e6,
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(DocumentOfParagraphs)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tenora

BENCHMARK_MAIN();
