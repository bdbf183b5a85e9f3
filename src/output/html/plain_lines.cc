#include "output/html/plain_lines.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "output/html/plain_table.h"
#include "output/html/shown_text.h"
#include "output/html/tab_stops.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/list_counter.h"
#include "platform/richtext/list_mark.h"
#include "platform/runtime/text.h"

namespace tenora::html {
namespace {

using Kind = ShownPiece::Kind;
using richtext::Paragraph;
using richtext::ParagraphFormat;
using richtext::TabStop;

constexpr int kTwipsPerCharacter = 120;  // of text in a usual size
constexpr int kBlankLine = 100;          // twips between paragraphs that become an empty line
constexpr std::size_t kFarthestTab = 120;
constexpr std::size_t kDeepestIndent = 24;

// One paragraph's lines.
class ParagraphLines {
 public:
  ParagraphLines(const DocumentParts& parts, const Paragraph& paragraph)
      : parts_(parts), format_(paragraph.format), text_(parts, paragraph) {}

  std::vector<std::string> Make(std::string_view mark) {
    lines_.emplace_back();
    if (!mark.empty()) {
      const int left = std::max(format_.left_indent + format_.first_indent, 0);
      const auto blanks = static_cast<std::size_t>(left / kTwipsPerCharacter);
      lines_.back().append(std::min(blanks, kDeepestIndent), ' ').append(mark).append(" ");
    }
    const std::vector<ShownPiece>& pieces = text_.pieces();
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      if (pieces[i].link != link_) EndLink();
      link_ = pieces[i].link;
      if (pieces[i].kind == Kind::kText) Add(pieces[i].text);
      if (pieces[i].kind == Kind::kNoteMark) AddMark(i);
      if (pieces[i].kind == Kind::kTab) AddTab(i);
      if (pieces[i].kind == Kind::kLineBreak || pieces[i].kind == Kind::kPageBreak)
        lines_.emplace_back();
    }
    EndLink();
    return std::move(lines_);
  }

 private:
  void Add(std::string_view text) {
    lines_.back() += text;
    if (!link_.empty()) linked_ += text;
  }

  // Plain text has no raised characters.
  void AddMark(std::size_t index) {
    const std::vector<ShownPiece>& pieces = text_.pieces();
    std::string_view mark = pieces[index].text;
    mark.remove_prefix(mark.find_first_not_of(' '));
    const std::string_view blanks = mark.substr(mark.find_last_not_of(' ') + 1);
    mark.remove_suffix(blanks.size());
    Add("[" + std::string(mark) + "]");
    Add(blanks);
    // The mark of a note's own text, which may stand right ahead of it.
    if (index == 0 && blanks.empty() && pieces.size() > 1 && pieces[1].kind == Kind::kText &&
        !pieces[1].text.starts_with(' '))
      Add(" ");
  }

  // The address behind a link's text, unless that is the address itself.
  void EndLink() {
    std::string_view address = link_;
    constexpr std::string_view kMail = "mailto:";
    if (address.starts_with(kMail)) address.remove_prefix(kMail.size());
    if (!address.empty() && linked_.find(address) == std::string::npos)
      lines_.back().append(" <").append(address).append(">");
    linked_.clear();
    link_ = {};
  }

  void AddTab(std::size_t index) {
    std::string& line = lines_.back();
    const std::size_t at = CharactersIn(line);
    const TabTarget target =
        NextTab(format_, parts_.document.default_tab, static_cast<double>(at) * kTwipsPerCharacter);
    auto to = static_cast<std::size_t>(std::max(target.position, 0.0) / kTwipsPerCharacter);
    to = std::min(to, kFarthestTab);
    if (target.kind == TabStop::Kind::kRight || target.kind == TabStop::Kind::kDecimal)
      to -= std::min(to, WidthBehind(index, target.kind));
    // Two blanks at least tell columns from words.
    const std::size_t count = std::max<std::size_t>(to > at ? to - at : 0, at == 0 ? 1 : 2);
    const char leader = LeaderCharacter(target.leader);
    line.append(count, leader == '\0' ? ' ' : leader);
  }

  std::size_t WidthBehind(std::size_t index, TabStop::Kind kind) const {
    const std::vector<ShownPiece>& pieces = text_.pieces();
    std::size_t width = 0;
    for (std::size_t i = index + 1; i < pieces.size(); ++i) {
      const bool mark = pieces[i].kind == Kind::kNoteMark;
      if (!mark && pieces[i].kind != Kind::kText) break;
      const bool decimal = kind == TabStop::Kind::kDecimal;
      width += CharactersIn(decimal ? AheadOfDecimalPoint(pieces[i].text) : pieces[i].text);
      if (mark) width += 2;  // its brackets
    }
    return width;
  }

  const DocumentParts& parts_;
  const ParagraphFormat& format_;
  ShownText text_;
  std::vector<std::string> lines_;
  std::string_view link_;
  std::string linked_;  // the text of the link so far
};

// Breaks a line between words; a word longer than a line stays whole.
void AppendBroken(std::string_view line, std::size_t width, std::vector<std::string>* lines) {
  if (width == 0 || CharactersIn(line) <= width) {
    lines->emplace_back(line);
    return;
  }
  std::string part;
  std::size_t part_width = 0;
  for (const std::string& word : Split(line, " ")) {
    const std::size_t word_width = CharactersIn(word);
    if (!part.empty() && part_width + 1 + word_width > width) {
      lines->push_back(std::exchange(part, {}));
      part_width = 0;
    }
    if (!part.empty()) part += ' ';
    part_width += word_width + (part.empty() ? 0 : 1);
    part += word;
  }
  lines->push_back(std::move(part));
}

}  // namespace

std::size_t CharactersIn(std::string_view utf8) {
  return static_cast<std::size_t>(std::ranges::count_if(
      utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::vector<std::string> PlainLines(PlainContext& context, std::span<const richtext::Block> blocks,
                                    std::size_t width) {
  std::vector<std::string> lines;
  richtext::ListCounter counter;
  int space_below = 0;
  bool in_list = false;
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (const auto* table = std::get_if<std::shared_ptr<richtext::Table>>(&blocks[i])) {
      counter.EndAll();
      for (std::string& line : PlainTable(context, **table, width))
        lines.push_back(std::move(line));
      space_below = 0;
      in_list = false;
      continue;
    }
    const auto& paragraph = std::get<Paragraph>(blocks[i]);
    const std::vector<TextBox> boxes = BoxesIn(context.parts, paragraph);
    for (const TextBox& box : boxes) {
      if (!lines.empty() && !lines.back().empty()) lines.emplace_back();
      std::ranges::move(PlainLines(context, WithoutEmptyEnds(box.figure->blocks), width),
                        std::back_inserter(lines));
      lines.emplace_back();
    }
    // RTF ends a cell with a paragraph, also behind a nested table.
    if (width > 0 && i > 0 && i + 1 == blocks.size() && !richtext::Shows(blocks[i])) continue;
    const ParagraphFormat& format = paragraph.format;
    const std::string mark = richtext::ListMark(format.bullet, counter.Next(format));
    if (!boxes.empty() && mark.empty() && ShownText(context.parts, paragraph).pieces().empty())
      continue;
    const bool spaced = space_below + format.space_before >= kBlankLine;
    if (spaced && !lines.empty() && !lines.back().empty() && !(in_list && !mark.empty()))
      lines.emplace_back();
    for (const std::string& line : ParagraphLines(context.parts, paragraph).Make(mark))
      AppendBroken(line, width, &lines);
    space_below = format.space_after;
    in_list = !mark.empty();
  }
  return lines;
}

}  // namespace tenora::html
