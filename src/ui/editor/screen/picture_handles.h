// The frame with eight handles around the picture that is selected: dragging them changes its size.
#pragma once

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QRectF>
#include <optional>

#include "ui/editor/commands/picture_commands.h"
#include "ui/editor/document/edited_letter.h"

namespace tenora {

class PictureHandles {
 public:
  // Both outlive this object.
  PictureHandles(EditedLetter& letter, PictureCommands& pictures);

  // Places are the viewport's. Each gives true where it has used the event: a click selects a
  // picture, a handle is dragged; corners keep the ratio unless Shift is held, Escape ends a drag
  // without a change.
  bool Press(const QMouseEvent& event);
  bool Move(const QMouseEvent& event);
  bool Release(const QMouseEvent& event);
  bool Key(const QKeyEvent& event);
  // Asks for the size of the picture there.
  bool DoubleClick(const QMouseEvent& event);
  // After a button was released: Qt ends the selection where one clicks into it.
  void Released();
  // The painter's origin is the viewport's corner.
  void Paint(QPainter* painter) const;

 private:
  enum { kNone = 0, kLeft = 1, kTop = 2, kRight = 4, kBottom = 8 };  // edges that a handle moves
  struct Drag {
    int edges = kNone;
    QPointF from;
    QRectF before, now;
  };

  QRectF AreaOf(int position) const;
  int PictureAt(QPointF point) const;  // -1 where there is none
  static QPointF HandleOf(const QRectF& area, int edges);
  int HandleAt(QPointF point) const;
  richtext::PictureLook LookOf(const Drag& drag) const;
  void ShowPointer(int edges) const;
  void Select(int position);

  EditedLetter& letter_;
  PictureCommands& pictures_;
  std::optional<Drag> drag_;
  int pressed_ = -1;  // the selected picture that a button was pressed on
};

}  // namespace tenora
