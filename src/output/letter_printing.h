// Printing a letter page by page inside the user's margins, on the current printer.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "data/settings.h"
#include "platform/dialogs/dialogs.h"
#include "platform/printing/printing.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Twips, as the printer set-up stores them.
struct PageMargins {
  int top = 0, bottom = 0, left = 0, right = 0;

  bool operator==(const PageMargins&) const = default;
};

// The four margins of the printer set-up, each 0 when not stored. Raises 13 (Type mismatch) or 6
// (Overflow) for a stored text that is no 32-bit number.
PageMargins StoredMargins(Settings& settings);

// The margins that a letter is printed with: each one that the printer set-up stores, and where it
// stores none (0), the letter's own, which a word processor wrote.
PageMargins MarginsOf(const richtext::PageSetup& page, const PageMargins& stored);

// Prints the whole document inside the margins, `stored` being those of the printer set-up. The
// letter's own that leave no room on the printer's paper do not count. Opens a job under the title
// or, in an open job, starts on a new page; the job stays open. Raises 482 (Printer error) when the
// margins leave no room or the printer refuses, and 32755 (Cancel was selected) when `stop_asked`,
// asked between the pages, returns true; a job opened here is then cancelled.
void PrintDocument(printing::Printer& printer, const richtext::Document& document,
                   const std::string& title, const PageMargins& stored,
                   const std::function<bool()>& stop_asked = {});

class PrinterMod {
 public:
  PrinterMod(printing::Printers& printers, Settings& settings)
      : printers_(printers), settings_(settings) {}

  PageMargins LoadMargins() { return StoredMargins(settings_); }

  // Prints the whole content on the current printer: opens a job under the title or, in an open
  // job, starts on a new page. The job stays open for further letters until EndJob. Raises 482
  // (Printer error) when the margins leave no room or the printer refuses, 32755 when StopAsked
  // says so.
  void PrintRichText(const RichTextBox& box, const std::string& title);

  // Submits the job, if one is open. For the PDF printer the result is the file's path,
  // else empty.
  std::filesystem::path EndJob();
  // Discards the job, if one is open, without printing any of it.
  void CancelJob() { printers_.Current().CancelJob(); }

  // Lets the user pick the current printer, and of one letter the pages; false when cancelled.
  bool ChoosePrinter(Dialogs& dialogs,
                     printing::Printers::Offer offer = printing::Printers::Offer::kWhole,
                     int page_count = 0);

  // The letter's on the current printer; 0 where it cannot be laid out, or not soon.
  int PageCount(const RichTextBox& box);

  // The number of installed printers; 0, when they cannot be read either, tells callers not to
  // print.
  int PrinterCount();

  // Polled between pages; may be empty.
  std::function<bool()> StopAsked;

 private:
  printing::Printers& printers_;
  Settings& settings_;
};

}  // namespace tenora
