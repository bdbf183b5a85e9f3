// The page that takes the place of a template's codes while its letters are looked at: the letter
// of one recipient, read-only, and beside it what the check of letters finds in it.
#pragma once

#include <QListWidget>
#include <QSplitter>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "letters/frm_letter.h"
#include "letters/letter_preview.h"
#include "ui/editor/letter_view.h"
#include "ui/window/letter/page_finder.h"
#include "ui/window/letter/preview_bar.h"

namespace tenora {

class TemplatePreview : public QSplitter {
  Q_OBJECT

 public:
  // Both outlive the page.
  TemplatePreview(Session& session, PreviewBar& bar, QWidget* parent = nullptr);
  ~TemplatePreview() override;

  // Takes the template as it is now, reads the rental data and shows the recipient of the last time
  // or the first one. Questions that were never asked are asked first.
  void Begin(const frmLetter& letter_template);
  void End();
  // Reads the rental data anew where it has changed, beside the window, which can be used
  // meanwhile.
  void Refresh();
  void Step(PreviewBar::Step step);
  // The search text or the check box has changed.
  void List();
  void AskAnswers();

  // Whose letter is shown; none where there is nobody.
  const std::optional<Recipient>& Shown() const { return recipient_; }
  // The letter as it is shown.
  frmLetter& letter() { return letter_; }
  LetterView& view() { return *view_; }
  LetterEditor& editor() { return view_->editor(); }
  PageFinder& pages() { return *pages_; }

 signals:
  // Another recipient's letter, or another text of it, is shown.
  void LetterShown();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  class Host : public WindowlessHost {
   public:
    explicit Host(TemplatePreview& page) : page_(page) {}
    void FocusEditor() override { page_.editor().setFocus(); }

   private:
    TemplatePreview& page_;
  };

  // Makes the preview of a text of the template, over the database that the settings name.
  void Prepare(const RichTextBox& text);
  // Takes the rental data, which has been read.
  void TakeData();
  void AskWhatIsNew();
  void ShowLetter();
  void ShowText(const std::string& source);
  void ShowFindings(const PreviewedLetter& shown);
  // Below the letter, that nothing is wrong takes one line.
  void KeepFindingsLow();
  void Select(const QListWidgetItem& finding);

  Session& session_;
  PreviewBar& bar_;
  Host host_{*this};
  frmLetter letter_;
  std::string kind_, title_, template_source_;  // of the template, which shows without a letter
  LetterView* view_;
  std::unique_ptr<PageFinder> pages_;
  QListWidget* findings_;
  bool nothing_wrong_ = false, low_ = false;
  int findings_height_ = 64;  // pixels, as the user has set it
  std::unique_ptr<LetterPreview> preview_;
  std::shared_ptr<DetachedSession> beside_;  // whose rental data it takes
  std::string problem_;                      // of the rental data
  bool reading_ = false;
  std::vector<RecipientRow> rows_;
  std::size_t at_ = 0;     // in rows_
  std::string key_;        // of the recipient shown last
  PromptAnswers answers_;  // kept from one preview to the next
  std::set<std::string> asked_;
  std::optional<Recipient> recipient_;
  // Last: it ends before what it works on.
  std::jthread reader_;
};

}  // namespace tenora
