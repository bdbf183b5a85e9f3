#include "platform/printing/pdf/pdf_outline.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "platform/printing/pdf/pdf_syntax.h"

namespace tenora::printing {
namespace {

// Holds the trailer, of a few lines.
constexpr std::size_t kEnd = 1024;
constexpr std::size_t kBlock = 4096;

// A file's table of objects, read where it is needed.
class FinishedPdf {
 public:
  explicit FinishedPdf(std::istream& pdf) : pdf_(pdf) {
    pdf_.seekg(0, std::ios::end);
    size_ = static_cast<std::size_t>(std::max<std::streamoff>(pdf_.tellg(), 0));
    const std::string end = Read(size_ - std::min(size_, kEnd), kEnd);
    table_ = PdfNumberBehind(end, "startxref");
    const std::size_t begin = end.rfind("trailer"), close = end.rfind(">>");
    if (begin == std::string::npos || close == std::string::npos || close < begin) {
      UnreadablePdf("no trailer");
    }
    trailer_ = end.substr(begin, close - begin);
    constexpr std::string_view kHead = "xref\n0 ";
    const std::string head = Read(table_, 64);
    if (!head.starts_with(kHead)) UnreadablePdf("no table");
    objects_ = PdfNumberAt(std::string_view(head).substr(kHead.size()));
    entries_ = table_ + head.find('\n', kHead.size()) + 1;
  }

  std::size_t size() const { return size_; }
  std::size_t table() const { return table_; }
  std::size_t objects() const { return objects_; }
  // From "trailer" on, without the end of its dictionary.
  const std::string& trailer() const { return trailer_; }

  // From after "obj" to "endobj".
  std::string Object(std::size_t number) {
    if (number == 0 || number >= objects_) UnreadablePdf("an object is missing");
    const std::size_t start = PdfNumberAt(Read(entries_ + number * kPdfEntrySize, kPdfEntrySize));
    constexpr std::string_view kHead = " obj\n", kBehind = "endobj";
    std::string text;
    while (text.find(kBehind) == std::string::npos) {
      const std::string more = Read(start + text.size(), kBlock);
      if (more.empty()) UnreadablePdf("an object is cut short");
      text += more;
    }
    const std::size_t head = text.find(kHead), end = text.find(kBehind);
    if (head == std::string::npos || head > end) UnreadablePdf("no object");
    return text.substr(head + kHead.size(), end - head - kHead.size());
  }

 private:
  std::string Read(std::size_t from, std::size_t count) {
    std::string bytes(count, '\0');
    pdf_.clear();
    pdf_.seekg(static_cast<std::streamoff>(from));
    pdf_.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(pdf_.gcount(), 0)));
    return bytes;
  }

  std::istream& pdf_;
  std::size_t size_ = 0, table_ = 0, objects_ = 0, entries_ = 0;
  std::string trailer_;
};

std::string Reference(std::size_t number) { return std::to_string(number) + " 0 R"; }

std::vector<std::size_t> PagesOf(FinishedPdf& pdf, const std::string& catalogue) {
  const std::string root = pdf.Object(PdfNumberBehind(catalogue, "/Pages "));
  std::size_t at = root.find("/Kids");
  const std::size_t end = root.find(']', std::min(at, root.size()));
  if (at == std::string::npos || end == std::string::npos) UnreadablePdf("no pages");
  std::vector<std::size_t> pages;
  for (at = root.find_first_of("0123456789", at); at < end;
       at = root.find_first_of("0123456789", at)) {
    pages.push_back(PdfNumberAt(std::string_view(root).substr(at)));
    at = root.find('R', at);
  }
  return pages;
}

}  // namespace

// An incremental update: the file stays as it is, and behind it stand the bookmarks, the catalogue
// that names them, and a table of these objects.
std::string PdfOutline(std::istream& stream, const std::vector<PdfBookmark>& bookmarks) {
  FinishedPdf pdf(stream);
  const std::size_t root = PdfNumberBehind(pdf.trailer(), "/Root ");
  std::string catalogue = pdf.Object(root);
  const std::vector<std::size_t> pages = PagesOf(pdf, catalogue);
  const std::size_t outline = pdf.objects(), first = outline + 1;
  const std::size_t last = outline + bookmarks.size();

  std::string text = "\n";
  std::vector<std::size_t> starts;
  const auto add = [&](std::size_t number, const std::string& object) {
    starts.push_back(pdf.size() + text.size());
    text += std::to_string(number) + " 0 obj\n" + object + "endobj\n";
  };
  catalogue.insert(std::min(catalogue.rfind(">>"), catalogue.size()),
                   "/Outlines " + Reference(outline) + "\n/PageMode /UseOutlines\n");
  add(root, catalogue);
  add(outline, "<<\n/Type /Outlines\n/First " + Reference(first) + "\n/Last " + Reference(last) +
                   "\n/Count " + std::to_string(bookmarks.size()) + "\n>>\n");
  for (std::size_t i = 0; i < bookmarks.size(); ++i) {
    if (bookmarks[i].page >= pages.size()) UnreadablePdf("a page is missing");
    std::string item =
        "<<\n/Title " + PdfText(bookmarks[i].title) + "\n/Parent " + Reference(outline) + "\n";
    if (i > 0) item += "/Prev " + Reference(first + i - 1) + "\n";
    if (first + i < last) item += "/Next " + Reference(first + i + 1) + "\n";
    item += "/Dest [" + Reference(pages[bookmarks[i].page]) + " /XYZ null " +
            std::to_string(std::lround(bookmarks[i].top)) + " null]\n>>\n";
    add(first + i, item);
  }

  const std::size_t table = pdf.size() + text.size();
  text += "xref\n" + std::to_string(root) + " 1\n" + PdfEntry(starts[0]) + std::to_string(outline) +
          " " + std::to_string(starts.size() - 1) + "\n";
  for (std::size_t i = 1; i < starts.size(); ++i) text += PdfEntry(starts[i]);
  std::string trailer = pdf.trailer();
  const std::string size = "/Size " + std::to_string(pdf.objects());
  const std::size_t at = trailer.find(size);
  if (at == std::string::npos) UnreadablePdf("no size");
  trailer.replace(at, size.size(), "/Size " + std::to_string(last + 1));
  return text + trailer + "/Prev " + std::to_string(pdf.table()) + "\n>>\nstartxref\n" +
         std::to_string(table) + "\n%%EOF\n";
}

}  // namespace tenora::printing
