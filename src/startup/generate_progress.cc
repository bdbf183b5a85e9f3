#include "startup/generate_progress.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "platform/dialogs/terminal_text.h"

namespace tenora {
namespace {

constexpr std::chrono::milliseconds kBetweenUpdates{200};
constexpr std::chrono::seconds kBetweenLines{3};
// A warning that many letters share is shown this often, then counted.
constexpr std::size_t kMostOfAKind = 3;

std::string Letters(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " letter" : " letters");
}

// "Jane Smith (T00001)"; the number finds somebody without a name in the run log.
std::string Name(const LetterReport& report) {
  const Recipient& recipient = report.recipient;
  if (recipient.name.empty() && recipient.code.empty()) {
    return "Recipient " + std::to_string(report.number) + ", without a name";
  }
  return TerminalLine(recipient.code.empty() ? recipient.name
                                             : recipient.name + " (" + recipient.code + ")");
}

std::string Duration(double seconds) {
  const auto whole = static_cast<long long>(std::ceil(seconds));
  if (whole < 120) return std::to_string(whole) + " s";
  if (whole < 7200) return std::to_string((whole + 59) / 60) + " min";
  return std::to_string((whole + 3599) / 3600) + " h";
}

// One decimal below ten letters a second.
std::string Rate(double rate) {
  const auto tenths = static_cast<long long>(std::llround(rate * 10));
  if (tenths >= 100) return std::to_string((tenths + 5) / 10);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

const char* DoneWord(Destination destination, bool composed) {
  if (composed) return "opened in the mail program";
  switch (destination) {
    case Destination::kFolder:
      return "saved";
    case Destination::kPrinter:
      return "printed";
    case Destination::kEmail:
      return "mailed";
  }
  return "";
}

// A word of a command line as a shell takes it.
std::string ShellWord(const std::string& text) {
  std::string word = "'";
  for (const char c : text) {
    if (c == '\'') {
      word += "'\\''";
    } else {
      word += c;
    }
  }
  return TerminalLine(word + "'");
}

}  // namespace

void GenerateProgress::Started(std::size_t count, const std::filesystem::path& log) {
  count_ = count;
  started_ = shown_ = Clock::now();
  errors_ << Letters(count) << " to make. Run log: " << TerminalLine(log.string()) << std::endl;
}

void GenerateProgress::Saved(const std::filesystem::path& file) {
  // Results and the count may share a terminal.
  if (parts_.output_is_terminal) ClearLine();
  output_ << file.string() << '\n';
  if (parts_.output_is_terminal) output_.flush();
}

void GenerateProgress::LetterFinished(const LetterReport& report) {
  ++finished_;
  if (!report.warnings.empty()) Warn(report);
  // Held letters and those without an address are listed at the end.
  if (report.result != LetterReport::Result::kDone &&
      report.result != LetterReport::Result::kHeld &&
      report.result != LetterReport::Result::kNoAddress) {
    ClearLine();
    errors_ << Name(report) << ": " << TerminalLine(report.problem) << std::endl;
  }
  const Clock::time_point now = Clock::now();
  const bool due =
      parts_.errors_is_terminal ? now - shown_ >= kBetweenUpdates : now - shown_ >= kBetweenLines;
  if (!due) return;
  shown_ = now;
  ShowCount();
}

void GenerateProgress::Warn(const LetterReport& report) {
  for (const std::string& warning : report.warnings) {
    const std::size_t met = ++warnings_[warning];
    if (met > kMostOfAKind) continue;
    ClearLine();
    errors_ << Name(report) << ": " << TerminalLine(warning) << std::endl;
  }
}

void GenerateProgress::JobPrinted(std::size_t letters, const std::filesystem::path& file) {
  ClearLine();
  if (!file.empty()) output_ << file.string() << '\n';
  errors_ << Letters(letters) << " printed in one job." << std::endl;
}

void GenerateProgress::ShowCount() {
  const std::size_t finished = std::min(finished_, count_);
  const double seconds = std::chrono::duration<double>(Clock::now() - started_).count();
  const double rate = seconds > 0 ? static_cast<double>(finished) / seconds : 0;
  std::string line =
      std::to_string(finished) + " of " + Letters(count_) + ", " + Rate(rate) + " a second";
  if (rate > 0) line += ", " + Duration(static_cast<double>(count_ - finished) / rate) + " left";
  if (!parts_.errors_is_terminal) {
    errors_ << line << std::endl;
    return;
  }
  const std::size_t length = line.size();
  if (line_length_ > length) line.append(line_length_ - length, ' ');
  line_length_ = length;
  errors_ << '\r' << line << std::flush;
}

void GenerateProgress::ClearLine() {
  if (line_length_ == 0) return;
  errors_ << '\r' << std::string(line_length_, ' ') << '\r' << std::flush;
  line_length_ = 0;
}

void GenerateProgress::ShowHeld(const GenerationSummary& summary) {
  if (summary.held.empty()) return;
  for (const LetterReport& report : summary.held) {
    errors_ << "Held back: " << Name(report) << ": " << TerminalLine(report.problem) << "\n  "
            << TerminalLine(report.file.string()) << "\n";
  }
  errors_ << "  Correct the data, the template or the letter's file and resume the run; with "
             "--send-held the letters go out as\n  they are: tenora generate --resume "
          << ShellWord(summary.log.string()) << "\n";
}

void GenerateProgress::ShowWithoutAddress(const GenerationSummary& summary) {
  if (summary.no_address.empty()) return;
  const std::size_t count = summary.no_address.size();
  errors_ << count << (count == 1 ? " has" : " have") << " no e-mail address:\n";
  for (const LetterReport& report : summary.no_address) {
    errors_ << "  " << Name(report) << ", " << TerminalLine(report.file.string()) << "\n";
  }
  errors_
      << "  Print their letters and take them to the post, or enter the addresses and resume the "
         "run.\n";
}

void GenerateProgress::ShowSummary(const GenerationSummary& summary, Destination destination) {
  ClearLine();
  for (const auto& [warning, met] : warnings_) {
    if (met <= kMostOfAKind) continue;
    errors_ << "In " << Letters(met - kMostOfAKind) << " more: " << TerminalLine(warning) << "\n";
  }
  if (summary.stopped) errors_ << "Stopped. ";
  errors_ << summary.done << " of " << Letters(summary.asked) << ' '
          << DoneWord(destination, summary.composed);
  if (summary.done_before > 0) errors_ << " (" << summary.done_before << " of them before)";
  if (!summary.failed.empty()) errors_ << ", " << summary.failed.size() << " failed";
  if (!summary.held.empty()) errors_ << ", " << summary.held.size() << " held back";
  if (!summary.in_doubt.empty()) errors_ << ", " << summary.in_doubt.size() << " in doubt";
  if (!summary.no_address.empty()) {
    errors_ << ", " << summary.no_address.size() << " without an address";
  }
  if (summary.untouched() > 0) errors_ << ", " << summary.untouched() << " not begun";
  errors_ << ".\n";
  if (summary.composed && summary.done > summary.done_before) {
    errors_
        << "Nothing is sent automatically: the option SmtpSend is off. Send each letter from its "
           "window.\n";
  }
  ShowHeld(summary);
  ShowWithoutAddress(summary);
  for (const LetterReport& report : summary.in_doubt) {
    errors_ << "In doubt: " << Name(report) << ", " << TerminalLine(report.file.string()) << "\n";
  }
  if (!summary.in_doubt.empty()) {
    errors_
        << (destination == Destination::kEmail
                ? "  The mail server may or may not have a letter in doubt, so it is never sent "
                  "again automatically. Ask the\n  recipient or look in the server's log; if it "
                  "did not arrive, send it by naming the --recipient alone.\n"
                : "  A letter in doubt may or may not be on paper, so it is never printed again "
                  "automatically. Look at the printer;\n  if it is missing, print the file.\n");
  }
  const bool missing =
      !summary.failed.empty() || !summary.no_address.empty() || summary.untouched() > 0;
  if (missing) {
    errors_ << "To make the missing letters: tenora generate --resume "
            << ShellWord(summary.log.string()) << "\n";
  }
  errors_ << std::flush;
}

}  // namespace tenora
