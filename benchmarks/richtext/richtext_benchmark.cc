// How fast letters are brought into canonical form. The letter is made here: headings, formatted
// text, codes split as word processors split them, lists, a table for every ten paragraphs.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"

namespace {

std::string LetterOf(std::size_t bytes) {
  std::string letter =
      "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fnil\\fcharset0 Arial;}"
      "{\\f1\\froman\\fcharset0 Times New Roman;}}{\\colortbl ;\\red255\\green0\\blue0;}"
      "{\\stylesheet{\\s0\\fs24 Normal;}{\\s1\\sbasedon0\\b\\fs32 Heading;}}";
  for (int i = 0; letter.size() < bytes; ++i) {
    letter += "\\pard\\plain\\s1\\sb240\\f0\\fs32\\b Heading " + std::to_string(i) + "\\par\r\n";
    letter +=
        "\\pard\\plain\\qj\\f1\\fs24{\\insrsid1 Dear <<Tenant}{\\insrsid2  Name>>}, the rent of "
        "{\\b <<Current Rent>>} is {\\cf1\\ul due} on \\'93<<Print Date>>\\'94, M\\u257?huta. "
        "Please pay it into the account that you know, and call us when that is a "
        "problem.\\par\r\n";
    if (i % 10 == 0)
      letter +=
          "\\trowd\\trgaph108\\cellx3000\\cellx6000\\pard\\intbl one\\cell "
          "two\\cell\\row\\pard\r\n";
  }
  return letter + "}";
}

void Canonicalise(benchmark::State& state) {
  const std::string letter = LetterOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(tenora::richtext::WriteRtf(tenora::richtext::ReadRtf(letter)));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(letter.size()));
}
BENCHMARK(Canonicalise)->Arg(10 << 10)->Arg(2 << 20)->Arg(20 << 20)->Unit(benchmark::kMillisecond);

void MergeFortyFiveCodes(benchmark::State& state) {
  tenora::RichTextBox box;
  const std::string letter =
      tenora::richtext::WriteRtf(tenora::richtext::ReadRtf(LetterOf(10 << 10)));
  for (auto _ : state) {
    for (int i = 0; i < 45; ++i) {
      std::string source = letter;
      source += box.SourceForm("Größe");
      box.SetTextRTF(std::move(source));
    }
    benchmark::DoNotOptimize(box.TextRTF());
  }
}
BENCHMARK(MergeFortyFiveCodes)->Unit(benchmark::kMicrosecond);

double Seconds(std::size_t bytes) {
  const std::string letter = LetterOf(bytes);
  const auto start = std::chrono::steady_clock::now();
  benchmark::DoNotOptimize(tenora::richtext::WriteRtf(tenora::richtext::ReadRtf(letter)));
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  std::printf("20 MB takes %.1f times as long as 2 MB\n", Seconds(20 << 20) / Seconds(2 << 20));
  return 0;
}
