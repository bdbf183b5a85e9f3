#include "platform/richtext/read/row_definition.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "platform/richtext/read/border_words.h"

namespace tenora::richtext {
namespace {

constexpr std::size_t kMostCells = 256;
constexpr std::size_t kLongestDefinition = 64 * 1024;
constexpr int kWidestTable = 100'000;
constexpr int kDefaultCellWidth = 1440;

constexpr std::string_view kRowSides = "tlbr";
// Word processors swap a cell's top and left when writing, and all read it that way.
constexpr std::string_view kCellSides = "ltbr";
constexpr int kTwips = 3;
constexpr int kMostPadding = 1440;
constexpr int kWhole = 10'000;  // hundredths of a percent

bool IsOfRow(std::string_view name) {
  if (name == "rtlrow") return true;
  if (name == "trautofit" || name.starts_with("tdfrmtxt") || name.starts_with("tabsnoovrlp"))
    return true;
  if (name.starts_with("tpos") || name.starts_with("tpv") || name.starts_with("tph")) return true;
  return name.starts_with("tr") || name.starts_with("tblind");
}

bool IsOfEdge(std::string_view name) { return name.starts_with("brdr") || name == "brsp"; }

bool IsOfCell(std::string_view name) { return name.starts_with("cl") && name != "cloverride"; }

// Words for a row's place in its table or for who changed it: irrelevant, or known from the text.
bool IsNoise(std::string_view name) {
  static const std::unordered_set<std::string_view> kNoise{
      "irow",      "irowband",    "lastrow",       "ltrrow", "ts",        "yts",       "tblrsid",
      "trauth",    "trdate",      "cldel",         "clins",  "cldelauth", "clinsauth", "cldeldttm",
      "clinsdttm", "tscellwidth", "tscellwidthfts"};
  return kNoise.contains(name);
}

bool NamesColour(std::string_view name) {
  static const std::unordered_set<std::string_view> kColours{
      "brdrcf", "clcbpat", "clcfpat", "trcbpat", "trcfpat", "clcbpatraw", "clcfpatraw"};
  return kColours.contains(name);
}

// A share of the one colour, in hundredths of a percent, on the other.
Colour Mixed(Colour pattern, Colour ground, int share) {
  if (pattern.automatic) pattern = {};
  if (ground.automatic) ground = {.red = 255, .green = 255, .blue = 255};
  const auto mix = [&](int over, int under) {
    return static_cast<std::uint8_t>(under + (over - under) * share / kWhole);
  };
  return {.red = mix(pattern.red, ground.red),
          .green = mix(pattern.green, ground.green),
          .blue = mix(pattern.blue, ground.blue)};
}

void Append(const Token& word, int param, std::string* out) {
  out->append("\\").append(word.text);
  if (word.has_param) out->append(std::to_string(param));
}

}  // namespace

void CellPadding::Take(const Token& word) {
  std::string_view name = word.text;
  const bool of_row = name.starts_with("trpadd");
  if (!of_row && !name.starts_with("clpad")) return;
  name.remove_prefix(of_row ? 6 : 5);
  const bool unit = name.starts_with('f');
  if (unit) name.remove_prefix(1);
  const std::size_t side = (of_row ? kRowSides : kCellSides).find(name);
  if (name.size() != 1 || side == std::string_view::npos) return;
  Side& changed = (of_row ? row_ : cell_)[side];
  (unit ? changed.unit : changed.length) = word.param;
}

Padding CellPadding::EndCell() {
  const Sides own = std::exchange(cell_, {});
  const auto length = [&](std::size_t side) {
    const Side& set = own[side].unit == kTwips ? own[side] : row_[side];
    return set.unit == kTwips ? std::clamp(set.length, 0, kMostPadding) : -1;
  };
  return {length(0), length(1), length(2), length(3)};
}

void TablePosition::Take(const Token& word) {
  if (!word.text.starts_with("tp") && !word.text.starts_with("tdfrmtxt")) return;
  using From = ShapeBox::From;
  using Align = ShapeBox::Align;
  static const std::unordered_map<std::string_view, From> kX{
      {"tphcol", From::kText}, {"tphmrg", From::kMargin}, {"tphpg", From::kPage}};
  static const std::unordered_map<std::string_view, From> kY{
      {"tpvpara", From::kText}, {"tpvmrg", From::kMargin}, {"tpvpg", From::kPage}};
  static const std::unordered_map<std::string_view, Align> kAcross{{"tposxl", Align::kStart},
                                                                   {"tposxi", Align::kStart},
                                                                   {"tposxc", Align::kCentre},
                                                                   {"tposxr", Align::kEnd},
                                                                   {"tposxo", Align::kEnd}};
  static const std::unordered_map<std::string_view, Align> kDown{{"tposyt", Align::kStart},
                                                                 {"tposyin", Align::kStart},
                                                                 {"tposyc", Align::kCentre},
                                                                 {"tposyb", Align::kEnd},
                                                                 {"tposyout", Align::kEnd}};
  const std::string_view name = word.text;
  const int length = std::clamp(word.param, -kLargestPage, kLargestPage);
  if (name == "tdfrmtxtLeft" || name == "tdfrmtxtRight")
    set_.gap_x = std::max(set_.gap_x, length);
  else if (name == "tdfrmtxtBottom")
    set_.gap_y = std::max(0, length);
  else if (name == "tposx" || name == "tposnegx")
    set_.x = length;
  else if (name == "tposy" || name == "tposnegy")
    SetHeight(Align::kAsSet, length);
  else if (const auto x = kX.find(name); x != kX.end())
    set_.x_from = x->second;
  else if (const auto across = kAcross.find(name); across != kAcross.end())
    set_.x_align = across->second;
  else if (const auto down = kDown.find(name); down != kDown.end())
    SetHeight(down->second, 0);
  else if (const auto y = kY.find(name); y != kY.end()) {
    set_.y_from = y->second;
    y_from_named_ = true;
  } else {
    return;
  }
  const bool placed =
      set_.x != 0 || set_.y != 0 || set_.x_align != Align::kAsSet || set_.y_align != Align::kAsSet;
  place_ = placed ? std::optional(set_) : std::nullopt;
}

// Heights that are not relative to anything are so to the margin.
void TablePosition::SetHeight(ShapeBox::Align align, int y) {
  set_.y_align = align;
  set_.y = y;
  if (!y_from_named_) set_.y_from = ShapeBox::From::kMargin;
}

bool RowDefinition::IsRowWord(std::string_view name) {
  return name == "trowd" || name == "cellx" || IsOfEdge(name) || IsOfCell(name) || IsOfRow(name) ||
         IsNoise(name);
}

bool RowDefinition::Take(const Token& word, ColourTable& colours) {
  const std::string_view name = word.text;
  if (name == "trowd") {
    *this = RowDefinition();
    source_ = "\\trowd";
    return true;
  }
  const bool border = in_border_ && IsOfEdge(name);
  const bool cell = IsOfCell(name);
  if (!border && !cell && name != "cellx" && !IsOfRow(name) && !IsNoise(name)) {
    LeaveEdge();
    return false;
  }
  if (!started() || IsNoise(name)) return true;
  if (source_.size() + pending_.size() > kLongestDefinition) return true;
  if (name == "cellx") {
    EndCell(word, colours);
    return true;
  }
  Append(word, NamesColour(name) ? colours.Position(word.param) : word.param, &pending_);
  if (border) {
    if (edge_ != nullptr) ApplyBorderWord(word, colours, &(cell_.*edge_));
    return true;
  }
  padding_.Take(word);
  if (cell) return TakeCellWord(word, colours);
  TakeRowWord(word);
  return true;
}

void RowDefinition::TakeRowWord(const Token& word) {
  in_border_ = word.text.starts_with("trbrdr");
  if (in_border_) edge_ = nullptr;
  position_.Take(word);
  const int length = std::clamp(word.param, -kWidestTable, kWidestTable);
  if (word.text == "trleft")
    row_.left_edge = length;
  else if (word.text == "trgaph")
    row_.half_gap = length;
  else if (word.text == "trrh")
    row_.height = length;
  else if (word.text == "trhdr")
    row_.header = true;
  else if (word.text == "rtlrow")
    row_.right_to_left = true;
  else if (word.text == "trqc")
    row_.alignment = Alignment::kCentre;
  else if (word.text == "trqr")
    row_.alignment = Alignment::kRight;
}

bool RowDefinition::TakeCellWord(const Token& word, const ColourTable& colours) {
  static const std::unordered_map<std::string_view, Border Cell::*> kEdges{
      {"clbrdrt", &Cell::top},
      {"clbrdrb", &Cell::bottom},
      {"clbrdrl", &Cell::left},
      {"clbrdrr", &Cell::right}};
  const auto edge = kEdges.find(word.text);
  in_border_ = edge != kEdges.end() || word.text.starts_with("cldg");
  edge_ = edge != kEdges.end() ? edge->second : nullptr;
  if (word.text == "clvertalc")
    cell_.vertical_align = Cell::VerticalAlign::kCentre;
  else if (word.text == "clvertalb")
    cell_.vertical_align = Cell::VerticalAlign::kBottom;
  else if (word.text == "clmgf")
    cell_.horizontal_merge = Cell::Merge::kFirst;
  else if (word.text == "clmrg")
    cell_.horizontal_merge = Cell::Merge::kContinued;
  else if (word.text == "clvmgf")
    cell_.vertical_merge = Cell::Merge::kFirst;
  else if (word.text == "clvmrg")
    cell_.vertical_merge = Cell::Merge::kContinued;
  else if (word.text == "cltxbtlr")
    cell_.direction = Cell::Direction::kUp;
  else if (word.text == "cltxtbrl" || word.text == "cltxtbrlv")
    cell_.direction = Cell::Direction::kDown;
  else if (word.text == "clcbpat" || word.text == "clcbpatraw")
    cell_.shading = colours.Position(word.param);
  else if (word.text == "clcfpat" || word.text == "clcfpatraw")
    pattern_colour_ = colours.Position(word.param);
  else if (word.text == "clshdng" || word.text == "clshdngraw")
    pattern_share_ = std::clamp(word.param, 0, kWhole);
  return true;
}

void RowDefinition::EndCell(const Token& word, ColourTable& colours) {
  in_border_ = false;
  edge_ = nullptr;
  const int pattern = std::exchange(pattern_colour_, 0);
  const int share = std::exchange(pattern_share_, 0);
  const Padding padding = padding_.EndCell();
  if (row_.cells.size() >= kMostCells) {
    pending_.clear();
    return;
  }
  Cell cell = std::exchange(cell_, Cell());
  cell.right_edge = std::clamp(word.param, -kWidestTable, kWidestTable);
  cell.padding = padding;
  if (share > 0)
    cell.shading = colours.Add(Mixed(colours.At(pattern), colours.At(cell.shading), share));
  for (Border* edge : {&cell.top, &cell.bottom, &cell.left, &cell.right}) {
    if (!edge->present) *edge = Border();
  }
  source_.append(std::exchange(pending_, {}));
  source_.append("\\cellx").append(std::to_string(cell.right_edge));
  row_.cells.push_back(std::move(cell));
}

void RowDefinition::Apply(Row* row) const {
  std::vector<Cell> content = std::move(row->cells);
  *row = row_;
  row->place = position_.place();
  row->definition = started() ? source_ : "\\trowd";
  while (row->cells.size() < content.size()) {
    Cell cell;
    const int left = row->cells.empty() ? row->left_edge : row->cells.back().right_edge;
    cell.right_edge = std::min(left + kDefaultCellWidth, kWidestTable);
    row->definition.append("\\cellx").append(std::to_string(cell.right_edge));
    row->cells.push_back(std::move(cell));
  }
  for (std::size_t i = 0; i < row->cells.size(); ++i) {
    if (i < content.size()) row->cells[i].blocks = std::move(content[i].blocks);
    if (row->cells[i].blocks.empty()) row->cells[i].blocks.emplace_back(Paragraph());
  }
}

}  // namespace tenora::richtext
