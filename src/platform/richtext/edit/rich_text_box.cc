#include "platform/richtext/rich_text_box.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/richtext/canonical_form.h"
#include "platform/richtext/characters/byte_decoder.h"
#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/document_sections.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/edit/text_search.h"
#include "platform/richtext/editing.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/richtext/source_head.h"
#include "platform/richtext/write/source_text.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::size_t kLargestFile = std::size_t{256} << 20;

// Asked of the whole letter for each merged value. Without an early exit the compiler compares many
// bytes at once.
bool IsAscii(std::string_view text) {
  unsigned bits = 0;
  for (const char c : text) bits |= static_cast<unsigned char>(c);
  return bits < 0x80;
}

std::string DecodeUtf16(std::string_view bytes, bool big_endian) {
  std::u16string units;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units += static_cast<char16_t>(big_endian ? first << 8 | second : second << 8 | first);
  }
  return FromUtf16(units);
}

std::string DecodeBytes(std::string_view bytes, const richtext::CodePage& page) {
  std::u32string characters;
  richtext::ByteDecoder decoder;
  for (const char c : bytes) decoder.Take(static_cast<unsigned char>(c), page, &characters);
  std::string text;
  for (const char32_t character : characters) AppendUtf8(text, character);
  return text;
}

// The text of a file in UTF-8: UTF-8 or UTF-16 by its byte order mark, otherwise UTF-8 if that is
// valid, otherwise Windows-1252.
std::string DecodeTextFile(std::string_view bytes) {
  if (bytes.starts_with("\xff\xfe")) return DecodeUtf16(bytes.substr(2), false);
  if (bytes.starts_with("\xfe\xff")) return DecodeUtf16(bytes.substr(2), true);
  if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
  if (IsValidUtf8(bytes)) return std::string(bytes);
  return DecodeBytes(bytes, richtext::CodePage(richtext::kDefaultCodePage));
}

// Line ends as positions count them.
std::u16string PositionsOf(std::string_view text) {
  return ToUtf16(ReplaceAll(ReplaceAll(std::string(text), "\r\n", "\n"), "\r", "\n"));
}

// Characters beyond ASCII as escapes that are read correctly in any font.
std::string SourceFormIn(const richtext::SourceHead& head, std::string_view text) {
  const richtext::CodePage page(head.code_page);
  std::string source;
  while (!text.empty()) {
    const std::string_view before = text;
    const char32_t character = TakeCodePoint(text);
    if (character < 0x80) {
      source += before.front();
      continue;
    }
    const std::string bytes = page.Encode(character);
    if (bytes.empty()) {
      richtext::AppendUnicode(&source, character);
      continue;
    }
    if (!head.one_code_page) {
      source.append("\\u").append(std::to_string(character > 0x7fff
                                                     ? static_cast<int>(character) - 0x10000
                                                     : static_cast<int>(character)));
      // A fallback is one byte.
      if (bytes.size() != 1) {
        source += '?';
        continue;
      }
    }
    for (const char byte : bytes)
      richtext::AppendHexByte(&source, static_cast<unsigned char>(byte));
  }
  return source;
}

}  // namespace

struct RichTextBox::State {
  std::string source;
  // Made from the source when first needed.
  std::optional<richtext::Document> document;
  std::optional<std::u16string> position_text;
  std::optional<richtext::SourceHead> head;
  int start = 0, length = 0;  // of the selection, where no view has it
  std::function<void()> listener;

  RichTextView* view = nullptr;
  bool view_is_newer = false;  // the source is to be made from the view
  bool box_is_newer = false;   // the view has not yet shown the source

  const std::string& Source() {
    if (std::exchange(view_is_newer, false)) {
      source = richtext::WriteRtf(richtext::InCanonicalForm(view->Content()));
      document.reset();
      position_text.reset();
      head.reset();
    }
    return source;
  }

  const richtext::Document& Parsed() {
    Source();
    if (!document) document = richtext::ReadRtf(source);
    return *document;
  }

  const std::u16string& PositionText() {
    const richtext::Document& parsed = Parsed();
    if (!position_text) position_text = richtext::PositionText(parsed.blocks);
    return *position_text;
  }

  const richtext::SourceHead& Head() {
    Source();
    if (!head) head = richtext::ReadHead(source);
    return *head;
  }

  void SetSource(std::string text) {
    // Merges change the letter's text and leave its head alone.
    const std::size_t known = head ? head->length : 0;
    if (known == 0 || text.compare(0, known, source, 0, known) != 0) head.reset();
    source = std::move(text);
    document.reset();
    position_text.reset();
    start = length = 0;
    view_is_newer = false;
    box_is_newer = view != nullptr;
  }

  void SetDocument(const richtext::Document& changed) { SetSource(richtext::WriteRtf(changed)); }
  // The same with what edits leave unused or apart put in order.
  void SetEdited(richtext::Document edited) {
    SetDocument(richtext::InCanonicalForm(std::move(edited)));
  }

  // The selection is the view's, but for the time until it shows what the box holds.
  bool ViewSelects() const { return view != nullptr && !box_is_newer; }

  void Changed(RichTextView::Change change = RichTextView::Change::kContent) const {
    if (view != nullptr) view->BoxChanged(change);
    if (listener) listener();
  }
};

RichTextBox::RichTextBox() : state_(std::make_unique<State>()) {
  state_->SetDocument(richtext::DocumentOfText(""));
}
RichTextBox::~RichTextBox() = default;
RichTextBox::RichTextBox(RichTextBox&&) noexcept = default;

const std::string& RichTextBox::TextRTF() const { return state_->Source(); }

void RichTextBox::SetTextRTF(std::string source) {
  // As the classic control does, other text is taken for plain text.
  if (!richtext::IsRtf(source)) return SetText(source);
  if (!IsAscii(source)) {
    richtext::SourceHead head = richtext::ReadHead(source);
    source = SourceFormIn(head, source);
  }
  state_->SetSource(std::move(source));
  state_->Changed();
}

std::string RichTextBox::SourceForm(std::string_view text) const {
  if (IsAscii(text)) return std::string(text);
  return SourceFormIn(state_->Head(), text);
}

std::string RichTextBox::ShownForm(std::string_view source) const {
  const richtext::SourceHead& head = state_->Head();
  std::string document =
      head.length > 0 ? state_->Source().substr(0, head.length) : std::string("{\\rtf1\\ansi");
  document.append("\\uc1 ").append(source).append("}");
  return richtext::PlainText(richtext::ReadRtf(document).blocks);
}

const richtext::Document& RichTextBox::Document() const { return state_->Parsed(); }

std::string RichTextBox::Text() const { return richtext::PlainText(state_->Parsed().blocks); }

void RichTextBox::SetText(std::string_view text) {
  state_->SetDocument(richtext::DocumentOfText(text));
  state_->Changed(RichTextView::Change::kNewLetter);
}

int RichTextBox::SelStart() const {
  return state_->ViewSelects() ? state_->view->Selection().start : state_->start;
}

int RichTextBox::SelLength() const {
  return state_->ViewSelects() ? state_->view->Selection().length : state_->length;
}

void RichTextBox::Select(int start, int length) {
  if (state_->ViewSelects()) return state_->view->Select({start, length});
  const int size = static_cast<int>(state_->PositionText().size());
  state_->start = std::clamp(start, 0, size);
  state_->length = std::clamp(length, 0, size - state_->start);
}

std::string RichTextBox::SelText() const {
  const std::u16string_view text = state_->PositionText();
  const auto start = static_cast<std::size_t>(SelStart());
  const auto length = static_cast<std::size_t>(SelLength());
  return ReplaceAll(FromUtf16(text.substr(start, length)), "\n", "\r\n");
}

void RichTextBox::SetSelText(std::string_view text) {
  if (state_->view != nullptr) return state_->view->ReplaceSelection(text);
  richtext::Document document = richtext::ReadRtf(state_->source);
  const int end = richtext::ReplaceRange(&document, state_->start, state_->length, text);
  state_->SetEdited(std::move(document));
  Select(end, 0);
  state_->Changed();
}

void RichTextBox::InsertObject(std::string_view rtf_group) {
  std::string piece = "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}";
  piece.append(rtf_group).append("}");
  richtext::Document document = state_->Parsed();
  const int end =
      richtext::ReplaceRangeByObject(&document, SelStart(), SelLength(), richtext::ReadRtf(piece));
  if (end < 0)
    throw StandardError(error_number::kInvalidFileFormat, "neither a picture nor an object");
  state_->SetEdited(std::move(document));
  Select(end, 0);
  state_->Changed();
}

void RichTextBox::SetMargins(int left, int top, int right, int bottom) {
  const auto bounded = [](int twips) { return std::clamp(twips, 0, richtext::kLargestPage); };
  richtext::Document document = state_->Parsed();
  const richtext::PageSetup before = document.page;
  richtext::PageSetup& page = document.page;
  page.left = bounded(left);
  page.top = bounded(top);
  page.right = bounded(right);
  page.bottom = bounded(bottom);
  for (richtext::Section* const section : richtext::OwnSections(&document)) {
    for (int richtext::PageSetup::*const side :
         {&richtext::PageSetup::left, &richtext::PageSetup::top, &richtext::PageSetup::right,
          &richtext::PageSetup::bottom}) {
      if (section->page.*side == before.*side) section->page.*side = page.*side;
    }
  }
  const int start = SelStart(), selected = SelLength();
  state_->SetEdited(std::move(document));
  Select(start, selected);
  state_->Changed();
}

int RichTextBox::ReplaceEvery(std::string_view text, std::string_view with, int options,
                              const std::vector<std::pair<int, int>>& skip) {
  const int length = static_cast<int>(PositionsOf(text).size());
  std::vector<int> places;
  for (int from = 0; length > 0;) {
    const int found = Find(text, from, -1, options | kNoHighlight);
    if (found < 0) break;
    const bool skipped = std::ranges::any_of(skip, [&](const std::pair<int, int>& range) {
      return found < range.second && found + length > range.first;
    });
    if (!skipped) places.push_back(found);
    from = found + (skipped ? 1 : length);
  }
  if (places.empty()) return 0;
  richtext::Document document = state_->Parsed();
  // From the end, so that the places before it stay true.
  for (auto place = places.rbegin(); place != places.rend(); ++place) {
    richtext::ReplaceRange(&document, *place, length, with);
  }
  const int start = SelStart(), selected = SelLength();
  state_->SetEdited(std::move(document));
  Select(start, selected);
  state_->Changed();
  return static_cast<int>(places.size());
}

int RichTextBox::Find(std::string_view text, int start, int end, int options) {
  const std::u16string part = PositionsOf(text);
  const int found = richtext::FindText(
      state_->PositionText(), part, start, end,
      {.whole_word = (options & kWholeWord) != 0, .match_case = (options & kMatchCase) != 0});
  if (found >= 0 && (options & kNoHighlight) == 0) Select(found, static_cast<int>(part.size()));
  return found;
}

void RichTextBox::LoadFile(const std::filesystem::path& path, FileType type) {
  const std::string bytes = ReadWholeFile(path, kLargestFile);
  if (type == FileType::kText) return SetText(DecodeTextFile(bytes));
  if (!richtext::IsRtf(bytes)) throw StandardError(error_number::kInvalidFileFormat, path.string());
  state_->SetDocument(richtext::ReadRtf(bytes));
  state_->Changed(RichTextView::Change::kNewLetter);
}

void RichTextBox::SaveFile(const std::filesystem::path& path, FileType type) const {
  WriteWholeFile(path, type == FileType::kRtf ? state_->Source() : Text());
}

void RichTextBox::OnChange(std::function<void()> listener) {
  state_->listener = std::move(listener);
}

void RichTextBox::AttachView(RichTextView* view) {
  if (state_->view != nullptr) {
    state_->Source();
    if (!state_->box_is_newer) {
      const RichTextView::Range range = state_->view->Selection();
      state_->start = range.start;
      state_->length = range.length;
    }
  }
  state_->view = view;
  state_->box_is_newer = view != nullptr;
  if (view != nullptr) view->BoxChanged(RichTextView::Change::kNewLetter);
}

void RichTextBox::ViewEdited() {
  state_->view_is_newer = true;
  state_->document.reset();
  state_->position_text.reset();
  if (state_->listener) state_->listener();
}

void RichTextBox::ViewShown() { state_->box_is_newer = false; }

}  // namespace tenora
