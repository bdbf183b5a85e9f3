// Printers, print jobs, and laying out a range of a document on a page. Lengths are twips.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dialogs/dialogs.h"
#include "platform/printing/paper_size.h"
#include "platform/richtext/document.h"

namespace tenora::printing {

// The printer that is always installed.
inline constexpr const char* kPdfPrinterName = "Print to PDF";

struct Rect {
  int left = 0, top = 0, right = 0, bottom = 0;
};

// Range of positions in a document, counted as DocumentLength does; `to` -1 is the end.
struct CharRange {
  int from = 0, to = -1;
};

// The sides on which the sections of a document have margins of their own.
struct OwnMargins {
  bool left = false, top = false, right = false, bottom = false;
};

// What EM_FORMATRANGE took: a part of a document to draw on a page. The layout is kept between the
// pages of one document.
struct FormatRange {
  const richtext::Document* document = nullptr;
  Rect print_rect;  // the first section's text area, relative to the device's printable corner
  Rect page_rect;   // the whole page, in the document's orientation
  OwnMargins own_margins;  // elsewhere all sections have print_rect's
  CharRange range;
};

// The current printer as a device: size in twips, offsets of its printable corner in pixels, both
// of the paper as the printer is set.
class Printer {
 public:
  virtual ~Printer() = default;
  virtual const std::string& DeviceName() const = 0;
  virtual int Width() const = 0;
  virtual int Height() const = 0;
  virtual int PhysicalOffsetX() const = 0;
  virtual int PhysicalOffsetY() const = 0;
  virtual double TwipsPerPixelX() const = 0;
  virtual double TwipsPerPixelY() const = 0;

  // Whether each page may have the size that the letter names for it, as in a PDF.
  virtual bool TakesAnyPaper() const = 0;

  // Opens a job (or, in an open job, starts another document on a new page) under a title, on
  // paper for this page. Raises 482 (Printer error) naming printer and title.
  virtual void StartDocument(const std::string& title, const richtext::PageSetup& page) = 0;
  virtual void NewPage() = 0;
  // Draws as much of the range as fits on the current page; the result is the position of the
  // first character that did not fit. With `document` null, frees the layout kept from the last
  // call.
  virtual int Format(const FormatRange& range) = 0;
  // Ends the job and submits it; does nothing when none is open. For the PDF printer the result is
  // the path of the file, else empty.
  virtual std::filesystem::path EndJob() = 0;
  // Discards the open job without printing any of it.
  virtual void CancelJob() = 0;
  virtual bool JobOpen() const = 0;
};

// What the printer prints the page on.
Paper PaperOf(const Printer& printer, const richtext::PageSetup& page);

// Prints many documents together, so that fonts are embedded once, and returns a PDF of each.
// Threads other than the main one may have their own while HoldQtApplication's result is held.
class PdfBatch : public virtual Printer {
 public:
  static std::unique_ptr<PdfBatch> Create();
  // The files of the documents that EndJob ended since the last call, in that order. Raises 482
  // (Printer error); the documents are then lost.
  virtual std::vector<std::string> TakeFiles() = 0;
};

// Prints many documents into one PDF file, in which each has a bookmark of its title. Only what the
// pages share, as fonts, is held in memory.
class PdfBook : public virtual Printer {
 public:
  // `title` is the file's. With `front_sides` an empty page follows a document that ends on a front
  // side, if there is a next one, so that on both sides of the paper each begins a sheet.
  static std::unique_ptr<PdfBook> Create(const std::filesystem::path& target,
                                         const std::string& title, bool front_sides);
  // So far, with empty ones. To cancel a document drops all before it too: a page once begun cannot
  // be taken back.
  virtual std::size_t Pages() const = 0;
  // Writes the file, whole or not at all; one of its name is replaced. Raises the errors of
  // FileError, and 482 (Printer error) where there is no document.
  virtual void Finish() = 0;
};

struct PrinterOptions {
  std::string default_printer;       // TENORA_PRINTER; empty: the system's default
  std::filesystem::path pdf_target;  // TENORA_PDF: a folder, or a file when it ends in ".pdf"
};

// The installed printers, the PDF printer first, then CUPS's queues.
class Printers {
 public:
  virtual ~Printers() = default;
  static std::unique_ptr<Printers> Create(PrinterOptions options);
  virtual int Count() const = 0;
  virtual std::vector<std::string> Names() const = 0;
  // Where the PDF printer writes when TENORA_PDF is not set: "Printed" under this data folder.
  virtual void SetDataFolder(const std::filesystem::path& folder) = 0;
  // Makes the printer of this name current, letter case ignored; false when there is none. End a
  // job first: one left open on the previous printer is discarded.
  virtual bool SetCurrent(std::string_view name) = 0;
  // Raises 482 when TENORA_PRINTER names a printer that is not installed.
  virtual Printer& Current() = 0;
  // Makes the default printer current again, with its own settings.
  virtual void UseDefault() = 0;
  // Lets the user choose and set up a printer, which becomes current; false when cancelled. Of one
  // letter the pages of the next job may be chosen; a page that it does not have is no error as
  // long as there is another one, else the job's end raises 482.
  // kPagesAgain: as kPages, with what the user chose last.
  enum class Offer { kWhole, kPages, kPagesAgain };
  // `page_count` is the letter's on the current printer; 0 where it is not known.
  virtual bool Choose(Dialogs& dialogs, Offer offer, int page_count) = 0;
  bool Choose(Dialogs& dialogs) { return Choose(dialogs, Offer::kWhole, 0); }
  // Whether the user chose some of the pages there, and not all.
  virtual bool SomePages() const { return false; }
};

}  // namespace tenora::printing
