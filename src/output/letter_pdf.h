// A letter as a PDF in memory, laid out as on paper with the stored margins.
#pragma once

#include <string>

#include "data/settings.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Raises 482 (Printer error) and what writing a scratch file raises.
std::string MakeLetterPdf(const RichTextBox& letter, const std::string& title, Settings& settings);

}  // namespace tenora
