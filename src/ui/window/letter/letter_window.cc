#include "ui/window/letter/letter_window.h"

#include <QCloseEvent>
#include <QShortcut>
#include <QVBoxLayout>

#include "letters/file_names.h"
#include "letters/template_library.h"
#include "platform/dialogs/guard.h"
#include "ui/dialogs/frm_future_date.h"
#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

void ShowOnPage(LetterView& view, PageFinder& pages, const RichTextBox& letter,
                const printing::Printer& printer, const PageMargins& stored) {
  const richtext::PageSetup& page = letter.Document().page;
  const printing::Paper paper = printing::PaperOf(printer, page);
  const PageMargins margins = MarginsOf(page, stored);
  view.SetPage({.width = paper.width,
                .height = paper.height,
                .left = margins.left,
                .right = margins.right,
                .top = margins.top,
                .bottom = margins.bottom});
  pages.SetPaper(printer, stored);
}

}  // namespace

LetterWindow::LetterWindow(Session& session, Surroundings& surroundings, QWidget* parent)
    : QWidget(parent), session_(session), surroundings_(surroundings), letter_(session, *this) {
  setObjectName(QStringLiteral("frmLetter"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(LineIcon("letter"));
  bar_ = new PreviewBar(this);
  texts_ = new QStackedWidget(this);
  view_ = new LetterView(letter_.rtfLetter, this);
  texts_->addWidget(view_);
  editor().setObjectName(QStringLiteral("rtfLetter"));
  editor().setAccessibleName(tr("Letter"));
  pages_ = std::make_unique<PageFinder>(editor(), letter_.rtfLetter);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(bar_);
  layout->addWidget(texts_, 1);
  setFocusProxy(&editor());
  connect(bar_, &PreviewBar::SwitchAsked, this, &LetterWindow::ShowPreview);
  leave_ = new QShortcut(Qt::Key_Escape, this);
  leave_->setContext(Qt::WidgetWithChildrenShortcut);
  leave_->setEnabled(false);
  connect(leave_, &QShortcut::activated, this, [this] { ShowPreview(false); });
  // Once what was typed has reached the letter.
  connect(&editor(), &QTextEdit::textChanged, this, &LetterWindow::ShowCaption,
          Qt::QueuedConnection);
  connect(&editor(), &LetterEditor::SavedAgain, this, [this] {
    letter_.members().Changed = false;
    ShowCaption();
  });
}

LetterWindow::~LetterWindow() {
  pages_.reset();
  delete preview_;  // before the bar it uses
  delete view_;     // before the letter it shows
}

void LetterWindow::ShowPage(const printing::Printer& printer, const PageMargins& stored) {
  ShowOnPage(*view_, *pages_, letter_.rtfLetter, printer, stored);
  if (!Previewing()) return;
  ShowOnPage(preview_->view(), preview_->pages(), preview_->letter().rtfLetter, printer, stored);
}

void LetterWindow::ShowSheet(bool shown) {
  view_->ShowSheet(shown);
  if (preview_ != nullptr) preview_->view().ShowSheet(shown);
}

void LetterWindow::ShowRuler(bool shown) {
  ruler_shown_ = shown;
  view_->ShowRuler(shown);
  if (preview_ != nullptr) preview_->view().ShowRuler(shown);
}

void LetterWindow::SetWidth(int twips) {
  view_->ChangeWidth(twips > 0);
  if (preview_ != nullptr) preview_->view().ChangeWidth(twips > 0);
}

void LetterWindow::SetCodes(const QStringList& names) {
  codes_ = names;
  editor().SetCodes(names);
  if (preview_ != nullptr) preview_->editor().SetCodes(names);
}

bool LetterWindow::CanPreview() const {
  const std::string& kind = letter_.members().Kind;
  return kind == kTemplates || kind == kOwnerTemplates;
}

bool LetterWindow::Previewing() const {
  return preview_ != nullptr && texts_->currentWidget() == preview_;
}

void LetterWindow::ShowPreview(bool letters) {
  const bool wanted = letters && CanPreview();
  if (wanted == Previewing()) return;
  Guarded(session_.platform.dialogs, "frmLetter - cmdPreview_Click",
          [&] { wanted ? BeginPreview() : EndPreview(); });
  if (!Previewing()) bar_->ShowCodes();
  setFocusProxy(&shown_editor());
  shown_editor().setFocus();
  ShowCaption();
}

void LetterWindow::BeginPreview() {
  if (preview_ == nullptr) {
    preview_ = new TemplatePreview(session_, *bar_, texts_);
    preview_->view().ShowRuler(ruler_shown_);
    preview_->editor().SetCodes(codes_);
    texts_->addWidget(preview_);
    connect(preview_, &TemplatePreview::LetterShown, this, &LetterWindow::ShowCaption);
  }
  preview_->editor().paper().SetLook(editor().paper().Look());
  preview_->editor().paper().SetZoom(editor().paper().Zoom());
  preview_->Begin(letter_);
  texts_->setCurrentWidget(preview_);
  surroundings_.ShowPage(*this);
}

void LetterWindow::EndPreview() {
  const double zoom = preview_->editor().paper().Zoom();
  if (zoom != editor().paper().Zoom()) editor().paper().SetZoom(zoom);
  letter_.members().SearchText = preview_->letter().members().SearchText;
  texts_->setCurrentWidget(view_);
  preview_->End();
}

void LetterWindow::StepPreview(PreviewBar::Step step) {
  if (Previewing()) preview_->Step(step);
}

void LetterWindow::RefreshPreview() {
  if (Previewing()) preview_->Refresh();
}

std::optional<Recipient> LetterWindow::PreviewedRecipient() const {
  return Previewing() ? preview_->Shown() : std::nullopt;
}

void LetterWindow::ShowLetter() {
  editor().ShowBox();
  ShowCaption();
}

bool LetterWindow::MayClose() {
  bool may_close = false;
  Guarded(session_.platform.dialogs, "frmLetter - Form_QueryUnload",
          [&] { may_close = letter_.CheckSave(); });
  return may_close;
}

void LetterWindow::CloseNow() {
  asked_ = true;
  parentWidget()->close();
}

void LetterWindow::closeEvent(QCloseEvent* event) {
  const bool close = asked_ || MayClose();
  event->setAccepted(close);
  if (close) emit Closed();
}

void LetterWindow::ShowFutureDateDialog(RichTextBox& editor) {
  frmFutureDate(editor, window()).exec();
}

QString LetterWindow::ShownName() const {
  const LetterMembers& letter = letter_.members();
  const bool saved = !letter.FilePath.empty();
  // A title may have what no file name has.
  std::string name = name_while_unsaved_;
  if (saved) {
    name = std::filesystem::path(letter.FilePath).stem().string();
  } else if (name.empty()) {
    name = letter.LetterTitle;
  }
  if (letter.Kind == kTenantLetter || letter.Kind == kOwnerLetter) {
    name += " - " + letter.RecipientName;
  } else {
    name += (saved ? " : " : " : New ") + letter.Kind;
  }
  return QString::fromStdString(name);
}

QString LetterWindow::Title() const {
  const auto recipient = PreviewedRecipient();
  if (!recipient) return ShownName();
  return tr("%1 – preview of %2").arg(ShownName(), QString::fromStdString(recipient->name));
}

// The mark is in front, where neither a narrow tab nor a long title cuts it off.
QString LetterWindow::TabText() const {
  return (isWindowModified() ? QStringLiteral("*") : QString()) + Title();
}

void LetterWindow::ShowCaption() {
  if (!letter_.members().Changed) editor().MarkSaved();
  bar_->setVisible(CanPreview());
  leave_->setEnabled(Previewing());
  // In a title, "[*]" is where Qt marks what is changed, and "[*][*]" is that text itself.
  setWindowTitle(QStringLiteral("[*]") +
                 Title().replace(QLatin1String("[*]"), QLatin1String("[*][*]")));
  setWindowModified(letter_.members().Changed);
  emit CaptionChanged();
}

void LetterWindow::CloseLetter() {
  // Not at once: the letter is still in the command that closes it.
  QMetaObject::invokeMethod(parentWidget(), "close", Qt::QueuedConnection);
}

void LetterWindow::ShowSaveError(const RuntimeError& error) {
  editor().MarkUnsaved();
  ShowError(session_.platform.dialogs, "frmMain - mnuSave_Click", error);
}

bool LetterWindow::ConfirmFileName(const std::string& typed, const std::string& used) {
  return Confirm(FileNameQuestion(typed, used), Answer::kYes);
}

bool LetterWindow::ConfirmReplace(const std::filesystem::path& path) {
  if (surroundings_.IsOpen(path)) {
    session_.platform.dialogs.Say(path.string() +
                                  " is open; close it before another letter takes its name.");
    return false;
  }
  return Confirm("A file of this name is there already:\r\n" + path.string() + "\r\nReplace it?");
}

bool LetterWindow::ConfirmOverwrite(const std::filesystem::path& path) {
  return Confirm("Another program has changed this letter since it was opened:\r\n" +
                 path.string() + "\r\nWrite over it?");
}

bool LetterWindow::Confirm(const std::string& question, Answer default_answer) {
  return session_.platform.dialogs.Show({.text = question,
                                         .buttons = Buttons::kYesNo,
                                         .icon = Icon::kQuestion,
                                         .default_answer = default_answer}) == Answer::kYes;
}

}  // namespace tenora
