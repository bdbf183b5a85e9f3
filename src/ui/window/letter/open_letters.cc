#include "ui/window/letter/open_letters.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "letters/letter_origin.h"
#include "letters/template_library.h"
#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/error.h"
#include "ui/window/letter/showable_letter.h"

namespace tenora {
namespace {

// The host of a letter that is deleted without being opened.
class HostOfUnopened : public WindowlessHost {
 public:
  HostOfUnopened(ctlTree& tree, std::string insert_list)
      : tree_(tree), insert_list_(std::move(insert_list)) {}
  void RefreshTree() override { tree_.RefreshTree(); }
  std::string InsertListName() override { return insert_list_; }

 private:
  ctlTree& tree_;
  std::string insert_list_;
};

}  // namespace

void OpenLetters::Open(const TreeModel::Entry& entry) {
  Guarded(session_.platform.dialogs, "frmMain - ctlTree_DblClick", [&] {
    if (LetterWindow* open = desk_.OfFile(entry.path)) return desk_.BringToFront(open);
    std::unique_ptr<LetterWindow> window = MakeWindow();
    LetterMembers& members = window->letter().members();
    members.LetterTitle = entry.name.toStdString();
    members.RecipientName = entry.recipient;
    members.TenantCode = entry.tenant_code;
    window->letter().LoadLetter(entry.path, KindOfListed(entry, members));
    RequireShowable(window->letter().rtfLetter, entry.path.string());
    PutOnDesk(std::move(window));
  });
}

// Recipients of one name share a folder, and the library lists its letters under each of them. A
// letter also stays in the folder when its recipient's name has been corrected, and may be moved.
std::string OpenLetters::KindOfListed(const TreeModel::Entry& entry, LetterMembers& members) {
  if (entry.kind != kTenantLetter && entry.kind != kOwnerLetter) return entry.kind;
  const Caches& caches = session_.caches;
  const auto origin = OriginOf(session_.database.DataFolder(), entry.path);
  const auto made_for = [&](const std::string& kind, const std::string& code) {
    const std::string own = kind == kOwnerLetter ? OwnerCodeOf(caches, entry.recipient) : code;
    return origin && WasMadeFor(*origin, kind, entry.recipient, own);
  };
  const std::vector<Namesake> namesakes = NamesakesOf(caches, entry.recipient);
  const bool one = namesakes.empty();
  if (one && (!origin || made_for(entry.kind, entry.tenant_code))) return entry.kind;
  const auto own = std::ranges::find_if(namesakes, [&](const Namesake& namesake) {
    return made_for(namesake.letter_kind, namesake.code);
  });
  members.TenantCode.clear();
  if (own == namesakes.end() && origin) {
    members.MadeFor = OtherRecipient{origin->letter_kind, origin->code, origin->recipient_name};
  }
  if (one) return entry.kind;
  // A run that was not told the tenancy's code has logged only the name. Of several there is always
  // a tenant; a tenant's letter without a code is nobody's yet.
  const bool known =
      own != namesakes.end() && (own->letter_kind == kOwnerLetter || !origin->code.empty());
  if (known) members.TenantCode = own->code;
  return known ? own->letter_kind : std::string(kTenantLetter);
}

void OpenLetters::OpenFile(const std::filesystem::path& path) {
  const std::filesystem::path data_folder = session_.database.DataFolder();
  const std::vector<std::string> kinds{std::string(kTemplates), std::string(kOwnerTemplates),
                                       session_.cheque_word};
  for (const std::string& kind : kinds) {
    if (path.parent_path() == data_folder / kind) return OpenAsTemplate(path, kind);
  }
  if (OpenListed(path)) return;
  const auto chosen = session_.platform.dialogs.Choose(
      "\"" + path.filename().string() + "\" is not in the library. Open it as",
      {"Tenant letter template", "Owner letter template", session_.cheque_word + " template"}, 0);
  if (chosen) OpenAsTemplate(path, kinds[*chosen]);
}

void OpenLetters::OpenAsTemplate(const std::filesystem::path& path, const std::string& kind) {
  const QString extension = QString::fromStdString(path.extension().string()).toLower();
  if (extension != QLatin1String(".txt")) {
    TreeModel::Entry entry;
    entry.name = QString::fromStdString(path.stem().string());
    entry.kind = entry.folder = entry.recipient = kind;
    entry.path = path;
    return Open(entry);
  }
  // A text file becomes a new letter: saving RTF over it would destroy it.
  std::unique_ptr<LetterWindow> window = MakeWindow();
  LetterMembers& members = window->letter().members();
  members.LetterTitle = path.stem().string();
  members.RecipientName = kind;
  window->letter().LoadLetter(path, kind, "TXT");
  RequireShowable(window->letter().rtfLetter, path.string());
  members.FilePath.clear();
  window->letter().UpdateCaption();
  PutOnDesk(std::move(window));
}

bool OpenLetters::OpenListed(const std::filesystem::path& path) {
  TreeModel& model = tree_.model();
  for (const char* group : {"Tenants", "Owners"}) {
    const QModelIndex listed = model.FindFile(model.Group(QLatin1String(group)), path);
    if (!listed.isValid()) continue;
    Open(TreeModel::Entry(*model.EntryAt(listed)));
    return true;
  }
  return false;
}

void OpenLetters::OpenRecent(const RecentLetter& letter) {
  if (letter.kind != kTenantLetter && letter.kind != kOwnerLetter) {
    return OpenAsTemplate(letter.path, letter.kind);
  }
  if (!OpenListed(letter.path)) OpenFile(letter.path);
}

void OpenLetters::Remember(const frmLetter& letter, std::string& known) {
  const LetterMembers& members = letter.members();
  if (members.FilePath.empty() || members.FilePath == known) return;
  known = members.FilePath;
  std::error_code error;
  recent_.Add({std::filesystem::absolute(known, error), members.Kind});
}

bool OpenLetters::IsTitleOpen(const std::string& title) const {
  const std::vector<LetterWindow*> letters = desk_.Letters();
  return std::any_of(letters.begin(), letters.end(), [&](const LetterWindow* window) {
    return window->letter().members().LetterTitle == title;
  });
}

void OpenLetters::StartNew(std::string_view kind) {
  std::unique_ptr<LetterWindow> window = MakeWindow();
  std::string name;
  // A recovered letter may have the name already.
  do {
    name = "New letter " + std::to_string(++new_letters_);
  } while (IsTitleOpen(name));
  window->SetNameWhileUnsaved(name);
  window->letter().members().LetterTitle = name;
  window->letter().members().RecipientName = kind;
  window->letter().StartNew(kind);
  PutOnDesk(std::move(window));
}

bool OpenLetters::OpenRecovered(const UnsavedLetter& kept) {
  return Guarded(session_.platform.dialogs, "frmMain - OpenRecovered", [&] {
    LetterWindow* const open = kept.path.empty() ? nullptr : desk_.OfFile(kept.path);
    if (open != nullptr && open->letter().members().Changed) {
      desk_.BringToFront(open);
      throw StandardError(error_number::kPathFileAccess,
                          kept.path + " is open; close it before it is recovered");
    }
    std::unique_ptr<LetterWindow> window = MakeWindow();
    window->letter().Recover(kept);
    LetterMembers& members = window->letter().members();
    if (kept.tenant_code.empty() && !kept.path.empty()) {
      TreeModel::Entry entry;
      entry.kind = kept.kind;
      entry.recipient = kept.recipient;
      entry.path = kept.path;
      KindOfListed(entry, members);
    }
    RequireShowable(window->letter().rtfLetter, kept.title);
    if (open != nullptr) open->CloseNow();
    PutOnDesk(std::move(window));
  });
}

void OpenLetters::Delete(const TreeModel::Entry& entry) {
  if (LetterWindow* open = desk_.OfFile(entry.path)) {
    desk_.BringToFront(open);
    return open->letter().Delete();
  }
  HostOfUnopened host(tree_, InsertListName());
  frmLetter unopened(session_, host);
  LetterMembers& members = unopened.members();
  members.LetterTitle = entry.name.toStdString();
  members.RecipientName = entry.recipient;
  members.FilePath = entry.path.string();
  unopened.Delete();
}

void OpenLetters::WithActive(const std::function<void(frmLetter& letter)>& command) {
  LetterWindow* window = desk_.Active();
  if (window == nullptr) return;
  command(window->letter());
  window->ShowLetter();
}

void OpenLetters::WithShown(const std::function<void(frmLetter& letter)>& command) {
  LetterWindow* window = desk_.Active();
  if (window == nullptr) return;
  command(window->shown_letter());
  window->shown_editor().ShowBox();
}

TemplateKind OpenLetters::CurrentList() const {
  const LetterWindow* window = desk_.Active();
  return window == nullptr ? TemplateKind::kTenant : ListFor(window->letter().members().Kind);
}

std::string OpenLetters::InsertListName() { return ListName(CurrentList(), session_.cheque_word); }

std::unique_ptr<LetterWindow> OpenLetters::MakeWindow() {
  std::unique_ptr<LetterWindow> window(new LetterWindow(session_, *this));
  spelling_.Underline(*window);
  window->letter().ChangeWidth(page_width_);
  window->ShowSheet(pages_);
  window->ShowRuler(ruler_shown_);
  QObject::connect(&window->view(), &LetterView::MarginsDragged, window.get(),
                   [this, window = window.get()](int left, int right) {
                     Guarded(session_.platform.dialogs, "frmMain - frmMain_MarginsDragged",
                             [&] { ChangeMargins(*window, left, right); });
                   });
  QObject::connect(&window->editor(), &LetterEditor::FilesGiven, window.get(),
                   [this](const QStringList& files) {
                     if (files_given_) files_given_(files);
                   });
  return window;
}

void OpenLetters::PutOnDesk(std::unique_ptr<LetterWindow> window) {
  // The letter opens even if the stored margins are invalid.
  Guarded(session_.platform.dialogs, "frmMain - ShowPage", [&] { ShowPage(*window); });
  // Set before the text: highlighting the codes of a long text a second time takes far longer.
  MarkCodes(*window);
  window->ShowLetter();
  LetterWindow* const shown = window.release();
  desk_.Add(shown);
  // Now, and when it is saved under another name.
  const auto remember = [this, shown, known = std::string()]() mutable {
    Remember(shown->letter(), known);
  };
  QObject::connect(shown, &LetterWindow::CaptionChanged, shown, remember);
  emit shown->CaptionChanged();
}

void OpenLetters::MarkCodes(LetterWindow& window) const {
  window.SetCodes(CodesFor(ListFor(window.letter().members().Kind), custom_fields_));
}

void OpenLetters::ShowPage(LetterWindow& window) {
  const printing::Printer* const printer = printers_.Current();
  if (printer != nullptr) window.ShowPage(*printer, StoredMargins(session_.settings));
}

void OpenLetters::ShowPages() {
  for (LetterWindow* window : desk_.Letters()) ShowPage(*window);
}

// A margin is changed where it comes from: the printer set-up, for all letters, or this letter.
void OpenLetters::ChangeMargins(LetterWindow& window, int left, int right) {
  const PageMargins stored = StoredMargins(session_.settings);
  RichTextBox& letter = window.letter().rtfLetter;
  const richtext::PageSetup own = letter.Document().page;
  const auto store = [&](const char* key, int margin) {
    session_.settings.SaveSettingText("Mail\\PrinterSetup", key, std::to_string(margin));
  };
  if (stored.left != 0) store("LeftMargin", left);
  if (stored.right != 0) store("RightMargin", right);
  const int own_left = stored.left == 0 ? left : own.left;
  const int own_right = stored.right == 0 ? right : own.right;
  if (own_left != own.left || own_right != own.right) {
    letter.SetMargins(own_left, own.top, own_right, own.bottom);
  }
  ShowPages();
}

void OpenLetters::WrapAtPageWidth(bool page_width) {
  page_width_ = page_width;
  session_.settings.SaveSettingText("Mail", "PrinterPageWidth", page_width ? "1" : "0");
  for (LetterWindow* window : desk_.Letters()) window->letter().ChangeWidth(page_width);
}

void OpenLetters::ShowAsPages(bool pages) {
  pages_ = pages;
  for (LetterWindow* window : desk_.Letters()) window->ShowSheet(pages);
}

void OpenLetters::RefreshPreviews() {
  for (LetterWindow* window : desk_.Letters()) window->RefreshPreview();
}

void OpenLetters::ShowRuler(bool shown) {
  ruler_shown_ = shown;
  for (LetterWindow* window : desk_.Letters()) window->ShowRuler(shown);
}

}  // namespace tenora
