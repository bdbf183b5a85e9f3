// What is asked of a run of letters; the run log keeps it, so that the run can be resumed.
#pragma once

#include <string>
#include <vector>

#include "letters/recipients.h"
#include "merge/prompts.h"

namespace tenora {

enum class Destination { kFolder, kPrinter, kEmail };

struct GenerationRequest {
  std::string template_kind;  // "Templates" or "Owner Templates"
  std::string template_name;
  Destination destination = Destination::kFolder;
  std::string subject;    // of the e-mails
  std::string printer;    // by name; the caller makes it the current one
  bool pdf = false;       // a PDF beside each letter
  PromptAnswers answers;  // prompts that are not asked letter by letter
  std::vector<Recipient> recipients;
  std::string database;  // the file of the rental data, which the run fills in
};

}  // namespace tenora
