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

// A document on its way to paper: what EM_FORMATRANGE did. The layout is kept between the pages of
// one document.
struct FormatRange {
  const richtext::Document* document = nullptr;
  Rect print_rect;  // where text may stand, relative to the device's printable corner
  Rect page_rect;   // the whole page, in the document's orientation
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

  // Opens a job (or, in an open job, starts another document on a new page) under a title, on
  // paper of this orientation. Raises 482 (Printer error) naming printer and title.
  virtual void StartDocument(const std::string& title, Orientation orientation) = 0;
  virtual void NewPage() = 0;
  // Draws what fits of the range on the current page; the result is the position of the first
  // character that did not fit. With `document` null, frees the layout kept from the last call.
  virtual int Format(const FormatRange& range) = 0;
  // Ends the job and hands it on; nothing when none is open. For the PDF printer the result is the
  // path of the file, else empty.
  virtual std::filesystem::path EndJob() = 0;
  // Drops the open job: nothing of it is printed.
  virtual void CancelJob() = 0;
  virtual bool JobOpen() const = 0;
};

// The letter decides the orientation of the printer's paper, the printer its size.
Orientation OrientationOf(const richtext::Document& document);
Paper PaperOf(const Printer& printer, Orientation orientation);

// A printer that draws many documents together, so that fonts are packed once, and gives a PDF of
// each. Every thread may have its own, also off the main thread while HoldQtApplication's result is
// held.
class PdfBatch : public virtual Printer {
 public:
  static std::unique_ptr<PdfBatch> Create();
  // The files of the documents that EndJob ended since the last call, in that order. Raises 482
  // (Printer error); the documents are then lost.
  virtual std::vector<std::string> TakeFiles() = 0;
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
  // job first: one left open on the printer before is dropped.
  virtual bool SetCurrent(std::string_view name) = 0;
  // Raises 482 when TENORA_PRINTER names a printer that is not installed.
  virtual Printer& Current() = 0;
  // Makes the default printer current again, as it is set up by itself.
  virtual void UseDefault() = 0;
  // Shows the chooser, and sets the chosen printer up as asked; false when cancelled.
  virtual bool Choose(Dialogs& dialogs) = 0;
};

}  // namespace tenora::printing
