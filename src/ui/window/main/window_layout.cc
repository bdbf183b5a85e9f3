#include "ui/window/main/window_layout.h"

#include <string>
#include <utility>

#include "platform/runtime/conversion.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Mail";
const QStringList kTopGroups{QStringLiteral("Templates"), QStringLiteral("Tenants"),
                             QStringLiteral("Owners")};

std::string Hex(const QByteArray& bytes) { return bytes.toHex().toStdString(); }

QByteArray FromHex(const std::string& text) {
  return QByteArray::fromHex(QByteArray::fromStdString(text));
}

}  // namespace

void WindowLayout::Restore() {
  window_.restoreGeometry(FromHex(settings_.GetSettingText(kSection, "WindowGeometry", "")));
  window_.restoreState(FromHex(settings_.GetSettingText(kSection, "WindowState", "")));
  desk_.ShowAsTabs(settings_.GetSettingText(kSection, "LettersAsTabs", "1") != "0");
}

void WindowLayout::RestoreTree() {
  const std::string open = settings_.GetSettingText(kSection, "TreeOpen", "");
  if (open.empty()) {
    tree_.ExpandGroups(kTopGroups);
  } else {
    tree_.OpenAgain(QString::fromStdString(open));
  }
  const int now = splitter_.sizes().value(0);
  const int place = static_cast<int>(
      settings_.GetSettingAs(ToDouble, kSection, "SplitterVert", std::to_string(now)));
  splitter_.setSizes({place, splitter_.width() - place - splitter_.handleWidth()});
}

void WindowLayout::Store() {
  const std::pair<const char*, std::string> layout[] = {
      {"WindowGeometry", Hex(window_.saveGeometry())},
      {"WindowState", Hex(window_.saveState())},
      {"LettersAsTabs", desk_.Tabbed() ? "1" : "0"},
      {"SplitterVert", std::to_string(splitter_.sizes().value(0))},
      {"TreeOpen", tree_.OpenEntries().toStdString()}};
  for (const auto& [key, value] : layout) {
    if (settings_.GetSettingText(kSection, key, "") == value) continue;
    settings_.SaveSettingText(kSection, key, value);
    // If one cannot be stored, the error has been shown; do not repeat it for the others.
    if (settings_.GetSettingText(kSection, key, "") != value) return;
  }
}

}  // namespace tenora
