#include "startup/run_report.h"

#include <ostream>
#include <vector>

#include "letters/template_library.h"
#include "platform/dialogs/terminal_text.h"

namespace tenora {
namespace {

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

std::string WhatIsLeft(const GenerationSummary& summary) {
  std::string text;
  const auto add = [&](std::size_t count, const char* what) {
    if (count > 0) text += ", " + std::to_string(count) + what;
  };
  add(summary.failed.size(), " failed");
  add(summary.held.size(), " held back");
  add(summary.in_doubt.size(), " in doubt");
  add(summary.no_address.size(), " without an address");
  add(summary.untouched(), " not begun");
  return text;
}

void WriteHeld(std::ostream& output, const GenerationSummary& summary) {
  if (summary.held.empty()) return;
  for (const LetterReport& report : summary.held) {
    output << "Held back: " << RecipientText(report) << ": " << TerminalLine(report.problem)
           << "\n  " << TerminalLine(report.file.string()) << "\n";
  }
  output << "  Correct the data, the template or the letter's file and resume the run; with "
            "--send-held the letters go out as\n  they are: tenora generate --resume "
         << ShellWord(summary.log.string()) << "\n";
}

void WriteWithoutAddress(std::ostream& output, const GenerationSummary& summary) {
  if (summary.no_address.empty()) return;
  const std::size_t count = summary.no_address.size();
  output << count << (count == 1 ? " has" : " have") << " no e-mail address:\n";
  for (const LetterReport& report : summary.no_address) {
    output << "  " << RecipientText(report) << ", " << TerminalLine(report.file.string()) << "\n";
  }
  output
      << "  Print their letters and take them to the post, or enter the addresses and resume the "
         "run.\n";
}

void WriteMerged(std::ostream& output, const GenerationSummary& summary) {
  const MergedFiles& merged = summary.merged;
  if (!merged.pdf.empty()) {
    output << "One PDF of " << LettersText(merged.letters) << ", " << merged.pages
           << (merged.pages == 1 ? " page: " : " pages: ") << TerminalLine(merged.pdf.string())
           << "\n";
  }
  for (const LetterReport& report : merged.left_out) {
    output << "Not in the PDF: " << RecipientText(report) << ": " << TerminalLine(report.problem)
           << "\n";
  }
  for (const std::string& problem : merged.problems) output << TerminalLine(problem) << "\n";
  if (!merged.whole()) {
    output << "To make it again: tenora generate --resume " << ShellWord(summary.log.string())
           << "\n";
  }
}

}  // namespace

std::string LettersText(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " letter" : " letters");
}

std::string RecipientText(const LetterReport& report) {
  const Recipient& recipient = report.recipient;
  if (recipient.name.empty() && recipient.code.empty()) {
    return "Recipient " + std::to_string(report.number) + ", without a name";
  }
  return TerminalLine(recipient.code.empty() ? recipient.name
                                             : recipient.name + " (" + recipient.code + ")");
}

void WriteSummary(std::ostream& output, const GenerationSummary& summary, Destination destination) {
  if (summary.stopped) output << "Stopped. ";
  output << summary.done << " of " << LettersText(summary.asked) << ' '
         << DoneWord(destination, summary.composed);
  if (summary.done_before > 0) output << " (" << summary.done_before << " of them before)";
  output << WhatIsLeft(summary) << ".\n";
  if (summary.composed && summary.done > summary.done_before) {
    output
        << "Nothing is sent automatically: the option SmtpSend is off. Send each letter from its "
           "window.\n";
  }
  WriteHeld(output, summary);
  WriteWithoutAddress(output, summary);
  for (const LetterReport& report : summary.in_doubt) {
    output << "In doubt: " << RecipientText(report) << ", " << TerminalLine(report.file.string())
           << "\n";
  }
  if (!summary.in_doubt.empty()) {
    output << (destination == Destination::kEmail
                   ? "  The mail server may or may not have a letter in doubt, so it is never sent "
                     "again automatically. Ask the\n  recipient or look in the server's log; if it "
                     "did not arrive, send it by naming the --recipient alone.\n"
                   : "  A letter in doubt may or may not be on paper, so it is never printed again "
                     "automatically. Look at the printer;\n  if it is missing, print the file.\n");
  }
  const bool missing =
      !summary.failed.empty() || !summary.no_address.empty() || summary.untouched() > 0;
  if (missing) {
    output << "To make the missing letters: tenora generate --resume "
           << ShellWord(summary.log.string()) << "\n";
  }
  WriteMerged(output, summary);
  output << std::flush;
}

void WriteUnfinished(std::ostream& output, const UnfinishedRun& run) {
  output << TerminalLine(run.log.string()) << "\n";
  if (!run.problem.empty()) {
    output << "  " << TerminalLine(run.problem) << std::endl;
    return;
  }
  const GenerationSummary& summary = run.summary;
  const GenerationRequest& request = run.request;
  std::string asked = "\"" + request.template_name + "\" to ";
  asked += request.template_kind == kOwnerTemplates ? "owners" : "tenants";
  if (request.destination == Destination::kEmail) {
    asked += " by e-mail, subject \"" + request.subject + "\"";
  } else if (request.destination == Destination::kPrinter) {
    asked += " on the printer \"" + request.printer + "\"";
  }
  output << "  " << TerminalLine(run.started) << "  " << TerminalLine(asked) << "\n  "
         << summary.done << " of " << LettersText(summary.asked) << " "
         << DoneWord(request.destination, false) << WhatIsLeft(summary) << "\n";
  const auto name = [&](const char* what, const std::vector<LetterReport>& reports) {
    for (const LetterReport& report : reports) {
      output << "  " << what << ": " << RecipientText(report);
      if (!report.problem.empty()) output << ": " << TerminalLine(report.problem);
      output << "\n";
    }
  };
  name("Failed", summary.failed);
  name("Held back", summary.held);
  name("In doubt", summary.in_doubt);
  name("Without an address", summary.no_address);
  for (const std::string& problem : summary.merged.problems) {
    output << "  " << TerminalLine(problem) << "\n";
  }
  output << std::flush;
}

}  // namespace tenora
