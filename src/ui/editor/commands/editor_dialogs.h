// The small dialogs of the Format and Insert menus.
#pragma once

#include <QWidget>
#include <optional>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora {

// The unit that lengths are shown in: centimetres, or inches where the locale uses them.
struct LengthUnit {
  double twips = 567;
  QString suffix;  // " cm"
};
LengthUnit LocaleUnit();

// Each gives nothing when cancelled. Lengths are twips.
std::optional<std::vector<richtext::TabStop>> AskTabStops(
    QWidget* parent, const std::vector<richtext::TabStop>& tabs);
// Changes the spaces around paragraphs and the height of their lines.
bool AskSpacing(QWidget* parent, richtext::ParagraphFormat* format);

struct TableSize {
  int rows = 2, columns = 2;
};
std::optional<TableSize> AskTableSize(QWidget* parent);

}  // namespace tenora
