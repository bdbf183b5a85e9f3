// Takes a document of a word processor into the template library, and mends what word processors do
// to merge codes.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "letters/template_library.h"
#include "letters/template_lint.h"
#include "platform/office/office_converter.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Turns a word processor's merge fields and typographic brackets into merge codes where their names
// are codes of the kind, and gives codes one format that have several. What has been done, a
// sentence each, in the letter's order.
std::vector<std::string> RepairCodes(RichTextBox* letter, TemplateKind kind, Date today);

struct ImportedTemplate {
  std::filesystem::path file;             // in the library
  std::vector<std::string> repairs;       // of RepairCodes
  std::vector<TemplateFinding> findings;  // what a person still has to look at
};

struct TemplateImport {
  std::filesystem::path document;  // .rtf is taken as it is; the others are converted
  std::string folder;              // of the library: kTemplates, kOwnerTemplates, "Cheque", "Check"
  std::string name;                // of the template; empty: the document's
  office::Conversion conversion;
};

// Saves the template under its name, or "name(1)" where that is taken. Raises what
// office::ConvertToRtf raises, 321 (Invalid file format) for a file of no known kind, and the
// errors of WriteNewFile; nothing is then in the library.
ImportedTemplate ImportTemplate(const TemplateImport& request, const TemplateLibrary& library,
                                Date today, const CustomFieldCodes* fields = nullptr);

}  // namespace tenora
