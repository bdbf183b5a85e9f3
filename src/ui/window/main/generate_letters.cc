#include "ui/window/main/generate_letters.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "ui/dialogs/frm_generate.h"

namespace tenora {
namespace {

using Entry = TreeModel::Entry;

bool Generates(const std::string& kind) { return kind == kTemplates || kind == kOwnerTemplates; }

}  // namespace

std::optional<Entry> GenerateLetters::SelectedTemplate() const {
  const Entry* entry = tree_.Current();
  if (entry == nullptr || entry->type != TreeModel::Type::kTemplate || !Generates(entry->kind)) {
    return std::nullopt;
  }
  return *entry;
}

std::optional<Entry> GenerateLetters::TemplateInFront() const {
  const LetterWindow* window = letters_.Active();
  if (window == nullptr || !Generates(window->letter().members().Kind)) return std::nullopt;
  const LetterMembers& members = window->letter().members();
  Entry open;
  open.kind = members.Kind;
  open.path = members.FilePath;
  // A run reads the template from the library; a file opened from elsewhere is a different one.
  if (open.path.parent_path() != session_.database.DataFolder() / open.kind) return std::nullopt;
  open.name = QString::fromStdString(open.path.stem().string());
  return open;
}

void GenerateLetters::Generate() {
  std::optional<Entry> entry = SelectedTemplate();
  if (!entry) entry = TemplateInFront();
  if (entry) return GenerateFrom(*entry, std::nullopt);
  TellNoTemplate();
}

void GenerateLetters::GenerateFront(const Recipient& recipient) {
  if (const auto entry = TemplateInFront()) return GenerateFrom(*entry, recipient);
  TellNoTemplate();
}

void GenerateLetters::TellNoTemplate() {
  const LetterWindow* front = letters_.Active();
  const bool outside = front != nullptr && Generates(front->letter().members().Kind);
  session_.platform.dialogs.Say(outside
                                    ? "This template is not in the library yet. Save it there with "
                                      "\"Save As\", then generate its letters."
                                    : "Select a template in the left menu section first.");
}

std::optional<Entry> GenerateLetters::TemplateFor(const Entry& recipient) {
  const std::string_view kind =
      recipient.type == TreeModel::Type::kOwner ? kOwnerTemplates : kTemplates;
  std::optional<Entry> front = TemplateInFront();
  if (front && front->kind == kind) return front;
  Dialogs& dialogs = session_.platform.dialogs;
  const TemplateLibrary library(session_.database.DataFolder());
  const std::vector<std::string> names = library.Names(kind);
  if (names.empty()) {
    dialogs.Say("There is no template in the '" + std::string(kind) + "' group yet.");
    return std::nullopt;
  }
  const auto chosen = dialogs.Choose("Template of the letter to " + recipient.recipient, names, 0);
  if (!chosen) return std::nullopt;
  Entry entry;
  entry.kind = kind;
  entry.name = QString::fromStdString(names[*chosen]);
  entry.path = library.PathOf(kind, names[*chosen]);
  return entry;
}

void GenerateLetters::GenerateFor(const Entry& recipient) {
  if (const std::optional<Entry> letter_template = TemplateFor(recipient)) {
    GenerateFrom(*letter_template, Recipient{recipient.recipient, recipient.tenant_code});
  }
}

void GenerateLetters::GenerateFrom(const Entry& letter_template,
                                   const std::optional<Recipient>& preselected) {
  // The run reads the file, so unsaved changes must be saved first.
  LetterWindow* open = letters_.OfFile(letter_template.path);
  if (open != nullptr && !open->letter().CheckSave()) return;

  rental_data_.LoadIfChanged();
  Dialogs& dialogs = session_.platform.dialogs;
  frmGenerate choice(session_, letter_template.kind, letter_template.name.toStdString(), window_);
  if (preselected) choice.Preselect(*preselected);
  if (choice.exec() != QDialog::Accepted) return;
  GenerationRequest request = choice.Request();
  printing::Printers* printers = nullptr;
  if (request.destination == Destination::kPrinter) {
    printers = &printers_.Get();
    if (choice.UsesDefaultPrinter()) {
      printers->UseDefault();
    } else if (!printers->Choose(dialogs)) {
      return;
    }
    letters_.ShowPages();
    request.printer = printers->Current().DeviceName();
  }
  if (choice.ByWorkers()) return queued_runs_.Put(std::move(request));
  runs_.Run(request.destination, [&](GenerationObserver& observer) {
    return GenerateSelection(session_, request, observer, printers);
  });
}

}  // namespace tenora
