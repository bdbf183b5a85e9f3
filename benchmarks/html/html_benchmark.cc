// RTF to HTML by the classic rules and as a document: seconds for a letter of 2.2 MB, how that
// grows with ten times the letter, and the ratio to unrtf and pandoc where they are installed
// (their start included).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "output/rtf_to_html.h"
#include "platform/runtime/files.h"

namespace {

constexpr std::size_t kLetterSize = 2'200'000;

// A letter in the form the editor keeps, of about `size` bytes: plain paragraphs, headings, aligned
// lines and lists.
std::string Letter(std::size_t size) {
  const std::string head =
      "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang5129{\\fonttbl{\\f0\\fnil\\fcharset0 Arial;}"
      "{\\f1\\fnil\\fcharset2 Symbol;}}\r\n"
      "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n\\viewkind4\\uc1";
  const std::string paragraphs =
      "\\pard\\f0\\fs24\\cf1 Dear \\b Tenant\\b0 , the rent of your home is \\i $420.00\\i0  a "
      "week\\'85 at the caf\\'e9, and is due on the first day of every month without fail\\par\r\n"
      "\\pard\\qc\\cf2\\fs20 A \\ul centred\\ulnone  line of K\\u333?whai & Harbour\\par\r\n"
      "\\pard{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'B7}}\\fi-200"
      "\\li200\\cf1\\fs22 Please pay on time, on the first day of the month\\par\r\n";
  std::string letter = head;
  letter.reserve(size + paragraphs.size());
  while (letter.size() < size) letter += paragraphs;
  return letter + "}\r\n";
}

template <typename Action>
double Seconds(Action&& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The median of an odd number of runs.
template <typename Action>
double Median(int runs, Action&& action) {
  std::vector<double> times;
  for (int run = 0; run < runs; ++run) times.push_back(Seconds(action));
  std::ranges::sort(times);
  return times[times.size() / 2];
}

double Convert(const std::string& letter, const char* options) {
  std::size_t written = 0;
  const double seconds = Median(9, [&] { written = tenora::RtfToHtml(letter, options).size(); });
  std::printf("tenora %-5s %6.1f MB  %8.4f s  (%.1f MB of HTML)\n", options,
              static_cast<double>(letter.size()) / 1e6, seconds,
              static_cast<double>(written) / 1e6);
  return seconds;
}

// Of one converter, for the letter and for ten times the letter.
double Measure(const char* options) {
  const double once = Convert(Letter(kLetterSize), options);
  const double ten_times = Convert(Letter(10 * kLetterSize), options);
  std::printf("ten times the letter takes %.1f times the time\n", ten_times / once);
  return once;
}

void Compare(const char* peer, const std::string& command, double classic, double document) {
  const double seconds = Median(3, [&] {
    if (std::system(command.c_str()) != 0) std::printf("%s failed\n", peer);
  });
  std::printf("%-7s %24.4f s  tenora is %.0f times as fast, with +D %.0f times\n", peer, seconds,
              seconds / classic, seconds / document);
}

bool IsInstalled(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace

int main() {
  const double classic = Measure("+U+E");
  const double document = Measure("+D");

  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / "tenora-html-benchmark.rtf";
  tenora::WriteWholeFile(file, Letter(kLetterSize));
  const std::string quoted = file.string();
  if (IsInstalled("unrtf"))
    Compare("unrtf", "unrtf --html --nopict " + quoted + " >/dev/null 2>&1", classic, document);
  if (IsInstalled("pandoc"))
    Compare("pandoc", "pandoc -f rtf -t html " + quoted + " >/dev/null 2>&1", classic, document);
  std::filesystem::remove(file);
}
