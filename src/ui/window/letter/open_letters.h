// Opens files and new letters on the desk, and applies to all open letters what they share: paper
// and margins, wrapping, the highlighted merge codes.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "letters/custom_field_codes.h"
#include "letters/unsaved_letter.h"
#include "ui/window/letter/insert_list.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/letter/letter_spelling.h"
#include "ui/window/letter/recent_letters.h"
#include "ui/window/letter/window_printers.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class OpenLetters : private LetterWindow::Surroundings {
 public:
  // Everything passed in, and this object, must outlive the letter windows.
  OpenLetters(Session& session, ctlTree& tree, LetterDesk& desk, const WindowPrinters& printers,
              const LetterSpelling& spelling)
      : session_(session), tree_(tree), desk_(desk), printers_(printers), spelling_(spelling) {}

  // The letter in front, or null.
  LetterWindow* Active() const { return desk_.Active(); }
  // The open letter of this file, or null.
  LetterWindow* OfFile(const std::filesystem::path& path) const { return desk_.OfFile(path); }

  // Opens a template or letter, or brings it to the front where it is open. An error is shown.
  void Open(const TreeModel::Entry& entry);
  // Opens a file the user chose. Its kind follows from its folder; otherwise the user is asked.
  void OpenFile(const std::filesystem::path& path);
  // Opens a saved letter of a tenant or owner; false if the tree does not list this file. Namesakes
  // share a folder: the letter is that of the tenancy that it was made for, and where nothing says
  // which, a tenant's without a code.
  bool OpenListed(const std::filesystem::path& path);
  // Opens one of recent() again.
  void OpenRecent(const RecentLetter& letter);
  RecentLetters& recent() { return recent_; }
  // Starts a letter called "New letter 1", "New letter 2" and so on until it is saved.
  void StartNew(std::string_view kind);
  // Opens what was kept of a letter, as changed, in place of the unchanged letter of its file. An
  // error is shown and gives false, also where that is changed too.
  bool OpenRecovered(const UnsavedLetter& kept);
  // Deletes the file after confirmation and closes the letter if it is open.
  void Delete(const TreeModel::Entry& entry);
  // Runs a command on the letter in front and updates its window; does nothing without a letter.
  void WithActive(const std::function<void(frmLetter& letter)>& command);

  // The same on what is seen of it, which may be the preview of a letter.
  void WithShown(const std::function<void(frmLetter& letter)>& command);

  // The kind of codes for the letter in front; the tenants' if no letter is open.
  TemplateKind CurrentList() const;

  // Updates the page of every letter after the printer or the margins have changed.
  void ShowPages();
  // Wraps every letter at the printer's page width or at the window's edge, and stores the choice.
  void WrapAtPageWidth(bool page_width);
  // Shows every letter on a sheet of its paper, or as text alone.
  void ShowAsPages(bool pages);
  void ShowRuler(bool shown);
  // Shows previewed letters with the rental data as it is now.
  void RefreshPreviews();
  // Is told the files that were dropped on a letter, or pasted into it, and are no pictures.
  void OnFilesGiven(std::function<void(const QStringList&)> take) {
    files_given_ = std::move(take);
  }
  const CustomFieldCodes& custom_fields() const { return custom_fields_; }
  void SetCustomFields(const CustomFieldCodes& codes) { custom_fields_ = codes; }
  // Highlights the codes that the letter's merge fills.
  void MarkCodes(LetterWindow& window) const;

 private:
  void RefreshTree() override { tree_.RefreshTree(); }
  std::string InsertListName() override;
  bool IsOpen(const std::filesystem::path& path) override { return OfFile(path) != nullptr; }
  int PaperWidth(const RichTextBox& letter) override { return printers_.PaperWidth(letter); }
  // Sets the printer's paper and the stored margins, for the ruler and line wrapping.
  void ShowPage(LetterWindow& window) override;

  // The kind of a letter in the library. Notes the tenancy that it was made for; none where several
  // have the name and nothing says which of them, and where it was made for somebody else, who is
  // noted then.
  std::string KindOfListed(const TreeModel::Entry& entry, LetterMembers& members);
  bool IsTitleOpen(const std::string& title) const;
  std::unique_ptr<LetterWindow> MakeWindow();
  void OpenAsTemplate(const std::filesystem::path& path, const std::string& kind);
  // Puts the letter's file among the recent ones, unless it is `known`, which it then is.
  void Remember(const frmLetter& letter, std::string& known);
  // The letter must already be loaded.
  void PutOnDesk(std::unique_ptr<LetterWindow> window);
  // In twips, as dragged on the ruler.
  void ChangeMargins(LetterWindow& window, int left, int right);

  Session& session_;
  ctlTree& tree_;
  LetterDesk& desk_;
  const WindowPrinters& printers_;
  const LetterSpelling& spelling_;
  CustomFieldCodes custom_fields_;
  RecentLetters recent_{session_.platform.registry};
  std::function<void(const QStringList&)> files_given_;
  int new_letters_ = 0;
  bool page_width_ = false;
  bool pages_ = false;
  bool ruler_shown_ = false;
};

}  // namespace tenora
