#include "startup/import_command.h"

#include <filesystem>
#include <optional>
#include <ostream>

#include "data/program.h"
#include "letters/custom_field_codes.h"
#include "letters/template_import.h"
#include "letters/template_library.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "startup/command_session.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

std::string FolderOf(std::string_view kind, Session& session) {
  if (kind == "tenant") return std::string(kTemplates);
  if (kind == "owner") return std::string(kOwnerTemplates);
  session.SetChequeWord();
  return session.cheque_word;
}

// Without the agency's database, custom fields are not checked.
std::optional<CustomFieldCodes> FieldsIn(const fs::path& path, query::Workspace& workspace) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  return ReadCustomFieldCodes(*workspace.OpenDatabase(path));
}

}  // namespace

bool ImportTemplates(const ImportRequest& request, std::ostream& output, std::ostream& errors) {
  MakeOwnProgramFolder();
  CommandSession command(errors);
  const fs::path data_folder = command.session().database.DataFolder();
  const std::string folder = FolderOf(request.kind, command.session());
  const auto fields = FieldsIn(command.session().database.Location(), command.workspace());
  bool all = true;
  for (const std::string& document : request.documents) {
    try {
      const ImportedTemplate imported = ImportTemplate(
          {NativePath(document), folder, request.name, {}}, TemplateLibrary(data_folder),
          command.clock().Today(), fields ? &*fields : nullptr);
      const std::string file = imported.file.string();
      output << TerminalLine("Imported: " + file) << '\n';
      for (const std::string& repair : imported.repairs) {
        output << TerminalLine(file + ": repaired: " + repair) << '\n';
      }
      for (const TemplateFinding& finding : imported.findings) {
        output << TerminalLine(file + ": " + finding.Text()) << '\n';
      }
    } catch (...) {
      errors << TerminalText(ErrorText(CurrentError())) << std::endl;
      all = false;
    }
  }
  return all;
}

}  // namespace tenora
