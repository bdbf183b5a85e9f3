// The letters that are open: brings files and new letters onto the desk, and keeps what all of them
// share in step: paper and margins, wrapping, the marked merge codes.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "letters/custom_field_codes.h"
#include "ui/window/letter/insert_list.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/letter/letter_spelling.h"
#include "ui/window/letter/window_printers.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class OpenLetters : private LetterWindow::Surroundings {
 public:
  // All outlive this, and the letters close before it goes.
  OpenLetters(Session& session, ctlTree& tree, LetterDesk& desk, const WindowPrinters& printers,
              const LetterSpelling& spelling)
      : session_(session), tree_(tree), desk_(desk), printers_(printers), spelling_(spelling) {}

  // The letter in front, or null.
  LetterWindow* Active() const { return desk_.Active(); }
  // The open letter of this file, or null.
  LetterWindow* OfFile(const std::filesystem::path& path) const { return desk_.OfFile(path); }

  // Opens a template or letter, or brings it to the front where it is open. An error is shown.
  void Open(const TreeModel::Entry& entry);
  // A file that the user chose: what it is follows from its folder, else it is asked.
  void OpenFile(const std::filesystem::path& path);
  // Opens a saved letter of a tenant or owner; false where the tree has none of this file.
  bool OpenListed(const std::filesystem::path& path);
  void StartNew(std::string_view kind);
  // Asks first. Where the letter is open, it closes.
  void Delete(const TreeModel::Entry& entry);
  // Runs a command on the letter in front, and shows what it has done; nothing without a letter.
  void WithActive(const std::function<void(frmLetter& letter)>& command);

  // Which list of codes fits the letter in front; the tenants' without one.
  TemplateKind CurrentList() const;

  // The page of every letter anew, after another printer or other margins were chosen.
  void ShowPages();
  // Wraps every letter at the printer's page width or at the window's edge, and remembers which.
  void WrapAtPageWidth(bool page_width);
  void ShowRuler(bool shown);
  const CustomFieldCodes& custom_fields() const { return custom_fields_; }
  void SetCustomFields(const CustomFieldCodes& codes) { custom_fields_ = codes; }
  // Marks the codes that the letter's merge fills.
  void MarkCodes(LetterWindow& window) const;

 private:
  void RefreshTree() override { tree_.RefreshTree(); }
  std::string InsertListName() override;
  int PaperWidth(const RichTextBox& letter) override { return printers_.PaperWidth(letter); }

  std::unique_ptr<LetterWindow> MakeWindow();
  void OpenAsTemplate(const std::filesystem::path& path, const std::string& kind);
  // A letter that holds its text.
  void PutOnDesk(std::unique_ptr<LetterWindow> window);
  // The printer's paper and the stored margins, for the ruler and the lines' ends.
  void ShowPage(LetterWindow& window);
  // Dragged on the ruler; twips.
  void StoreMargins(int left, int right);

  Session& session_;
  ctlTree& tree_;
  LetterDesk& desk_;
  const WindowPrinters& printers_;
  const LetterSpelling& spelling_;
  CustomFieldCodes custom_fields_;
  bool page_width_ = false;
  bool ruler_shown_ = false;
};

}  // namespace tenora
