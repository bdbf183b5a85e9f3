// A letter as a PDF in memory, laid out as on paper with the stored margins.
#pragma once

#include <functional>
#include <string>

#include "data/settings.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Raises 482 (Printer error), and 32755 when `stop_asked`, polled between pages, returns true.
std::string MakeLetterPdf(const RichTextBox& letter, const std::string& title, Settings& settings,
                          const std::function<bool()>& stop_asked = {});

}  // namespace tenora
