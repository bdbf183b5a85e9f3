#include "platform/richtext/read/paragraph_words.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "platform/richtext/read/border_words.h"

namespace tenora::richtext {
namespace {

struct Context {
  const ColourTable& colours;
  ParagraphState& state;
  ParagraphFormat& format;
};

using Handler = void (*)(Context&, const Token&);
using Words = std::unordered_map<std::string_view, Handler>;

constexpr int kLongestLength = 100'000;  // twips, beyond every sheet of paper
constexpr std::size_t kMostTabs = 64;
constexpr int kMostStyles = 0xffff;
// An editor lays a table out twice for each table around it.
constexpr int kDeepestNesting = 8;

int Length(const Token& word) { return std::clamp(word.param, -kLongestLength, kLongestLength); }

template <int ParagraphFormat::*Member>
void SetLength(Context& context, const Token& word) {
  context.format.*Member = Length(word);
}

template <bool ParagraphFormat::*Member>
void Switch(Context& context, const Token& word) {
  context.format.*Member = word.On();
}

template <Alignment Value>
void Align(Context& context, const Token&) {
  context.format.alignment = Value;
}

template <BorderTarget Target>
void SelectBorder(Context& context, const Token&) {
  context.state.border = Target;
}

template <TabStop::Kind Kind>
void SetTabKind(Context& context, const Token&) {
  context.state.tab.kind = Kind;
}

template <char... Name>
void SetLeader(Context& context, const Token&) {
  context.state.tab.leader = {Name...};
}

void AddTab(Context& context, int position) {
  TabStop tab = std::exchange(context.state.tab, TabStop());
  tab.position = position;
  if (context.format.tabs.size() < kMostTabs) context.format.tabs.push_back(std::move(tab));
}

FramePlace& FrameOf(Context& context) {
  if (!context.format.frame) context.format.frame.emplace();
  return *context.format.frame;
}

template <class Change>
void ChangeBorders(Context& context, Change change) {
  ParagraphFormat& format = context.format;
  const BorderTarget target = context.state.border;
  const bool box = target == BorderTarget::kBox;
  if (box || target == BorderTarget::kTop) change(format.top);
  if (box || target == BorderTarget::kBottom) change(format.bottom);
  if (box || target == BorderTarget::kLeft) change(format.left);
  if (box || target == BorderTarget::kRight) change(format.right);
  if (target == BorderTarget::kBetween) change(format.between);
}

void AddAlignmentWords(Words& words) {
  words.insert({
      {"ql", Align<Alignment::kLeft>},
      {"qc", Align<Alignment::kCentre>},
      {"qr", Align<Alignment::kRight>},
      {"qj", Align<Alignment::kJustified>},
      {"qd", Align<Alignment::kDistributed>},
      {"li", SetLength<&ParagraphFormat::left_indent>},
      {"ri", SetLength<&ParagraphFormat::right_indent>},
      {"lin", SetLength<&ParagraphFormat::left_indent>},
      {"rin", SetLength<&ParagraphFormat::right_indent>},
      {"fi", SetLength<&ParagraphFormat::first_indent>},
      {"sb", SetLength<&ParagraphFormat::space_before>},
      {"sa", SetLength<&ParagraphFormat::space_after>},
      {"sbauto", Switch<&ParagraphFormat::automatic_before>},
      {"saauto", Switch<&ParagraphFormat::automatic_after>},
      {"sl", SetLength<&ParagraphFormat::line_spacing>},
      {"slmult", Switch<&ParagraphFormat::line_spacing_multiple>},
      {"pagebb", Switch<&ParagraphFormat::page_break_before>},
      {"keep", Switch<&ParagraphFormat::keep_together>},
      {"keepn", Switch<&ParagraphFormat::keep_with_next>},
      {"widctlpar", Switch<&ParagraphFormat::widow_control>},
      {"nowidctlpar", [](Context& c, const Token&) { c.format.widow_control = false; }},
      {"widowctrl",
       [](Context& c, const Token& word) {
         c.format.widow_control = c.state.widow_control = word.On();
       }},
      {"rtlpar", [](Context& c, const Token&) { c.format.right_to_left = true; }},
      {"ltrpar", [](Context& c, const Token&) { c.format.right_to_left = false; }},
      {"cbpat",
       [](Context& c, const Token& word) { c.format.shading = c.colours.Position(word.param); }},
      {"shading",
       [](Context& c, const Token& word) { c.state.shading = std::clamp(word.param, 0, 10000); }},
  });
}

void AddTabWords(Words& words) {
  words.insert({
      {"tx", [](Context& c, const Token& word) { AddTab(c, Length(word)); }},
      {"tb",
       [](Context& c, const Token& word) {
         c.state.tab.kind = TabStop::Kind::kBar;
         AddTab(c, Length(word));
       }},
      {"tqr", SetTabKind<TabStop::Kind::kRight>},
      {"tqc", SetTabKind<TabStop::Kind::kCentre>},
      {"tqdec", SetTabKind<TabStop::Kind::kDecimal>},
      {"tldot", SetLeader<'d', 'o', 't'>},
      {"tlmdot", SetLeader<'m', 'd', 'o', 't'>},
      {"tlhyph", SetLeader<'h', 'y', 'p', 'h'>},
      {"tlul", SetLeader<'u', 'l'>},
      {"tlth", SetLeader<'t', 'h'>},
      {"tleq", SetLeader<'e', 'q'>},
  });
}

void AddEdgeWords(Words& words) {
  words.insert({
      {"brdrt", SelectBorder<BorderTarget::kTop>},
      {"brdrb", SelectBorder<BorderTarget::kBottom>},
      {"brdrl", SelectBorder<BorderTarget::kLeft>},
      {"brdrr", SelectBorder<BorderTarget::kRight>},
      {"box", SelectBorder<BorderTarget::kBox>},
      {"brdrbtw", SelectBorder<BorderTarget::kBetween>},
      {"brdrbar", SelectBorder<BorderTarget::kNone>},
      {"chbrdr", SelectBorder<BorderTarget::kNone>},
  });
}

template <int FramePlace::*Member>
void SetFrameLength(Context& context, const Token& word) {
  FrameOf(context).*Member = std::clamp(word.param, -kLargestPage, kLargestPage);
}

template <auto FramePlace::*Member, auto Value>
void SetFrame(Context& context, const Token&) {
  FrameOf(context).*Member = Value;
}

// Heights that are not relative to anything are so to the margin.
void SetFrameHeight(Context& context, ShapeBox::Align align, int y) {
  FramePlace& frame = FrameOf(context);
  frame.y_align = align;
  frame.y = y;
  if (!context.state.frame_from_named) frame.y_from = ShapeBox::From::kMargin;
}

template <ShapeBox::From From>
void SetFrameTopFrom(Context& context, const Token&) {
  FrameOf(context).y_from = From;
  context.state.frame_from_named = true;
}

void AddFrameWords(Words& words) {
  using From = ShapeBox::From;
  using Align = ShapeBox::Align;
  words.insert({
      {"absw",
       [](Context& c, const Token& word) {
         FrameOf(c).width = std::clamp(word.param, 0, kLargestPage);
       }},
      {"absh", SetFrameLength<&FramePlace::height>},
      {"posx", SetFrameLength<&FramePlace::x>},
      {"posnegx", SetFrameLength<&FramePlace::x>},
      {"dxfrtext",
       [](Context& c, const Token& word) {
         FramePlace& frame = FrameOf(c);
         frame.gap_x = frame.gap_y = std::clamp(word.param, 0, kLargestPage);
       }},
      {"dfrmtxtx", SetFrameLength<&FramePlace::gap_x>},
      {"dfrmtxty", SetFrameLength<&FramePlace::gap_y>},
      {"nowrap", SetFrame<&FramePlace::text_beside, false>},
      {"phcol", SetFrame<&FramePlace::x_from, From::kText>},
      {"phmrg", SetFrame<&FramePlace::x_from, From::kMargin>},
      {"phpg", SetFrame<&FramePlace::x_from, From::kPage>},
      {"posxl", SetFrame<&FramePlace::x_align, Align::kStart>},
      {"posxi", SetFrame<&FramePlace::x_align, Align::kStart>},
      {"posxc", SetFrame<&FramePlace::x_align, Align::kCentre>},
      {"posxr", SetFrame<&FramePlace::x_align, Align::kEnd>},
      {"posxo", SetFrame<&FramePlace::x_align, Align::kEnd>},
      {"pvpara", SetFrameTopFrom<From::kText>},
      {"pvmrg", SetFrameTopFrom<From::kMargin>},
      {"pvpg", SetFrameTopFrom<From::kPage>},
      {"posyil", SetFrameTopFrom<From::kText>},
      {"posyt", [](Context& c, const Token&) { SetFrameHeight(c, Align::kStart, 0); }},
      {"posyc", [](Context& c, const Token&) { SetFrameHeight(c, Align::kCentre, 0); }},
      {"posyb", [](Context& c, const Token&) { SetFrameHeight(c, Align::kEnd, 0); }},
  });
  for (const char* const word : {"posy", "posnegy"}) {
    words[word] = [](Context& c, const Token& token) {
      SetFrameHeight(c, Align::kAsSet, std::clamp(token.param, -kLargestPage, kLargestPage));
    };
  }
}

const Words& ParagraphWords() {
  static const Words words = [] {
    Words all{
        {"pard",
         [](Context& c, const Token&) {
           const bool widow_control = c.state.widow_control;
           c.state = ParagraphState();
           c.state.widow_control = c.format.widow_control = widow_control;
         }},
        {"intbl", [](Context& c, const Token& word) { c.state.in_table = word.On(); }},
        {"itap",
         [](Context& c, const Token& word) {
           c.state.nesting = std::clamp(word.param, 0, kDeepestNesting);
         }},
        {"s", [](Context& c,
                 const Token& word) { c.state.style = std::clamp(word.param, 0, kMostStyles); }},
        {"contextualspace",
         [](Context& c, const Token& word) { c.state.contextual_space = word.On(); }},
        {"ls", [](Context& c, const Token& word) { c.state.list = word.param; }},
        {"ilvl",
         [](Context& c, const Token& word) { c.state.list_level = std::clamp(word.param, 0, 8); }},
    };
    AddAlignmentWords(all);
    AddTabWords(all);
    AddEdgeWords(all);
    AddFrameWords(all);
    return all;
  }();
  return words;
}

}  // namespace

int ParagraphState::TableLevel() const { return std::max(nesting, in_table ? 1 : 0); }

bool IsParagraphWord(std::string_view name) {
  return ParagraphWords().contains(name) || IsBorderWord(name);
}

void ApplyParagraphWord(const Token& word, const ColourTable& colours, ParagraphState* state) {
  Context context{colours, *state, state->format};
  const auto found = ParagraphWords().find(word.text);
  if (found != ParagraphWords().end()) return found->second(context, word);
  ChangeBorders(context, [&](Border& border) { ApplyBorderWord(word, colours, &border); });
}

}  // namespace tenora::richtext
