#include "platform/richtext/border_kinds.h"

#include <array>
#include <unordered_map>
#include <utility>

namespace tenora::richtext {
namespace {

using Kind = Border::Kind;

// Deliberate: in these words "tn" stands before the thick line's "th", and the outermost line is
// named last.
constexpr std::array<std::pair<Kind, std::string_view>, 17> kWords{
    {{Kind::kSingle, "brdrs"},
     {Kind::kThick, "brdrth"},
     {Kind::kDouble, "brdrdb"},
     {Kind::kTriple, "brdrtriple"},
     {Kind::kDotted, "brdrdot"},
     {Kind::kDashed, "brdrdash"},
     {Kind::kDashDot, "brdrdashd"},
     {Kind::kDashDotDot, "brdrdashdd"},
     {Kind::kThickThinSmall, "brdrtnthsg"},
     {Kind::kThinThickSmall, "brdrthtnsg"},
     {Kind::kThinThickThinSmall, "brdrtnthtnsg"},
     {Kind::kThickThinMedium, "brdrtnthmg"},
     {Kind::kThinThickMedium, "brdrthtnmg"},
     {Kind::kThinThickThinMedium, "brdrtnthtnmg"},
     {Kind::kThickThinLarge, "brdrtnthlg"},
     {Kind::kThinThickLarge, "brdrthtnlg"},
     {Kind::kThinThickThinLarge, "brdrtnthtnlg"}}};

constexpr std::pair<std::string_view, Kind> kAlsoRead[] = {
    {"brdrsh", Kind::kSingle},     {"brdrhair", Kind::kSingle},      {"brdrwavy", Kind::kSingle},
    {"brdrinset", Kind::kSingle},  {"brdroutset", Kind::kSingle},    {"brdrframe", Kind::kSingle},
    {"brdremboss", Kind::kSingle}, {"brdrengrave", Kind::kSingle},   {"brdrwavydb", Kind::kDouble},
    {"brdrdashsm", Kind::kDashed}, {"brdrdashdotstr", Kind::kDashed}};

}  // namespace

std::string_view BorderKindWord(Kind kind) {
  const auto index = static_cast<std::size_t>(kind);
  return index < kWords.size() ? kWords[index].second : kWords[0].second;
}

std::optional<Kind> BorderKindOf(std::string_view word) {
  static const std::unordered_map<std::string_view, Kind> kKinds = [] {
    std::unordered_map<std::string_view, Kind> kinds(std::begin(kAlsoRead), std::end(kAlsoRead));
    for (const auto& [kind, name] : kWords) kinds.emplace(name, kind);
    return kinds;
  }();
  const auto found = kKinds.find(word);
  if (found == kKinds.end()) return std::nullopt;
  return found->second;
}

bool HasSeveralLines(Kind kind) {
  return kind == Kind::kDouble || kind == Kind::kTriple || kind >= Kind::kThickThinSmall;
}

}  // namespace tenora::richtext
