// One open letter or template in the main window: a frmLetter and the editor that shows it. In a
// template's, a bar above the text switches to the letters that the template makes.
#pragma once

#include <QShortcut>
#include <QStackedWidget>
#include <QString>
#include <QWidget>
#include <memory>
#include <optional>

#include "letters/frm_letter.h"
#include "letters/letter_host.h"
#include "ui/editor/letter_view.h"
#include "ui/window/letter/page_finder.h"
#include "ui/window/letter/preview_bar.h"
#include "ui/window/letter/template_preview.h"

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
    // Shows the window's texts on the current printer's paper, where there is a printer.
    virtual void ShowPage(LetterWindow& window) = 0;
  };

  // The surroundings must outlive the window.
  LetterWindow(Session& session, Surroundings& surroundings, QWidget* parent = nullptr);
  ~LetterWindow() override;

  frmLetter& letter() { return letter_; }
  const frmLetter& letter() const { return letter_; }
  LetterView& view() { return *view_; }
  LetterEditor& editor() { return view_->editor(); }

  // A template of letters to tenants or owners can be previewed.
  bool CanPreview() const;
  // While it is, the letter of a recipient is shown in place of the template, which stays as it is.
  bool Previewing() const;
  void ShowPreview(bool letters);
  void StepPreview(PreviewBar::Step step);
  // With the rental data as it is now.
  void RefreshPreview();
  // Whose letter is shown; none without a preview.
  std::optional<Recipient> PreviewedRecipient() const;
  // What is seen: the letter itself, or the one that is previewed.
  frmLetter& shown_letter() { return Previewing() ? preview_->letter() : letter_; }
  LetterEditor& shown_editor() { return Previewing() ? preview_->editor() : editor(); }

  void ShowSheet(bool shown);
  void ShowRuler(bool shown);
  void SetCodes(const QStringList& names);
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
  // The same with whose letter is previewed, and "*" in front of what is changed.
  QString TabText() const;
  // What a new letter is called until it is saved, whatever title it was to be saved under.
  void SetNameWhileUnsaved(const std::string& name) { name_while_unsaved_ = name; }

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
  QString Title() const;
  void ShowCaption() override;
  void SetWidth(int twips) override;
  void CloseLetter() override;
  void RefreshTree() override { surroundings_.RefreshTree(); }
  std::string InsertListName() override { return surroundings_.InsertListName(); }
  void ShowSaveError(const RuntimeError& error) override;
  bool ConfirmFileName(const std::string& typed, const std::string& used) override;
  bool ConfirmReplace(const std::filesystem::path& path) override;
  bool ConfirmOverwrite(const std::filesystem::path& path) override;
  int PaperWidth() override { return surroundings_.PaperWidth(letter_.rtfLetter); }
  void BeginPreview();
  void EndPreview();
  // False unless the user answers Yes.
  bool Confirm(const std::string& question, Answer default_answer = Answer::kNo);

  Session& session_;
  Surroundings& surroundings_;
  frmLetter letter_;
  PreviewBar* bar_;
  QShortcut* leave_;  // the preview
  QStackedWidget* texts_;
  LetterView* view_;
  TemplatePreview* preview_ = nullptr;  // made at the first preview
  std::unique_ptr<PageFinder> pages_;
  QStringList codes_;
  bool ruler_shown_ = true;
  bool asked_ = false;  // whether it may be closed, and answered
  std::string name_while_unsaved_;
};

}  // namespace tenora
