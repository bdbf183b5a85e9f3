// What is asked of a run of letters; the run log keeps it, so that the run can be resumed.
#pragma once

#include <filesystem>
#include <optional>
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
  std::string subject;  // of the e-mails
  std::string printer;  // by name; the caller makes it the current one
  bool pdf = false;     // a PDF beside each letter
  // Of the letters' files, as LetterNames takes it; none: that of the settings, which the run fills
  // in.
  std::optional<std::string> name_pattern;
  // Of all letters together, written at the end of the run and again when it is resumed; an empty
  // path is the run log's, ending in ".pdf" or ".csv".
  std::optional<std::filesystem::path> one_pdf;    // ends in ".pdf"
  bool duplex = false;                             // each letter in it begins on a front side
  std::optional<std::filesystem::path> post_list;  // a list of the letters; ends in ".csv"
  PromptAnswers answers;                           // prompts that are not asked letter by letter
  std::vector<Recipient> recipients;
  std::string database;  // the file of the rental data, which the run fills in
};

}  // namespace tenora
