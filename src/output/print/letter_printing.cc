#include "output/letter_printing.h"

#include <algorithm>

#include "platform/printing/document_length.h"
#include "platform/printing/preview_pages.h"
#include "platform/richtext/page_heads.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Mail\\PrinterSetup";
constexpr int kLongestCounted = 300'000;  // characters; laid out while somebody waits

// The page less the margins. The device counts from its printable corner, so margins of 0 start at
// minus the physical offset: at the paper's edge.
printing::Rect PrintRect(const printing::Paper& paper, const PageMargins& margins) {
  const auto bounded = [](long long twips) {
    return static_cast<int>(std::clamp(twips, -1'000'000'000LL, 1'000'000'000LL));
  };
  printing::Rect rect;
  rect.left = bounded(0LL + margins.left - paper.offset_x);
  rect.top = bounded(0LL + margins.top - paper.offset_y);
  rect.right = bounded(0LL + paper.width - margins.right - paper.offset_x);
  rect.bottom = bounded(0LL + paper.height - margins.bottom - paper.offset_y);
  return rect;
}

// The smallest printable width and height, in twips.
constexpr int kLeastRoom = 144;

bool HasRoom(const printing::Rect& rect) {
  return rect.right - rect.left >= kLeastRoom && rect.bottom - rect.top >= kLeastRoom;
}

void RequireRoom(const printing::Rect& rect, const PageMargins& margins) {
  if (HasRoom(rect)) return;
  throw StandardError(error_number::kPrinterError, "the page margins leave no room to print (top " +
                                                       std::to_string(margins.top) + ", bottom " +
                                                       std::to_string(margins.bottom) + ", left " +
                                                       std::to_string(margins.left) + ", right " +
                                                       std::to_string(margins.right) + " twips)");
}

// Releases the layout, and cancels the job if this letter opened it and failed.
class LetterPrint {
 public:
  explicit LetterPrint(printing::Printer& printer)
      : printer_(printer), opens_job_(!printer.JobOpen()) {}
  LetterPrint(const LetterPrint&) = delete;
  LetterPrint& operator=(const LetterPrint&) = delete;
  ~LetterPrint() {
    printer_.Format({});
    if (!done_ && opens_job_) printer_.CancelJob();
  }
  void Done() { done_ = true; }

 private:
  printing::Printer& printer_;
  bool opens_job_, done_ = false;
};

}  // namespace

PageMargins MarginsOf(const richtext::PageSetup& page, const PageMargins& stored) {
  const auto either = [](int set, int own) { return set != 0 ? set : own; };
  return {.top = either(stored.top, page.top),
          .bottom = either(stored.bottom, page.bottom),
          .left = either(stored.left, page.left),
          .right = either(stored.right, page.right)};
}

void PrintDocument(printing::Printer& printer, const richtext::Document& document,
                   const std::string& title, const PageMargins& stored,
                   const std::function<bool()>& stop_asked) {
  printing::FormatRange range;
  range.document = &document;
  const printing::Paper paper = printing::PaperOf(printer, document.page);
  const richtext::PageSetup page = richtext::WithGutter(document.page, document.page);
  range.page_rect = {0, 0, paper.width, paper.height};
  range.print_rect = PrintRect(paper, MarginsOf(page, stored));
  range.own_margins = {.left = stored.left == 0,
                       .top = stored.top == 0,
                       .right = stored.right == 0,
                       .bottom = stored.bottom == 0};
  // A letter made for larger paper.
  if (!HasRoom(range.print_rect)) range.print_rect = PrintRect(paper, stored);
  RequireRoom(range.print_rect, stored);

  LetterPrint letter(printer);
  printer.StartDocument(title, document.page);
  const int length = printing::DocumentLength(*range.document);
  for (;;) {
    const int next = printer.Format(range);
    if (stop_asked && stop_asked()) throw StandardError(error_number::kCancelled);
    if (next >= length) break;
    if (next <= range.range.from) {
      throw StandardError(error_number::kPrinterError,
                          "\"" + title + "\" cannot be split into pages");
    }
    printer.NewPage();
    range.range.from = next;
  }
  letter.Done();
}

PageMargins StoredMargins(Settings& settings) {
  const auto margin = [&](const char* key) {
    return settings.GetSettingAs(ToInt32, kSection, key, "0");
  };
  PageMargins margins;
  margins.top = margin("TopMargin");
  margins.bottom = margin("BottomMargin");
  margins.left = margin("LeftMargin");
  margins.right = margin("RightMargin");
  return margins;
}

void PrinterMod::PrintRichText(const RichTextBox& box, const std::string& title) {
  PrintDocument(printers_.Current(), box.Document(), title, LoadMargins(), StopAsked);
}

std::filesystem::path PrinterMod::EndJob() { return printers_.Current().EndJob(); }

bool PrinterMod::ChoosePrinter(Dialogs& dialogs, printing::Printers::Offer offer, int page_count) {
  return printers_.Choose(dialogs, offer, page_count);
}

int PrinterMod::PageCount(const RichTextBox& box) {
  const richtext::Document& document = box.Document();
  if (printing::DocumentLength(document) > kLongestCounted) return 0;
  try {
    printing::PreviewPages pages(printers_.Current());
    PrintDocument(pages.Current(), document, {}, LoadMargins(), {});
    return pages.PageCount();
  } catch (const RuntimeError&) {
    // No such printer, or margins that leave no room: printing tells it.
    return 0;
  }
}

int PrinterMod::PrinterCount() {
  try {
    return printers_.Count();
  } catch (const std::exception&) {
    // Deliberate: if printers cannot be counted, there are none.
    return 0;
  }
}

}  // namespace tenora
