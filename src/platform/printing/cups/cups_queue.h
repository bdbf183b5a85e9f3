// The queues of the CUPS server. None where no server answers.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/dialogs/dialogs.h"
#include "platform/printing/paper_size.h"

namespace tenora::printing {

struct CupsQueues {
  std::vector<std::string> names;
  std::string default_name;  // empty when there is none
};

CupsQueues ListCupsQueues();

// The queue's default paper; RegionalPaper where the queue reports none.
Paper PaperOfCupsQueue(const std::string& queue);

// How often and on which sides of the paper a job is printed.
struct JobOptions {
  int copies = 1;
  Sides sides = Sides::kAsPrinterIsSet;
};

// Sends a PDF file as one job. Raises 482 (Printer error) naming queue, title and the reason.
void SubmitToCups(const std::string& queue, const std::filesystem::path& file,
                  const std::string& title, const JobOptions& options);

}  // namespace tenora::printing
