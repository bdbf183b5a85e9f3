// A rich-text document in memory: what the RTF reader makes, the writer writes and printing lays
// out. Lengths are twips (1440 to the inch), text is UTF-8, positions count UTF-16 units.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tenora::richtext {

struct Font {
  int number = 0;              // \fN
  std::string name;            // UTF-8
  std::string family = "nil";  // \fnil, \froman, \fswiss, …: the word after "\f"
  int charset = 0;             // \fcharsetN
  int pitch = 0;               // \fprqN
};

struct Colour {
  bool automatic = false;  // an entry without components
  std::uint8_t red = 0, green = 0, blue = 0;

  bool operator==(const Colour&) const = default;
};

enum class Underline { kNone, kSingle, kDouble, kDotted, kDash, kWords, kWave, kThick };
enum class Script { kNormal, kSuper, kSub };

struct CharFormat {
  int font = 0;  // position in Document::fonts
  int half_points = 24;
  int colour = 0;     // position in Document::colours; 0 is automatic
  int highlight = 0;  // position in Document::colours; 0 is none
  int language = 0;   // always 0: languages are not kept, they would split merge codes
  bool bold = false, italic = false, strike = false, hidden = false;
  bool all_caps = false, small_caps = false;
  bool protect = false;
  Underline underline = Underline::kNone;
  Script script = Script::kNormal;
  int raise_half_points = 0;  // \up positive, \dn negative
  int kerned_from = 0;        // \kerning: pairs are kerned from this size on, half-points; 0: never

  bool operator==(const CharFormat&) const = default;
};

// kDistributed: as kJustified, the last line too.
enum class Alignment { kLeft, kCentre, kRight, kJustified, kDistributed };
constexpr bool IsJustified(Alignment alignment) {
  return alignment == Alignment::kJustified || alignment == Alignment::kDistributed;
}

struct TabStop {
  enum class Kind { kLeft, kCentre, kRight, kDecimal, kBar };
  int position = 0;
  Kind kind = Kind::kLeft;
  std::string
      leader;  // "dot", "mdot", "hyph", "ul", "th", "eq": the word after "\tl"; empty for no leader

  bool operator==(const TabStop&) const = default;
};

struct Bullet {
  enum class Kind {
    kNone,
    kBullet,
    kDecimal,
    kLowerLetter,
    kUpperLetter,
    kLowerRoman,
    kUpperRoman
  };
  Kind kind = Kind::kNone;
  int start = 1;
  int indent = 0;             // \pnindent
  std::string before, after;  // \pntxtb, \pntxta; the bullet character itself for kBullet
  int list = 0;               // differs between lists that would else be one
  // Between the mark and the text.
  enum class Gap { kTab, kSpace, kNone };
  Gap gap = Gap::kTab;
  Alignment alignment = Alignment::kLeft;  // of the mark, at the first line's start
  // Of the mark, where it is not as the paragraph's mark.
  std::optional<bool> bold = std::nullopt, italic = std::nullopt;
  std::optional<int> font = std::nullopt, colour = std::nullopt;  // positions in the document's
  int half_points = 0;

  bool operator==(const Bullet&) const = default;
};

struct Border {
  // Of a thick line and thin ones, the first that is named is the outermost; small, medium and
  // large are the gaps between them.
  enum class Kind {
    kSingle,
    kThick,
    kDouble,
    kTriple,
    kDotted,
    kDashed,
    kDashDot,
    kDashDotDot,
    kThickThinSmall,
    kThinThickSmall,
    kThinThickThinSmall,
    kThickThinMedium,
    kThinThickMedium,
    kThinThickThinMedium,
    kThickThinLarge,
    kThinThickLarge,
    kThinThickThinLarge
  };
  bool present = false;
  int width = 0;   // twips, as the kind counts it: of a single line, of each of two equal ones
  int colour = 0;  // position in Document::colours
  int space = 0;   // to what it is around, twips
  Kind kind = Kind::kSingle;

  bool operator==(const Border&) const = default;
};

// Where a shape is on the page, in twips; `left` to `bottom` are relative to what `x_from` and
// `y_from` name.
struct ShapeBox {
  enum class From { kText, kMargin, kPage };           // kText: the column, or the paragraph's top
  enum class Align { kAsSet, kStart, kCentre, kEnd };  // other than kAsSet: in that part of it
  enum class Wrap { kNone, kAboveAndBelow, kAround };
  int left = 0, top = 0, right = 0, bottom = 0;
  From x_from = From::kText, y_from = From::kText;
  Align x_align = Align::kAsSet, y_align = Align::kAsSet;
  Wrap wrap = Wrap::kNone;  // what the text does
  bool behind = false;      // the text
  bool in_line = false;     // it stands in its line as a letter does
  int layer = 0;            // what is in a higher one covers what is in a lower
  // Other than 0: its size is this part of the paper, or of what is between the margins.
  double width_share = 0, height_share = 0;
  From width_of = From::kPage, height_of = From::kPage;
};

// Where the frame is that a paragraph stands in, or a table that floats, twips. Paragraphs of the
// same frame that follow each other share it.
struct FramePlace {
  ShapeBox::From x_from = ShapeBox::From::kText, y_from = ShapeBox::From::kText;
  ShapeBox::Align x_align = ShapeBox::Align::kAsSet, y_align = ShapeBox::Align::kAsSet;
  int x = 0, y = 0;
  int width = 0;             // 0: as wide as its text, or as the table
  int height = 0;            // at least; negative: exactly
  int gap_x = 0, gap_y = 0;  // to the text around
  bool text_beside = true;

  bool operator==(const FramePlace&) const = default;
};

struct ParagraphFormat {
  Alignment alignment = Alignment::kLeft;
  int left_indent = 0, right_indent = 0, first_indent = 0;  // first is relative to left
  int space_before = 0, space_after = 0;
  // \sbauto, \saauto: the space is that of a paragraph in HTML, which lists have only around them.
  bool automatic_before = false, automatic_after = false;
  // \contextualspace: the style within which paragraphs have no space between them; -1 for none.
  int contextual_style = -1;
  int line_spacing = 0;                // \slN: 0 automatic, negative exact, positive at least
  bool line_spacing_multiple = false;  // \slmult1: line_spacing is in 240ths of a line
  std::vector<TabStop> tabs;
  Bullet bullet;
  bool page_break_before = false, keep_together = false, keep_with_next = false;
  bool widow_control = false;  // neither its first line nor its last is alone on a page
  bool right_to_left = false;
  int shading = 0;  // position in Document::colours; 0 is none
  Border top, bottom, left, right;
  Border between;  // this paragraph and the next that has the same borders
  std::optional<FramePlace> frame;

  bool operator==(const ParagraphFormat&) const = default;
};

// A picture in the text. `source` is its whole RTF group, carried through unchanged.
struct Picture {
  enum class Kind { kPng, kJpeg, kDib, kBitmap, kWmf, kEmf, kUnknown };
  Kind kind = Kind::kUnknown;
  int width = 0, height = 0;  // on paper, scaled and cropped
  // What is cut off on each side, as parts of the whole picture; negative adds empty space.
  struct Crop {
    double left = 0, top = 0, right = 0, bottom = 0;
    auto operator<=>(const Crop&) const = default;
  };
  Crop crop;
  // A rule that word processors put across the page: in the middle of a line of text.
  struct Across {
    double share = 1;  // of the text's width; 0: as wide as the picture
    Alignment alignment = Alignment::kCentre;
  };
  std::optional<Across> across;
  std::string bytes;  // decoded; without the file header for kDib and kWmf, as RTF holds them
  std::string source;
};

struct Figure;

// Anything the editor cannot edit (an embedded object, a drawing, a footnote, a field without a
// result): carried through verbatim. `shown` is what a reader sees in its place: an object's
// picture, the text of a text box.
struct Verbatim {
  std::string source;
  std::string shown_text;
  std::shared_ptr<const Picture> shown_picture;
  std::optional<ShapeBox> shape;                       // of a drawing
  std::vector<std::shared_ptr<const Figure>> figures;  // a drawing's, undermost first; a note's one
};

// A field (a hyperlink, a word processor's merge field) whose result is in the text as ordinary
// runs; all runs of one field share this object.
struct Field {
  std::string instruction;             // RTF source of the instruction, as `HYPERLINK "…"`
  std::string flags;                   // control words after \field, such as \fldlock
  std::shared_ptr<const Field> outer;  // the field whose result contains this one
};

// Runs of equal format are joined. In text, "\t" is a tab, "\v" a line break inside the paragraph,
// "\f" a page break. An object run takes one position, U+FFFC.
struct Run {
  CharFormat format;
  std::string text;
  std::variant<std::monostate, std::shared_ptr<const Picture>, std::shared_ptr<const Verbatim>>
      object;
  std::shared_ptr<const Field> field;  // null outside fields
};

// Something between two characters that has no width: a bookmark, a comment, an index
// entry. Carried through verbatim.
struct Mark {
  std::size_t offset = 0;  // bytes into the paragraph's text
  std::string source;
};

struct Section;

struct Paragraph {
  ParagraphFormat format;
  CharFormat mark;  // the format of the paragraph mark; decides the height of an empty paragraph
  std::vector<Run> runs;
  std::vector<Mark> marks;  // in the order of their offsets
  // Set where the paragraph ends a section: the section that begins after it. Only outside tables.
  std::shared_ptr<const Section> next_section;
};

struct Table;
using Block = std::variant<Paragraph, std::shared_ptr<Table>>;

// Between a cell's edges and its text, twips. -1: the row's half gap at the sides, else nothing.
struct Padding {
  int top = -1, left = -1, bottom = -1, right = -1;
};

struct Cell {
  enum class VerticalAlign { kTop, kCentre, kBottom };
  enum class Merge { kNone, kFirst, kContinued };
  // Where its lines run: kUp, from the bottom, the first at the left; kDown, from the top, the
  // first at the right.
  enum class Direction { kAcross, kUp, kDown };
  int right_edge = 0;  // \cellx
  VerticalAlign vertical_align = VerticalAlign::kTop;
  Merge horizontal_merge = Merge::kNone, vertical_merge = Merge::kNone;
  Direction direction = Direction::kAcross;
  int shading = 0;  // position in Document::colours; 0 is none
  Border top, bottom, left, right;
  Padding padding;            // the row's where the cell has none of its own
  std::vector<Block> blocks;  // never empty
};

struct Row {
  std::string
      definition;       // from \trowd to the last \cellx, in canonical form but otherwise unchanged
  int left_edge = 0;    // \trleft
  int half_gap = 0;     // \trgaph
  int height = 0;       // \trrh: 0 automatic, positive at least, negative exact
  bool header = false;  // \trhdr
  bool right_to_left = false;  // \rtlrow: the first cell is the rightmost
  Alignment alignment = Alignment::kLeft;
  std::optional<FramePlace> place;  // the table floats where its first row says
  std::vector<Cell> cells;
};

struct Table {
  std::vector<Row> rows;
};

// A figure of any shape. Its points are in the figure's box: (0, 0) is the left top corner of that,
// (1, 1) the right bottom one. They may lie outside.
struct Outline {
  struct Point {
    double x = 0, y = 0;
  };
  struct Step {
    enum class Kind { kMove, kLine, kCurve, kClose };
    Kind kind = Kind::kMove;
    Point to;
    Point first, second;  // what a curve is pulled to where it begins and ends
  };
  std::vector<Step> steps;
  bool open = false;  // a line, which has nothing to fill
};

// The colour of a fill goes over into another one.
struct Gradient {
  Colour to;
  double angle = 0;     // degrees; 0 is downwards, 90 to the right
  double turn = 1;      // the part of the way where it is all `to`; then it goes back
  bool radial = false;  // from the middle
};

// Lettering as wide and high as its figure: the text of a watermark.
struct Lettering {
  std::string text, font;
  bool bold = false, italic = false;
};

// A part of a drawing that is seen. Twips; the place is relative to the drawing's left top corner.
struct Figure {
  enum class Kind { kRectangle, kRounded, kEllipse, kLine, kOutline };
  Kind kind = Kind::kRectangle;
  int left = 0, top = 0, right = 0, bottom = 0;
  bool rising = false;               // a line from the left bottom corner to the right top one
  double rotation = 0;               // degrees clockwise about its middle
  Outline outline;                   // of kOutline
  std::optional<Colour> fill;        // not drawn without
  std::optional<Gradient> gradient;  // of the fill
  double opacity = 1;                // of the fill
  std::optional<Colour> line;        // not drawn without
  int line_width = 0;
  bool arrow_at_start = false, arrow_at_end = false;  // of an open outline
  std::optional<Lettering> lettering;
  Padding inset{0, 0, 0, 0};  // between the edges and the text
  std::shared_ptr<const Picture> picture;
  std::vector<Block> blocks;  // of a text box; its height grows with them
  Cell::Direction direction = Cell::Direction::kAcross;  // of their lines
  bool fits_text = false;                                // its height also shrinks with them
};

// A group of the head that is carried through verbatim: a header or footer, document variables,
// user properties, the page background.
struct HeadGroup {
  std::string source;
  std::string word;           // that begins a header or footer, as "headerf"; empty for others
  std::vector<Block> blocks;  // what a header or footer shows
};

inline constexpr int kLargestPage =
    31'680;  // twips: 22 inches, the largest page word processors know

inline constexpr int kBordersFromPaper = 32;  // of \pgbrdropt; its lowest bits name the pages

// The borders around a page.
struct PageBorders {
  Border top, left, bottom, right;
  bool from_paper = false;  // their space is to the paper's edges, not to the text
  bool around_header = false, around_footer = false;
  enum class Pages { kAll, kFirst, kAllButFirst };
  Pages pages = Pages::kAll;  // of the section

  bool operator==(const PageBorders&) const = default;
};

struct PageSetup {
  int width = 0, height = 0;  // \paperw, \paperh; 0 when the document names none
  int left = 0, top = 0, right = 0, bottom = 0;
  bool landscape = false;
  std::optional<PageBorders> borders;
  // What else is said about the page, as control words: "\\headery720\\titlepg".
  std::string other_words;

  bool operator==(const PageSetup&) const = default;
};

// A section after the document's first. The first is described by the document itself.
struct Section {
  enum class Begin { kContinuous, kColumn, kPage, kEvenPage, kOddPage };
  Begin begin = Begin::kPage;
  PageSetup page;
  // Its own headers and footers; of a kind that it has none of, the section before's count.
  std::vector<HeadGroup> head_groups;
};

struct Document {
  int code_page = 1252;
  int default_font = 0;  // position in fonts
  int default_language = 0;
  int default_tab = 720;
  std::vector<Font> fonts;      // never empty
  std::vector<Colour> colours;  // the first is automatic
  PageSetup page;
  std::string title;              // from the information group, empty when none
  std::vector<std::string> info;  // its other groups, as "{\\author …}"
  std::vector<HeadGroup> head_groups;
  std::vector<Block> blocks;  // never empty
};

}  // namespace tenora::richtext
