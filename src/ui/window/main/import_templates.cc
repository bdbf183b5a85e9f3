#include "ui/window/main/import_templates.h"

#include <QObject>
#include <algorithm>
#include <string>

#include "letters/template_import.h"
#include "platform/dialogs/file_filter.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr const char* kTitle = "Import Template";
constexpr const char* kFilter =
    "Documents|*.docx;*.doc;*.odt;*.html;*.htm;*.rtf;*.dotx;*.dot;*.ott;*.fodt";
constexpr std::size_t kMostShown = 15;  // repairs in the box

std::string RepairsText(const std::vector<std::string>& repairs) {
  std::string text = "Mended in the template:";
  for (std::size_t i = 0; i < std::min(repairs.size(), kMostShown); ++i) {
    text += "\r\n" + repairs[i];
  }
  if (repairs.size() > kMostShown) {
    text += "\r\nand " + std::to_string(repairs.size() - kMostShown) + " more.";
  }
  return text;
}

}  // namespace

void ImportTemplates::Import() {
  Dialogs& dialogs = session_.platform.dialogs;
  const auto document = dialogs.ChooseFileToOpen(kTitle, kFilter);
  if (document) Import(*document);
}

bool ImportTemplates::IsDocument(const std::filesystem::path& file) {
  const std::string extension = ToLower(file.extension().string());
  const std::vector<std::string> patterns = ParseFileFilter(kFilter).front().patterns;
  return extension != ".rtf" && std::ranges::find(patterns, "*" + extension) != patterns.end();
}

void ImportTemplates::Import(const std::filesystem::path& document) {
  Dialogs& dialogs = session_.platform.dialogs;
  const auto kind = dialogs.Choose(
      "Import \"" + document.filename().string() + "\" as",
      {"Tenant letter template", "Owner letter template", session_.cheque_word + " template"},
      static_cast<std::size_t>(letters_.CurrentList()));
  if (!kind) return;
  const std::string folders[] = {std::string(kTemplates), std::string(kOwnerTemplates),
                                 session_.cheque_word};
  ImportedTemplate imported;
  try {
    run_(QObject::tr("Importing %1").arg(QString::fromStdString(document.filename().string())),
         [&](WorkProgress& progress) {
           progress.Report(0, 0, QObject::tr("LibreOffice is reading the document…"));
           TemplateImport wanted{document, folders[*kind], {}, {}};
           wanted.conversion.stopped = [&] { return progress.Cancelled(); };
           imported = ImportTemplate(wanted, TemplateLibrary(session_.database.DataFolder()),
                                     session_.platform.clock.Today());
         });
  } catch (const RuntimeError& error) {
    if (error.number() == error_number::kCancelled) return;
    throw;
  }
  tree_.RefreshTree();
  letters_.OpenFile(imported.file);
  LetterWindow* const window = letters_.OfFile(imported.file);
  if (window != nullptr && !imported.findings.empty()) {
    lint_panel_.Check(*window, session_.platform.clock.Today(), letters_.custom_fields());
  }
  if (!imported.repairs.empty()) dialogs.Say(RepairsText(imported.repairs));
}

}  // namespace tenora
