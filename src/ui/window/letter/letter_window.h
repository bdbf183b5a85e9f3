// One open letter or template in the main window: a frmLetter and the editor that shows it.
#pragma once

#include <QString>
#include <QWidget>
#include <memory>

#include "letters/frm_letter.h"
#include "letters/letter_host.h"
#include "ui/editor/letter_view.h"
#include "ui/window/letter/page_finder.h"

namespace tenora {

class LetterWindow : public QWidget, private LetterHost {
  Q_OBJECT

 public:
  // What the letters of one main window share.
  class Surroundings {
   public:
    virtual ~Surroundings() = default;
    // Files of the data folder have changed.
    virtual void RefreshTree() = 0;
    virtual std::string InsertListName() = 0;
    // Whether a letter of this file is open.
    virtual bool IsOpen(const std::filesystem::path& path) = 0;
    // In twips; 0 if unknown.
    virtual int PaperWidth(const RichTextBox& letter) = 0;
  };

  // The surroundings must outlive the window.
  LetterWindow(Session& session, Surroundings& surroundings, QWidget* parent = nullptr);
  ~LetterWindow() override;

  frmLetter& letter() { return letter_; }
  const frmLetter& letter() const { return letter_; }
  LetterView& view() { return *view_; }
  LetterEditor& editor() { return view_->editor(); }
  // Shows what the letter is printed on; `stored`: the margins of the printer set-up.
  void ShowPage(const printing::Printer& printer, const PageMargins& stored);
  // Updates the editor and the caption from the letter, after loading and after merges.
  void ShowLetter();
  // Asks whether to save what was changed. True when the letter may be closed.
  bool MayClose();
  // Without asking.
  void CloseNow();
  // What its tab and the main window's title call the letter: by the name that the library shows,
  // and a letter to a person by that person too, "Rent review - Jane Smith".
  QString ShownName() const;
  // What a letter is called until it has a title.
  void SetNameWhileUntitled(const std::string& name) { name_while_untitled_ = name; }

 signals:
  void CaptionChanged();
  // The user has closed the letter; what was not saved is not wanted.
  void Closed();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void ShowFutureDateDialog(RichTextBox& editor) override;
  void FocusEditor() override { editor().setFocus(); }
  void BeforeSave() override {}  // the editor passes on each change as it is made
  void ShowCaption() override;
  void SetWidth(int twips) override { view_->ChangeWidth(twips > 0); }
  void CloseLetter() override;
  void RefreshTree() override { surroundings_.RefreshTree(); }
  std::string InsertListName() override { return surroundings_.InsertListName(); }
  void ShowSaveError(const RuntimeError& error) override;
  bool ConfirmFileName(const std::string& typed, const std::string& used) override;
  bool ConfirmReplace(const std::filesystem::path& path) override;
  bool ConfirmOverwrite(const std::filesystem::path& path) override;
  int PaperWidth() override { return surroundings_.PaperWidth(letter_.rtfLetter); }
  // False unless the user answers Yes.
  bool Confirm(const std::string& question, Answer default_answer = Answer::kNo);

  Session& session_;
  Surroundings& surroundings_;
  frmLetter letter_;
  LetterView* view_;
  std::unique_ptr<PageFinder> pages_;
  bool asked_ = false;  // whether it may be closed, and answered
  std::string name_while_untitled_;
};

}  // namespace tenora
