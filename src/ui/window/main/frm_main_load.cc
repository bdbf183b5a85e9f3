// What the main window does before and when it is first shown, and the layout it remembers.
#include <QApplication>
#include <QFontDatabase>
#include <QStatusBar>
#include <utility>

#include "data/opened_database.h"
#include "letters/custom_field_codes.h"
#include "output/letter_printing.h"
#include "platform/runtime/conversion.h"
#include "startup/cheque_word.h"
#include "ui/window/appearance/colour_scheme.h"
#include "ui/window/help/frm_forms.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Mail";
constexpr const char* kLoad = "MDIForm_Load";
const QStringList kTopGroups{QStringLiteral("Templates"), QStringLiteral("Tenants"),
                             QStringLiteral("Owners")};

const QStringList kPreselectedFonts{QStringLiteral("Arial"), QStringLiteral("Times New Roman"),
                                    QStringLiteral("Courier")};

std::string Hex(const QByteArray& bytes) { return bytes.toHex().toStdString(); }

QByteArray FromHex(const std::string& text) {
  return QByteArray::fromHex(QByteArray::fromStdString(text));
}

}  // namespace

void frmMain::MDIForm_Load() {
  Guard(kLoad, [this] { printers_ = parts_.make_printers(); });
  Guard(kLoad, [this] { LoadPageWidth(); });
  Guard(kLoad, [this] { ApplyColourScheme(); });
  Guard(kLoad, [this] { tree_->model().MakeTopGroups(); });
  Guard(kLoad, [this] { session_.SetChequeWord(); });
  Guard(kLoad, [this] { LoadFonts(); });
  Guard(kLoad, [this] { LoadRentalData(); });
  // The catalogue of merge codes is fixed; what remains is to show its list.
  Guard(kLoad, [this] { DisplayInsertMenu(); });
  Guard(kLoad, [this] { tree_->RefreshTree(); });
  Guard(kLoad, [this] { LoadSpeller(); });
  Guard(kLoad, [this] { RestoreLayout(); });
}

void frmMain::LoadPageWidth() {
  if (!printers_) return;
  if (PrinterMod(*printers_, session_.settings).PrinterCount() == 0) return;
  const std::int16_t width =
      session_.settings.GetSettingAs(ToInt16, kSection, "PrinterPageWidth", "0");
  page_width_action_->setChecked(width != 0);
}

// The printers draw with the fonts of the desktop; without a printer the list stays empty.
void frmMain::LoadFonts() {
  if (!printers_ || PrinterMod(*printers_, session_.settings).PrinterCount() == 0) return;
  editor_actions_->SetFonts(kPreselectedFonts, QFontDatabase::families());
}

void frmMain::ApplyColourScheme() {
  QApplication::setPalette(MakePalette(StoredColours(session_.settings), dark_desktop_));
}

// The failure to open has been shown; every load behind it would only fail in its turn.
void frmMain::LoadRentalData() {
  Database& database = session_.database;
  const OpenedDatabase opened(database);
  if (!database.IsOpen()) {
    statusBar()->showMessage(
        tr("The rental database could not be read: tenants and owners are "
           "missing."));
    return;
  }
  session_.caches.Load(database, [this](const Caches::LoadStep& load) { Guard(kLoad, load); });
  Guard(kLoad, [&] { session_.options.LoadOptions(); });
  Guard(kLoad, [&] {
    custom_fields_ = ReadCustomFieldCodes(database);
    insert_menus_->FillCustomMenus(custom_fields_);
  });
}

void frmMain::FirstDisplay() {
  Settings& settings = session_.settings;
  const std::string open = settings.GetSettingText(kSection, "TreeOpen", "");
  if (open.empty()) {
    tree_->ExpandGroups(kTopGroups);
  } else {
    tree_->OpenAgain(QString::fromStdString(open));
  }
  const int now = splitter_->sizes().value(0);
  const int place = static_cast<int>(
      settings.GetSettingAs(ToDouble, kSection, "SplitterVert", std::to_string(now)));
  splitter_->setSizes({place, splitter_->width() - place - splitter_->handleWidth()});
  if (parts_.command_line.Contains("/NewFormsInstalled")) {
    dialogs().Say(
        "New template forms have been installed.  They are available on the left side of the "
        "screen in the 'Templates' group");
  }
  if (frmForms::WantedAtStartup(settings)) ShowForms();
}

void frmMain::RestoreLayout() {
  Settings& settings = session_.settings;
  restoreGeometry(FromHex(settings.GetSettingText(kSection, "WindowGeometry", "")));
  restoreState(FromHex(settings.GetSettingText(kSection, "WindowState", "")));
  desk_->ShowAsTabs(settings.GetSettingText(kSection, "LettersAsTabs", "1") != "0");
}

void frmMain::StoreLayout() {
  Settings& settings = session_.settings;
  const std::pair<const char*, std::string> layout[] = {
      {"WindowGeometry", Hex(saveGeometry())},
      {"WindowState", Hex(saveState())},
      {"LettersAsTabs", desk_->Tabbed() ? "1" : "0"},
      {"SplitterVert", std::to_string(splitter_->sizes().value(0))},
      {"TreeOpen", tree_->OpenEntries().toStdString()}};
  for (const auto& [key, value] : layout) {
    if (settings.GetSettingText(kSection, key, "") == value) continue;
    settings.SaveSettingText(kSection, key, value);
    // Where one cannot be stored, which has been shown, a box for each of the others helps nobody.
    if (settings.GetSettingText(kSection, key, "") != value) return;
  }
}

}  // namespace tenora
