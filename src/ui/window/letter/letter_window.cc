#include "ui/window/letter/letter_window.h"

#include <QCloseEvent>
#include <QVBoxLayout>

#include "platform/dialogs/guard.h"
#include "ui/window/appearance/icons.h"

namespace tenora {

LetterWindow::LetterWindow(Session& session, QWidget* parent)
    : QWidget(parent), session_(session), letter_(session) {
  setObjectName(QStringLiteral("frmLetter"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(LineIcon("letter"));
  view_ = new LetterView(letter_.rtfLetter, this);
  editor().setObjectName(QStringLiteral("rtfLetter"));
  editor().setAccessibleName(tr("Letter"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view_);
  setFocusProxy(&editor());
  // Once what was typed has reached the letter.
  connect(&editor(), &QTextEdit::textChanged, this, &LetterWindow::ShowCaption,
          Qt::QueuedConnection);

  letter_.FocusEditor = [this] { editor().setFocus(); };
  letter_.OnWidthChanged = [this](int width) { view_->ChangeWidth(width > 0); };
  letter_.OnCaptionChanged = [this] { ShowCaption(); };
  letter_.OnClose = [this] {
    // Not at once: the letter is still in the command that closes it.
    QMetaObject::invokeMethod(parentWidget(), "close", Qt::QueuedConnection);
  };
}

LetterWindow::~LetterWindow() {
  delete view_;  // before the letter it shows
}

void LetterWindow::ShowLetter() {
  editor().ShowBox();
  ShowCaption();
}

void LetterWindow::ShowCaption() {
  setWindowTitle(QString::fromStdString(letter_.members().Caption) + QStringLiteral("[*]"));
  setWindowModified(letter_.members().Changed);
  emit CaptionChanged();
}

void LetterWindow::closeEvent(QCloseEvent* event) {
  bool close = false;
  Guarded(session_.platform.dialogs, "frmLetter - Form_QueryUnload",
          [&] { close = letter_.CheckSave(); });
  event->setAccepted(close);
}

}  // namespace tenora
