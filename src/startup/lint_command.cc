#include "startup/lint_command.h"

#include <array>
#include <filesystem>
#include <optional>
#include <ostream>
#include <system_error>

#include "letters/custom_field_codes.h"
#include "letters/paper_lint.h"
#include "letters/template_library.h"
#include "letters/template_lint.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "startup/command_session.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

struct TemplateFolder {
  std::string_view name;
  TemplateKind kind;
};

constexpr std::array<TemplateFolder, 4> kFolders{{{kTemplates, TemplateKind::kTenant},
                                                  {kOwnerTemplates, TemplateKind::kOwner},
                                                  {"Cheque", TemplateKind::kCheque},
                                                  {"Check", TemplateKind::kCheque}}};

// By the innermost of the folders around the file that is one of the library's.
TemplateKind KindByFolder(const fs::path& path) {
  std::error_code error;
  for (fs::path folder = fs::absolute(path, error).parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    for (const TemplateFolder& one : kFolders) {
      if (EqualsNoCase(folder.filename().string(), one.name)) return one.kind;
    }
  }
  return TemplateKind::kTenant;
}

TemplateKind KindByWord(std::string_view word) {
  if (word == "owner") return TemplateKind::kOwner;
  return word == "cheque" ? TemplateKind::kCheque : TemplateKind::kTenant;
}

bool IsFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

bool LooksLikePath(const std::string& name) {
  return name.find_first_of("/\\") != std::string::npos || EndsWithNoCase(name, ".rtf");
}

class LintCommand {
 public:
  LintCommand(const LintRequest& request, std::ostream& output, std::ostream& errors)
      : request_(request), output_(output), errors_(errors) {}

  bool Run() {
    ReadFields();
    for (const std::string& name : request_.templates) LintNamed(name);
    if (request_.all) LintLibrary();
    return clean_;
  }

 private:
  fs::path DataFolder() { return command_.session().database.DataFolder(); }

  // Without the agency's database, custom fields are not checked. If it exists it must be readable.
  void ReadFields() {
    const fs::path path = request_.database.empty() ? command_.session().database.Location()
                                                    : fs::path(request_.database);
    if (request_.database.empty() && !IsFile(path)) return;
    fields_ = ReadCustomFieldCodes(*command_.workspace().OpenDatabase(path));
  }

  // A file; else every template of that name, whichever catalogue it is for.
  void LintNamed(const std::string& name) {
    const fs::path path = NativePath(name);
    if (IsFile(path)) return LintFile(path);
    bool found = false;
    try {
      const TemplateLibrary library(DataFolder());
      for (const TemplateFolder& folder : kFolders) {
        const fs::path in_library = library.PathOf(folder.name, name);
        if (!IsFile(in_library)) continue;
        found = true;
        LintFile(in_library);
      }
    } catch (const RuntimeError& error) {
      // A name that leads out of the library is not the name of a template.
      if (error.number() != error_number::kPathFileAccess) throw;
    }
    if (found) return;
    if (LooksLikePath(name)) return LintFile(path);
    Fail("Template \"" + name + "\" not found in " + DataFolder().string());
  }

  void LintLibrary() {
    const TemplateLibrary library(DataFolder());
    bool found = false;
    for (const TemplateFolder& folder : kFolders) {
      for (const std::string& name : library.Names(folder.name)) {
        found = true;
        LintFile(library.PathOf(folder.name, name));
      }
    }
    if (!found) Fail("No templates found in " + DataFolder().string());
  }

  void LintFile(const fs::path& path) {
    try {
      // The letter window would take any text; a template is rich text.
      if (!richtext::IsRtf(ReadWholeFile(path))) {
        throw StandardError(error_number::kInvalidFileFormat, path.string());
      }
      RichTextBox letter;
      letter.LoadFile(path);
      const TemplateKind kind =
          request_.kind.empty() ? KindByFolder(path) : KindByWord(request_.kind);
      Report(path,
             LintTemplate(letter, kind, command_.clock().Today(), fields_ ? &*fields_ : nullptr));
      Report(path, LintPaper(letter));
    } catch (...) {
      Fail(ErrorText(CurrentError()));
    }
  }

  void Report(const fs::path& path, const std::vector<TemplateFinding>& findings) {
    for (const TemplateFinding& finding : findings) {
      output_ << TerminalLine(path.string() + ": " + finding.Text()) << '\n';
      clean_ = false;
    }
  }

  void Fail(const std::string& message) {
    errors_ << TerminalText(message) << std::endl;
    clean_ = false;
  }

  const LintRequest& request_;
  std::ostream& output_;
  std::ostream& errors_;

  CommandSession command_{errors_};
  std::optional<CustomFieldCodes> fields_;
  bool clean_ = true;
};

}  // namespace

bool LintTemplates(const LintRequest& request, std::ostream& output, std::ostream& errors) {
  return LintCommand(request, output, errors).Run();
}

}  // namespace tenora
