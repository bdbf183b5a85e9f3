#include "ui/window/letter_window.h"

#include <QCloseEvent>
#include <QVBoxLayout>

#include "platform/dialogs/guard.h"
#include "ui/window/icons.h"

namespace tenora {

LetterWindow::LetterWindow(Session& session, QWidget* parent)
    : QWidget(parent), session_(session), letter_(session) {
  setObjectName(QStringLiteral("frmLetter"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(LineIcon("letter"));
  editor_ = new LetterEditor(letter_.rtfLetter, this);
  editor_->setObjectName(QStringLiteral("rtfLetter"));
  editor_->setAccessibleName(tr("Letter"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(editor_);
  setFocusProxy(editor_);

  letter_.FocusEditor = [this] { editor_->setFocus(); };
  letter_.OnCaptionChanged = [this] { ShowCaption(); };
  letter_.OnClose = [this] {
    // Not at once: the letter is still in the command that closes it.
    QMetaObject::invokeMethod(parentWidget(), "close", Qt::QueuedConnection);
  };
}

void LetterWindow::ShowLetter() { ShowCaption(); }

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
