// The paper that a letter is shown on: its size and margins, where lines end, and how much all of
// it is enlarged.
#pragma once

#include <QMargins>
#include <QObject>
#include <memory>

#include "ui/editor/document/edited_letter.h"
#include "ui/editor/document/undo_history.h"

namespace tenora {

// Lengths are twips.
struct PaperLook {
  bool wraps_at_page = false;  // lines end where they will on paper; else at the window's edge
  bool sheet = false;          // the same, and the sheet is seen, on a desk
  int width = 11906, height = 16838;
  int left = 1134, right = 1134, top = 567, bottom = 1134;

  bool HasPage() const { return wraps_at_page || sheet; }
};

inline constexpr int kDesk = 180;  // twips of it above and below a sheet

class PaperLayout : public QObject {
  Q_OBJECT

 public:
  // Both outlive this object.
  PaperLayout(EditedLetter& letter, UndoHistory& history);
  ~PaperLayout() override;

  // 1 is the size on paper.
  double Zoom() const { return zoom_; }
  void SetZoom(double zoom);
  const PaperLook& Look() const { return look_; }
  void SetLook(const PaperLook& look);
  // Between the paper's edge and the text, twips.
  int TextLeftMargin() const;
  // Of the paper, also where lines end at the window's edge; twips.
  int PageTextWidth() const { return look_.width - look_.left - look_.right; }
  // The width of a new table, twips: that of the paper's text, or one that fits most papers.
  int TableWidth() const;
  // To be called when the window's size has changed.
  void LayOut();

 signals:
  void ZoomChanged(double zoom);
  // By the zoom, before the letter is laid out with it.
  void FontsChanged();
  void PaperChanged();
  void LaidOut();
  // The free space in the window at both sides of the paper, pixels.
  void SideMarginsChanged(const QMargins& margins);

 private:
  class ZoomDevice;

  int FreeWidth(int paper_width) const;
  void FitIndentsToZoom();

  EditedLetter& letter_;
  UndoHistory& history_;
  std::unique_ptr<ZoomDevice> device_;
  double zoom_ = 1;
  PaperLook look_;
  bool indents_wait_ = false;  // until nothing can be redone
};

}  // namespace tenora
