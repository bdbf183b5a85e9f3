// The ruler above a letter: shows the page margins and the indents and tab stops at the caret, and
// lets them be dragged.
#pragma once

#include <QWidget>
#include <optional>

#include "ui/editor/commands/editor_dialogs.h"
#include "ui/editor/letter_editor.h"

namespace tenora {

class Ruler : public QWidget {
  Q_OBJECT

 public:
  Ruler(LetterEditor& editor, QWidget* parent);

  QSize sizeHint() const override;

 signals:
  // The page's margins were dragged, in twips.
  void MarginsDragged(int left, int right);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  enum class Grip { kFirst, kLeft, kRight, kTab, kLeftMargin, kRightMargin };
  struct Held {
    Grip grip;
    std::size_t tab = 0;
    int value = 0;     // twips from the text's left edge
    bool off = false;  // a tab stop dragged off the ruler
  };

  double Scale() const;     // pixels of a twip
  double TextLeft() const;  // x of the text's left edge
  int TextWidth() const;    // twips
  int TwipsAt(double x) const;
  std::optional<Held> GripAt(QPointF point);
  void Apply(const Held& held);
  void PaintScale(QPainter* painter) const;
  void PaintGrips(QPainter* painter);

  LetterEditor& editor_;
  const LengthUnit unit_ = LocaleUnit();
  std::optional<Held> held_;
};

}  // namespace tenora
