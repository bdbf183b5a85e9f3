#include "platform/richtext/read/character_words.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace tenora::richtext {
namespace {

struct Context {
  FontTable& fonts;
  const ColourTable& colours;
  CharFormat& format;
};

using Handler = void (*)(Context&, const Token&);
using Words = std::unordered_map<std::string_view, Handler>;

constexpr int kDefaultHalfPoints = 24;
constexpr int kLargestHalfPoints = 3276;

template <bool CharFormat::*Member>
void Switch(Context& context, const Token& word) {
  context.format.*Member = word.On();
}

template <Underline Kind>
void SetUnderline(Context& context, const Token& word) {
  context.format.underline = word.On() ? Kind : Underline::kNone;
}

template <Script Kind>
void SetScript(Context& context, const Token& word) {
  context.format.script = word.On() ? Kind : Script::kNormal;
}

template <int Sign>
void Raise(Context& context, const Token& word) {
  context.format.raise_half_points = Sign * std::clamp(word.Or(6), 0, kLargestHalfPoints);
}

void SetSize(Context& context, const Token& word) {
  const int size = word.Or(kDefaultHalfPoints);
  context.format.half_points = size <= 0 ? kDefaultHalfPoints : std::min(size, kLargestHalfPoints);
}

void SetKerning(Context& context, const Token& word) {
  context.format.kerned_from = std::clamp(word.param, 0, kLargestHalfPoints);
}

void SetHighlight(Context& context, const Token& word) {
  context.format.highlight = context.colours.Position(word.param);
}

const Words& CharacterWords() {
  static const Words words{
      {"plain", [](Context& c, const Token&) { c.format = PlainFormat(); }},
      {"b", Switch<&CharFormat::bold>},
      {"i", Switch<&CharFormat::italic>},
      {"strike", Switch<&CharFormat::strike>},
      {"striked", Switch<&CharFormat::strike>},
      {"v", Switch<&CharFormat::hidden>},
      // A tracked deletion is invisible to readers of the letter, but is kept.
      {"deleted", Switch<&CharFormat::hidden>},
      {"caps", Switch<&CharFormat::all_caps>},
      {"scaps", Switch<&CharFormat::small_caps>},
      {"protect", Switch<&CharFormat::protect>},
      {"ul", SetUnderline<Underline::kSingle>},
      {"uldb", SetUnderline<Underline::kDouble>},
      {"uld", SetUnderline<Underline::kDotted>},
      {"ulthd", SetUnderline<Underline::kDotted>},
      {"uldash", SetUnderline<Underline::kDash>},
      {"uldashd", SetUnderline<Underline::kDash>},
      {"uldashdd", SetUnderline<Underline::kDash>},
      {"ulldash", SetUnderline<Underline::kDash>},
      {"ulthdash", SetUnderline<Underline::kDash>},
      {"ulthdashd", SetUnderline<Underline::kDash>},
      {"ulthdashdd", SetUnderline<Underline::kDash>},
      {"ulthldash", SetUnderline<Underline::kDash>},
      {"ulw", SetUnderline<Underline::kWords>},
      {"ulwave", SetUnderline<Underline::kWave>},
      {"ulhwave", SetUnderline<Underline::kWave>},
      {"ululdbwave", SetUnderline<Underline::kWave>},
      {"ulth", SetUnderline<Underline::kThick>},
      {"ulnone", [](Context& c, const Token&) { c.format.underline = Underline::kNone; }},
      {"super", SetScript<Script::kSuper>},
      {"sub", SetScript<Script::kSub>},
      {"nosupersub", [](Context& c, const Token&) { c.format.script = Script::kNormal; }},
      {"up", Raise<1>},
      {"dn", Raise<-1>},
      {"fs", SetSize},
      {"kerning", SetKerning},
      {"f", [](Context& c, const Token& word) { c.format.font = c.fonts.Position(word.param); }},
      {"cf",
       [](Context& c, const Token& word) { c.format.colour = c.colours.Position(word.param); }},
      {"highlight", SetHighlight},
      {"cb", SetHighlight},
      {"chcbpat", SetHighlight},
  };
  return words;
}

}  // namespace

CharFormat PlainFormat() {
  CharFormat format;
  format.font = kDefaultFont;
  return format;
}

bool IsCharacterWord(std::string_view name) { return CharacterWords().contains(name); }

bool ApplyCharacterWord(const Token& word, FontTable& fonts, const ColourTable& colours,
                        CharFormat* format) {
  const auto found = CharacterWords().find(word.text);
  if (found == CharacterWords().end()) return false;
  Context context{fonts, colours, *format};
  found->second(context, word);
  return true;
}

bool IsInvisibleWord(std::string_view name) {
  static const std::unordered_set<std::string_view> kWords{
      "lang",    "langfe",       "langnp",   "langfenp", "noproof",  "insrsid",
      "rsid",    "charrsid",     "delrsid",  "sectrsid", "pararsid", "tblrsid",
      "styrsid", "expnd",        "expndtw",  "cgrid",    "rtlch",    "ltrch",
      "fcs",     "loch",         "hich",     "dbch",     "af",       "afs",
      "ab",      "ai",           "alang",    "acf",      "aul",      "aulnone",
      "lbr",     "nosectexpand", "aspalpha", "aspnum",   "faauto",   "adjustright"};
  return kWords.contains(name);
}

}  // namespace tenora::richtext
