// The queues of the CUPS server. None where no server answers.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dialogs/dialogs.h"
#include "platform/printing/paper_size.h"

namespace tenora::printing {

struct CupsQueues {
  std::vector<std::string> names;
  std::string default_name;  // empty when there is none
};

CupsQueues ListCupsQueues();

// Among the settings of a queue, the size of its paper.
inline constexpr std::string_view kPaperSetting = "media";

// The paper of this size, or by default the queue's own; RegionalPaper where the queue reports
// none.
Paper PaperOfCupsQueue(const std::string& queue, const std::string& size = {});

// What the queue lets people choose beside copies and sides: paper, tray, colours and the like.
// None where no server answers.
std::vector<PrinterSetting> SettingsOfCupsQueue(const std::string& queue);

// How often, on which sides of the paper and with which of the printer's settings a job is printed.
struct JobOptions {
  int copies = 1;
  Sides sides = Sides::kAsPrinterIsSet;
  bool collate = true;
  ChosenSettings settings = {};
};

// Sends a PDF file as one job. Raises 482 (Printer error) naming queue, title and the reason.
void SubmitToCups(const std::string& queue, const std::filesystem::path& file,
                  const std::string& title, const JobOptions& options);

}  // namespace tenora::printing
