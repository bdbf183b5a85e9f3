#include "platform/richtext/read/destinations.h"

#include <unordered_map>
#include <unordered_set>

namespace tenora::richtext {

Opens WhatOpens(std::string_view word, bool starred) {
  static const std::unordered_map<std::string_view, Opens> kDestinations{
      {"fonttbl", Opens::kFonts},
      {"colortbl", Opens::kColours},
      {"listtable", Opens::kLists},
      {"listoverridetable", Opens::kOverrides},
      {"info", Opens::kInfo},
      {"pn", Opens::kClassicList},
      {"nesttableprops", Opens::kNestedRow},
      {"field", Opens::kField},
      {"fldinst", Opens::kInstruction},
      {"fldrslt", Opens::kResult},
      {"pict", Opens::kPicture},
      {"shppict", Opens::kObject},
      {"object", Opens::kObject},
      {"shp", Opens::kObject},
      {"shpgrp", Opens::kObject},
      {"shpinst", Opens::kObject},
      {"do", Opens::kObject},
      {"moMath", Opens::kObject},
      {"mmath", Opens::kObject},
      {"bkmkstart", Opens::kMark},
      {"bkmkend", Opens::kMark},
      {"atrfstart", Opens::kMark},
      {"atrfend", Opens::kMark},
      {"atnid", Opens::kMark},
      {"atnauthor", Opens::kMark},
      {"xe", Opens::kMark},
      {"tc", Opens::kMark},
      {"tcn", Opens::kMark},
      {"annotation", Opens::kMarkStory},
      {"footnote", Opens::kObjectStory},
      {"header", Opens::kHeadStory},
      {"headerl", Opens::kHeadStory},
      {"headerr", Opens::kHeadStory},
      {"headerf", Opens::kHeadStory},
      {"footer", Opens::kHeadStory},
      {"footerl", Opens::kHeadStory},
      {"footerr", Opens::kHeadStory},
      {"footerf", Opens::kHeadStory},
      {"shptxt", Opens::kCopiedStory},
      {"dptxbxtext", Opens::kCopiedStory},
      {"docvar", Opens::kHead},
      {"userprops", Opens::kHead},
      {"background", Opens::kHead},
      {"upr", Opens::kAlternatives},
      {"ud", Opens::kUnicode},
      // What a style looks like is repeated on all text in it, without what it only inherits.
      {"stylesheet", Opens::kSkipped},
      {"nonshppict", Opens::kSkipped},
      {"nonesttables", Opens::kSkipped},
      {"pntext", Opens::kSkipped},
      {"listtext", Opens::kSkipped},
      {"filetbl", Opens::kSkipped},
      {"revtbl", Opens::kSkipped},
      {"ftnsep", Opens::kSkipped},
      {"ftnsepc", Opens::kSkipped},
      {"ftncn", Opens::kSkipped},
      {"aftnsep", Opens::kSkipped},
      {"aftnsepc", Opens::kSkipped},
      {"aftncn", Opens::kSkipped},
      {"comment", Opens::kSkipped},
      {"private", Opens::kSkipped},
      {"atntime", Opens::kSkipped},
      {"template", Opens::kSkipped},
      {"keycode", Opens::kSkipped},
  };
  const auto found = kDestinations.find(word);
  if (found != kDestinations.end()) return found->second;
  return starred ? Opens::kSkipped : Opens::kNothing;
}

bool IsNeverText(std::string_view word) {
  static const std::unordered_set<std::string_view> kWords{
      "blipuid", "colorschememapping", "datafield", "datastore",
      "falt",    "latentstyles",       "mmathPr",   "panose",
      "rsidtbl", "themedata",          "xmlnstbl",  "wgrffmtfilter"};
  return kWords.contains(word);
}

std::optional<Destination> DestinationOf(Opens opens) {
  switch (opens) {
    case Opens::kSkipped:
    case Opens::kInstruction:
      return Destination::kSkip;
    case Opens::kFonts:
      return Destination::kFonts;
    case Opens::kColours:
      return Destination::kColours;
    case Opens::kLists:
      return Destination::kLists;
    case Opens::kOverrides:
      return Destination::kOverrides;
    case Opens::kInfo:
      return Destination::kInfo;
    case Opens::kClassicList:
      return Destination::kClassicList;
    case Opens::kNestedRow:
    case Opens::kAlternatives:
    case Opens::kCopiedStory:  // a text box without its shape: its text is text
      return Destination::kText;
    default:
      return std::nullopt;
  }
}

}  // namespace tenora::richtext
