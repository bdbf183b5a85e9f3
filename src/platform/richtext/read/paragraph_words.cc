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

template <class Change>
void ChangeBorders(Context& context, Change change) {
  ParagraphFormat& format = context.format;
  const BorderTarget target = context.state.border;
  const bool box = target == BorderTarget::kBox;
  if (box || target == BorderTarget::kTop) change(format.top);
  if (box || target == BorderTarget::kBottom) change(format.bottom);
  if (box || target == BorderTarget::kLeft) change(format.left);
  if (box || target == BorderTarget::kRight) change(format.right);
}

void AddAlignmentWords(Words& words) {
  words.insert({
      {"ql", Align<Alignment::kLeft>},
      {"qc", Align<Alignment::kCentre>},
      {"qr", Align<Alignment::kRight>},
      {"qj", Align<Alignment::kJustified>},
      {"qd", Align<Alignment::kJustified>},
      {"li", SetLength<&ParagraphFormat::left_indent>},
      {"ri", SetLength<&ParagraphFormat::right_indent>},
      {"lin", SetLength<&ParagraphFormat::left_indent>},
      {"rin", SetLength<&ParagraphFormat::right_indent>},
      {"fi", SetLength<&ParagraphFormat::first_indent>},
      {"sb", SetLength<&ParagraphFormat::space_before>},
      {"sa", SetLength<&ParagraphFormat::space_after>},
      {"sl", SetLength<&ParagraphFormat::line_spacing>},
      {"slmult", Switch<&ParagraphFormat::line_spacing_multiple>},
      {"pagebb", Switch<&ParagraphFormat::page_break_before>},
      {"keep", Switch<&ParagraphFormat::keep_together>},
      {"keepn", Switch<&ParagraphFormat::keep_with_next>},
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
      {"brdrbtw", SelectBorder<BorderTarget::kNone>},
      {"brdrbar", SelectBorder<BorderTarget::kNone>},
      {"chbrdr", SelectBorder<BorderTarget::kNone>},
  });
}

const Words& ParagraphWords() {
  static const Words words = [] {
    Words all{
        {"pard", [](Context& c, const Token&) { c.state = ParagraphState(); }},
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
