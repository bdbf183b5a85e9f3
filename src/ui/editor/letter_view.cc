#include "ui/editor/letter_view.h"

#include <QCoreApplication>
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

void LetterView::SetRulerUnit(bool inches) {
  ruler_->SetUnit(inches ? LengthUnit{1440, QCoreApplication::translate("EditorDialogs", " in")}
                         : LengthUnit{567, QCoreApplication::translate("EditorDialogs", " cm")});
}

void LetterView::SetPage(int width, int left, int right) {
  PaperLook paper = editor_->Paper();
  paper.width = width;
  paper.left = left;
  paper.right = right;
  editor_->SetPaper(paper);
}

void LetterView::ChangeWidth(bool page_width) {
  PaperLook paper = editor_->Paper();
  paper.wraps_at_page = page_width;
  editor_->SetPaper(paper);
}

void LetterView::SetPaperColours(const QColor& paper_colour, const QColor& text) {
  PaperLook paper = editor_->Paper();
  paper.paper = paper_colour;
  paper.text = text;
  editor_->SetPaper(paper);
}

}  // namespace tenora
