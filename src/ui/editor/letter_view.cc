#include "ui/editor/letter_view.h"

#include <QVBoxLayout>

namespace tenora {

LetterView::LetterView(RichTextBox& box, QWidget* parent) : QWidget(parent) {
  editor_ = new LetterEditor(box, this);
  ruler_ = new Ruler(*editor_, this);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(ruler_);
  layout->addWidget(editor_, 1);
  setFocusProxy(editor_);
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::Mid);
  connect(ruler_, &Ruler::MarginsDragged, this, &LetterView::MarginsDragged);
}

void LetterView::SetPage(PaperLook page) {
  const PaperLook& now = editor_->paper().Look();
  page.wraps_at_page = now.wraps_at_page;
  page.sheet = now.sheet;
  editor_->paper().SetLook(page);
}

void LetterView::MakeReadOnly() {
  editor_->setReadOnly(true);
  editor_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  editor_->setTabChangesFocus(true);
  ruler_->setEnabled(false);
}

void LetterView::ShowSheet(bool shown) {
  PaperLook paper = editor_->paper().Look();
  paper.sheet = shown;
  editor_->paper().SetLook(paper);
}

void LetterView::ChangeWidth(bool page_width) {
  PaperLook paper = editor_->paper().Look();
  paper.wraps_at_page = page_width;
  editor_->paper().SetLook(paper);
}

}  // namespace tenora
