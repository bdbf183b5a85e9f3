#include "output/email_content.h"

#include <array>
#include <cstdio>
#include <memory>
#include <utility>

#include "output/html/html_converter.h"
#include "output/mail/email_pictures.h"
#include "output/mail/letter_pieces.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// Names and prices keep every character, and no angle bracket of theirs becomes a tag.
constexpr const char* kConverterOptions = "+CR+U+E";
constexpr const char* kWrapperEnd = "</td></tr></table>";
constexpr const char* kTab = "&nbsp;&nbsp;&nbsp;&nbsp;";

void ShowRuns(richtext::Paragraph& paragraph) {
  // Marks are bookmarks and their like; their offsets count text that is removed.
  paragraph.marks.clear();
  std::erase_if(paragraph.runs, [](const richtext::Run& run) { return run.format.hidden; });
  for (richtext::Run& run : paragraph.runs) {
    const auto* held = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object);
    if (held == nullptr) continue;
    const std::shared_ptr<const richtext::Verbatim> object = *held;
    run.object = std::monostate();
    run.text = object->shown_text;
    if (!object->shown_picture) continue;
    run.text.clear();
    run.object = object->shown_picture;
  }
}

// Tables are shared between copies of a document: each becomes a copy of its own.
void ShowBlocks(std::vector<richtext::Block>& blocks) {
  for (richtext::Block& block : blocks) {
    if (auto* table = std::get_if<std::shared_ptr<richtext::Table>>(&block)) {
      *table = std::make_shared<richtext::Table>(**table);
      for (richtext::Row& row : (*table)->rows) {
        for (richtext::Cell& cell : row.cells) ShowBlocks(cell.blocks);
      }
    } else {
      ShowRuns(std::get<richtext::Paragraph>(block));
    }
  }
}

// A copy without hidden and deleted text and without page headers and footers, none of which is
// part of the printed text either; objects, shapes and notes are replaced by the picture or text
// they show.
richtext::Document VisibleLetter(const richtext::Document& letter) {
  richtext::Document shown = letter;
  shown.title.clear();
  shown.info.clear();
  shown.head_groups.clear();
  ShowBlocks(shown.blocks);
  return shown;
}

std::vector<const richtext::Row*> RowsOf(const richtext::Document& document) {
  std::vector<const richtext::Row*> rows;
  for (const richtext::Block& block : document.blocks) {
    if (const auto* table = std::get_if<std::shared_ptr<richtext::Table>>(&block)) {
      for (const richtext::Row& row : (*table)->rows) rows.push_back(&row);
    }
  }
  return rows;
}

bool HoldsParagraph(std::string_view rtf) {
  constexpr std::string_view kWord = "\\par";
  for (std::size_t at = rtf.find(kWord); at != rtf.npos; at = rtf.find(kWord, at + 1)) {
    const std::size_t next = at + kWord.size();
    if (next == rtf.size() || LowerAscii(rtf[next]) < 'a' || LowerAscii(rtf[next]) > 'z')
      return true;
  }
  return false;
}

class BodyWriter {
 public:
  BodyWriter(const richtext::Document& document, const html::Head& head)
      : document_(document), head_(head), rows_(RowsOf(document)) {}

  void Add(const LetterPiece& piece) {
    const std::string html = Converted(piece.rtf);
    if (piece.row < 0) {
      // Between consecutive rows there is a piece without a paragraph.
      if (html.empty() && !HoldsParagraph(piece.rtf)) return;
      EndTable();
      html_ += html;
      return;
    }
    if (piece.row != row_) BeginRow(piece.row);
    html_ += "<td" + CellAttributes(piece.row, piece.cell) + ">" +
             (html.empty() ? "&nbsp;" : html) + "</td>\r\n";
  }

  std::string Finish() {
    EndTable();
    return std::move(html_);
  }

 private:
  std::string Converted(std::string_view rtf) const {
    std::string html = ReplaceAll(html::Converter(options_, head_).Convert(rtf), "\t", kTab);
    // The end of the wrapper around an aligned paragraph breaks the line already.
    return ReplaceAll(std::move(html), std::string(kWrapperEnd) + "<br>\r\n", kWrapperEnd);
  }

  void BeginRow(int row) {
    html_ += row_ < 0 ? "\r\n<table width=\"100%\" cellspacing=\"0\" cellpadding=\"5\" "
                        "style=\"margin:8px 0\">\r\n<tr>"
                      : "</tr>\r\n<tr>";
    row_ = row;
  }

  void EndTable() {
    if (row_ >= 0) html_ += "</tr>\r\n</table>\r\n";
    row_ = -1;
  }

  std::string ColourText(int position) const {
    if (position <= 0 || static_cast<std::size_t>(position) >= document_.colours.size()) return {};
    const richtext::Colour& colour = document_.colours[static_cast<std::size_t>(position)];
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02X%02X%02X", colour.red, colour.green, colour.blue);
    return text.data();
  }

  std::string BorderStyle(const char* side, const richtext::Border& border) const {
    if (!border.present) return {};
    const std::string colour = ColourText(border.colour);
    return std::string("border-") + side + ":" + (border.width >= 30 ? "2px" : "1px") + " solid " +
           (colour.empty() ? "#000000" : colour) + ";";
  }

  std::string CellAttributes(int row_number, int cell_number) const {
    if (static_cast<std::size_t>(row_number) >= rows_.size()) return {};
    const richtext::Row& row = *rows_[static_cast<std::size_t>(row_number)];
    const auto number = static_cast<std::size_t>(cell_number);
    if (number >= row.cells.size()) return {};
    const richtext::Cell& cell = row.cells[number];
    const int left = number == 0 ? row.left_edge : row.cells[number - 1].right_edge;
    const int width = row.cells.back().right_edge - row.left_edge;
    std::string attributes;
    if (width > 0 && cell.right_edge > left) {
      attributes = " width=\"" +
                   std::to_string(std::int64_t{100} * (cell.right_edge - left) / width) + "%\"";
    }
    const std::string shading = ColourText(cell.shading);
    if (!shading.empty()) attributes += " bgcolor=\"" + shading + "\"";
    const std::string style = BorderStyle("top", cell.top) + BorderStyle("bottom", cell.bottom) +
                              BorderStyle("left", cell.left) + BorderStyle("right", cell.right);
    if (!style.empty()) attributes += " style=\"" + style + "\"";
    return attributes;
  }

  const html::Options options_ = html::ReadOptions(kConverterOptions);
  const richtext::Document& document_;
  const html::Head& head_;
  std::vector<const richtext::Row*> rows_;
  std::string html_;
  int row_ = -1;  // the table row that is open, -1: none
};

}  // namespace

EmailBody MakeEmailBody(const RichTextBox& letter) {
  richtext::Document document = VisibleLetter(letter.Document());
  EmailPictures pictures;
  pictures.Take(document);
  const std::string source = richtext::WriteRtf(document, richtext::Escapes::kUnicode);
  // The body alone is cut: the head's groups hold no text of the letter.
  std::string_view body = source;
  std::string head_source;
  for (const std::string_view group :
       {FindGroup(source, "{\\fonttbl"), FindGroup(source, "{\\colortbl")}) {
    head_source += group;
    if (!group.empty() && group.end() > body.begin()) {
      body.remove_prefix(static_cast<std::size_t>(group.end() - body.begin()));
    }
  }
  // The brace that closes the document, and the line end after it.
  body = body.substr(0, body.find_last_of('}') == body.npos ? body.size() : body.find_last_of('}'));
  const html::Head head = html::TakeHead(head_source);
  BodyWriter writer(document, head);
  for (const LetterPiece& piece : CutLetter(body)) writer.Add(piece);
  EmailBody result;
  result.body = pictures.WithTags(writer.Finish());
  result.plain_text =
      ReplaceAll(pictures.WithoutMarks(richtext::PlainText(document.blocks)), "\f", "\r\n");
  result.pictures = std::move(pictures.parts);
  return result;
}

}  // namespace tenora
