#include "ui/window/letter/letter_window.h"

#include <QCloseEvent>
#include <QVBoxLayout>

#include "letters/file_names.h"
#include "letters/template_library.h"
#include "platform/dialogs/guard.h"
#include "ui/dialogs/frm_future_date.h"
#include "ui/window/appearance/icons.h"

namespace tenora {

LetterWindow::LetterWindow(Session& session, Surroundings& surroundings, QWidget* parent)
    : QWidget(parent), session_(session), surroundings_(surroundings), letter_(session, *this) {
  setObjectName(QStringLiteral("frmLetter"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(LineIcon("letter"));
  view_ = new LetterView(letter_.rtfLetter, this);
  editor().setObjectName(QStringLiteral("rtfLetter"));
  editor().setAccessibleName(tr("Letter"));
  pages_ = std::make_unique<PageFinder>(editor(), letter_.rtfLetter);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view_);
  setFocusProxy(&editor());
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
  delete view_;  // before the letter it shows
}

void LetterWindow::ShowPage(const printing::Printer& printer, const PageMargins& stored) {
  const richtext::PageSetup& page = letter_.rtfLetter.Document().page;
  const printing::Paper paper = printing::PaperOf(printer, page);
  const PageMargins margins = MarginsOf(page, stored);
  view_->SetPage({.width = paper.width,
                  .height = paper.height,
                  .left = margins.left,
                  .right = margins.right,
                  .top = margins.top,
                  .bottom = margins.bottom});
  pages_->SetPaper(printer, stored);
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
  std::string name =
      saved ? std::filesystem::path(letter.FilePath).stem().string() : letter.LetterTitle;
  if (name.empty()) name = name_while_untitled_;
  if (letter.Kind == kTenantLetter || letter.Kind == kOwnerLetter) {
    name += " - " + letter.RecipientName;
  } else {
    name += (saved ? " : " : " : New ") + letter.Kind;
  }
  return QString::fromStdString(name);
}

void LetterWindow::ShowCaption() {
  if (!letter_.members().Changed) editor().MarkSaved();
  // In a title, "[*]" is where Qt marks what is changed, and "[*][*]" is that text itself.
  // The mark is in front, where neither a narrow tab nor a long title cuts it off.
  setWindowTitle(QStringLiteral("[*]") +
                 ShownName().replace(QLatin1String("[*]"), QLatin1String("[*][*]")));
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
