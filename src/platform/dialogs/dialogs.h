// Message boxes, input boxes and choosers: in a window, on a terminal or from a script.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/dialogs/page_ranges.h"

namespace tenora {

inline constexpr const char* kApplicationTitle = "Tenora Mail Merge Facility";

enum class Buttons { kOk, kOkCancel, kYesNo, kYesNoCancel };
enum class Icon { kNone, kQuestion, kInformation, kExclamation, kCritical };
enum class Answer { kOk, kCancel, kYes, kNo, kOther };

struct MessageBox {
  std::string text;
  std::string title = kApplicationTitle;
  Buttons buttons = Buttons::kOk;
  Icon icon = Icon::kNone;
  // The answer for Enter, and for a box that nobody can see.
  Answer default_answer = Answer::kOk;
  // The caption of one more button, which answers kOther. A box without windows has none.
  std::string other_button = {};
};

// What a printer can be set to, such as its paper tray.
struct PrinterSetting {
  struct Value {
    std::string value;  // for the printer
    std::string label;  // for people
  };
  std::string name;  // for the printer
  std::string label;
  std::vector<Value> values;
  std::string preset;  // the label of how the printer is set; empty if unknown
};

// Names and values of PrinterSetting.
using ChosenSettings = std::vector<std::pair<std::string, std::string>>;

struct OfferedPrinter {
  std::string name;
  bool on_paper = true;  // false: a file, of which there are no copies and no sides
  // Asks the printer, which may take a moment; empty: it has no settings.
  std::function<std::vector<PrinterSetting>()> settings = {};
};

enum class Sides { kAsPrinterIsSet, kOne, kBothLongEdge, kBothShortEdge };

struct PrintChoice {
  std::size_t printer = 0;  // position among those on offer
  int copies = 1;
  bool landscape = false;
  Sides sides = Sides::kAsPrinterIsSet;
  bool collate = true;  // whole copies, not each page several times
  // All where there is no range; no value: pages are not to be chosen.
  std::optional<std::vector<PageRange>> pages = std::nullopt;
  // Of the letter as it would be printed so; 0 where that is not known.
  int page_count = 0;
  ChosenSettings settings = {};  // of the printer
};

// A question that one letter of many asks while it is made.
struct LetterQuestion {
  std::string prompt;
  std::string progress = {};  // "3 of 33 letters"; empty outside a run
};

struct LetterAnswer {
  enum class Way {
    kText,
    kNone,     // left without an answer
    kLater,    // not asked now: its code stays in the letter
    kStopRun,  // this letter and those after it are not to be made; never without progress
  };
  Way way = Way::kNone;
  std::string text = {};
  bool for_all = false;  // kText: the answer holds for every later letter too
};

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  // kCancel also for a Yes/No question that is closed or left by Escape.
  virtual Answer Show(const MessageBox& box) = 0;
  // What the user typed, none when cancelled.
  virtual std::optional<std::string> AskText(const std::string& prompt,
                                             const std::string& title = kApplicationTitle,
                                             const std::string& default_answer = {}) = 0;
  virtual LetterAnswer AskForLetter(const LetterQuestion& question) {
    const std::optional<std::string> text = AskText(question.prompt);
    if (!text) return {};
    return {.way = LetterAnswer::Way::kText, .text = *text};
  }
  // Where no item is to be chosen until the user does so.
  static constexpr std::size_t kNoItem = static_cast<std::size_t>(-1);
  // Position of the chosen item, none when cancelled. `default_item`, or kNoItem, is chosen first.
  virtual std::optional<std::size_t> Choose(const std::string& title,
                                            const std::vector<std::string>& items,
                                            std::size_t default_item) = 0;
  // The printer and how it is to print, none when cancelled. `shown` is the initial choice.
  // Without a window only the printer is asked for.
  virtual std::optional<PrintChoice> ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                                   const PrintChoice& shown) {
    std::vector<std::string> names;
    for (const OfferedPrinter& printer : printers) names.push_back(printer.name);
    const std::optional<std::size_t> chosen = Choose("Print", names, shown.printer);
    if (!chosen) return std::nullopt;
    PrintChoice choice = shown;
    choice.printer = *chosen;
    return choice;
  }
  // A file that exists, none when cancelled. The filter is "Name|patterns" pairs separated by "|",
  // the patterns by ";" ("Pictures|*.bmp;*.ico"). Any other file may be chosen as well.
  virtual std::optional<std::filesystem::path> ChooseFileToOpen(const std::string& title,
                                                                const std::string& filter) = 0;
  // Where to save. An existing file may be chosen; a window asks for confirmation.
  virtual std::optional<std::filesystem::path> ChooseFileToSave(
      const std::string& title, const std::string& filter,
      const std::filesystem::path& suggestion) = 0;

  // An OK-only box without icon.
  void Say(const std::string& text, const std::string& title = kApplicationTitle) {
    Show(MessageBox{.text = text, .title = title});
  }
};

}  // namespace tenora
