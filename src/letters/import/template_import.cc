#include "letters/template_import.h"

#include <utility>

#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/free_file_name.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtension = ".rtf";

std::string SourceOf(const TemplateImport& request) {
  // Also under another name: word processors have long saved rich text as .doc.
  std::string source = ReadWholeFile(request.document);
  if (richtext::IsRtf(source)) return source;
  if (office::Converts(request.document)) {
    return office::ConvertToRtf(request.document, request.conversion);
  }
  throw StandardError(error_number::kInvalidFileFormat,
                      request.document.string() +
                          ": templates are made of .docx, .doc, .odt, .html and .rtf files");
}

TemplateKind KindOf(std::string_view folder) {
  if (folder == kTemplates) return TemplateKind::kTenant;
  return folder == kOwnerTemplates ? TemplateKind::kOwner : TemplateKind::kCheque;
}

}  // namespace

ImportedTemplate ImportTemplate(const TemplateImport& request, const TemplateLibrary& library,
                                Date today, const CustomFieldCodes* fields) {
  RichTextBox letter;
  letter.SetTextRTF(richtext::WriteRtf(richtext::ReadRtf(SourceOf(request))));
  const TemplateKind kind = KindOf(request.folder);
  ImportedTemplate imported;
  imported.repairs = RepairCodes(&letter, kind, today);
  imported.findings = LintTemplate(letter, kind, today, fields);

  const std::string name = request.name.empty() ? request.document.stem().string() : request.name;
  const fs::path file =
      library.PathOf(request.folder, SafeFileName(name, kLongestFileName - kExtension.size() - 16));
  RequireFolder(library.data_folder());
  fs::create_directories(file.parent_path());
  imported.file = WriteUnderFreeName(file, letter.TextRTF());
  return imported;
}

}  // namespace tenora
