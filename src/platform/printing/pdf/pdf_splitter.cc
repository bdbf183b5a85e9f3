#include "platform/printing/pdf/pdf_splitter.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "platform/printing/pdf/pdf_syntax.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kInfo = 1, kCatalogue = 2, kPageRoot = 3;  // their numbers in every file

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Calls `use` with the text between references and each reference's object number in turn; the last
// text has none after it.
template <typename Use>
void ForEachReference(std::string_view text, Use&& use) {
  constexpr std::string_view kBehind = " 0 R";
  std::size_t done = 0;
  for (std::size_t at = text.find(kBehind); at != std::string_view::npos;
       at = text.find(kBehind, at + 1)) {
    std::size_t start = at;
    while (start > done && IsDigit(text[start - 1])) --start;
    if (start == at) continue;
    use(text.substr(done, start - done),
        std::optional(PdfNumberAt(text.substr(start, at - start))));
    done = at + kBehind.size();
  }
  use(text.substr(done), std::nullopt);
}

// An object's text without its stream, whose bytes are binary.
std::string_view Dictionary(std::string_view object) {
  constexpr std::string_view kStream = "\nstream\n";
  return object.substr(0, std::min(object.find(kStream), object.size()));
}

// A file being written, with the table of its objects.
class Writer {
 public:
  Writer() : text_("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n") {}

  void Begin(std::size_t number) {
    if (starts_.size() <= number) starts_.resize(number + 1);
    starts_[number] = text_.size();
    Add(std::to_string(number));
    Add(" 0 obj\n");
  }
  void Add(std::string_view text) { text_ += text; }
  void AddReference(std::size_t number) { Add(std::to_string(number) + " 0 R"); }

  std::string Finish() {
    const std::size_t table = text_.size();
    Add("xref\n0 " + std::to_string(starts_.size()) + "\n0000000000 65535 f \n");
    for (std::size_t number = 1; number < starts_.size(); ++number) {
      Add(PdfEntry(starts_[number]));
    }
    Add("trailer\n<<\n/Size " + std::to_string(starts_.size()) + "\n/Info ");
    AddReference(kInfo);
    Add("\n/Root ");
    AddReference(kCatalogue);
    Add("\n>>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n");
    return std::move(text_);
  }

 private:
  std::string text_;
  std::vector<std::size_t> starts_{0};
};

}  // namespace

PdfSplitter::PdfSplitter(std::string pdf) : pdf_(std::move(pdf)) {
  const std::string_view text = pdf_;
  const std::size_t table = PdfNumberBehind(text, "startxref");
  constexpr std::string_view kHead = "xref\n0 ";
  if (table >= text.size() || !text.substr(table).starts_with(kHead)) UnreadablePdf("no table");
  const std::size_t count = PdfNumberAt(text.substr(table + kHead.size()));
  const std::size_t entries = text.find('\n', table + kHead.size()) + 1;
  if (entries == 0 || count > (text.size() - entries) / kPdfEntrySize)
    UnreadablePdf("table cut short");
  for (std::size_t number = 0; number < count; ++number) {
    const std::string_view entry = text.substr(entries + number * kPdfEntrySize, kPdfEntrySize);
    starts_.push_back(entry[kPdfEntrySize - 3] == 'n' ? PdfNumberAt(entry) : 0);
    if (starts_.back() > table) UnreadablePdf("an object outside");
  }
  std::vector<std::size_t> order = starts_;
  order.push_back(table);
  std::sort(order.begin(), order.end());
  for (const std::size_t start : starts_) {
    ends_.push_back(start == 0 ? 0 : *std::upper_bound(order.begin(), order.end(), start));
  }
  const std::string_view trailer = text.substr(entries + count * kPdfEntrySize);
  info_ = PdfNumberBehind(trailer, "/Info ");
  page_root_ = PdfNumberBehind(Object(PdfNumberBehind(trailer, "/Root ")), "/Pages ");
  std::string_view kids = Object(page_root_);
  kids.remove_prefix(std::min(kids.find("/Kids"), kids.size()));
  ForEachReference(kids.substr(0, kids.find(']')),
                   [this](std::string_view, std::optional<std::size_t> page) {
                     if (page) pages_.push_back(*page);
                   });
}

// From after "obj" to "endobj".
std::string_view PdfSplitter::Object(std::size_t number) const {
  if (number >= starts_.size() || starts_[number] == 0) UnreadablePdf("an object is missing");
  const std::string_view text =
      std::string_view(pdf_).substr(starts_[number], ends_[number] - starts_[number]);
  constexpr std::string_view kHead = " obj\n";
  const std::size_t head = text.find(kHead);
  if (head == std::string_view::npos) UnreadablePdf("no object");
  return text.substr(head + kHead.size());
}

std::string PdfSplitter::File(std::size_t first, std::size_t count, std::string_view title) const {
  if (first > pages_.size() || count > pages_.size() - first) UnreadablePdf("a page is missing");
  Writer writer;
  writer.Begin(kInfo);
  writer.Add("<<\n/Title " + PdfText(title) + "\n");
  // Producer and dates are copied.
  const std::string_view info = Object(info_);
  writer.Add(info.substr(std::min(info.find("/Creator"), info.find(">>"))));
  writer.Begin(kCatalogue);
  writer.Add("<<\n/Type /Catalog\n/Pages ");
  writer.AddReference(kPageRoot);
  writer.Add("\n>>\nendobj\n");

  std::map<std::size_t, std::size_t> numbers{{page_root_, kPageRoot}};
  std::vector<std::size_t> needed;  // in the order of their new numbers
  const auto number_of = [&](std::size_t old) {
    const auto [entry, added] = numbers.emplace(old, kPageRoot + 1 + needed.size());
    if (added) needed.push_back(old);
    return entry->second;
  };
  writer.Begin(kPageRoot);
  writer.Add("<<\n/Type /Pages\n/Kids [");
  for (std::size_t page = first; page < first + count; ++page) {
    writer.Add(" ");
    writer.AddReference(number_of(pages_[page]));
  }
  writer.Add(" ]\n/Count " + std::to_string(count) + "\n>>\nendobj\n");
  for (std::size_t i = 0; i < needed.size(); ++i) {
    const std::string_view object = Object(needed[i]), dictionary = Dictionary(object);
    writer.Begin(kPageRoot + 1 + i);
    ForEachReference(dictionary, [&](std::string_view text, std::optional<std::size_t> reference) {
      writer.Add(text);
      if (reference) writer.AddReference(number_of(*reference));
    });
    writer.Add(object.substr(dictionary.size()));
  }
  return writer.Finish();
}

}  // namespace tenora::printing
