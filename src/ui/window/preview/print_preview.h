// Print preview: the pages of a letter one below the other, with the printer's margins.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QScrollArea>
#include <memory>

#include "platform/printing/preview_pages.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

class PreviewSheets;

class PrintPreview : public QMainWindow {
  Q_OBJECT

 public:
  // `letter` is the preview's own copy, and `pages` what was printed of it.
  PrintPreview(std::unique_ptr<RichTextBox> letter, std::unique_ptr<printing::PreviewPages> pages,
               QWidget* parent = nullptr);

  int PageCount() const { return pages_->PageCount(); }
  void ShowPage(int number);
  // 1 is actual size.
  void SetZoom(double zoom);

 signals:
  void PrintAsked();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  enum Fit { kFitNone, kFitWidth, kFitPage };

  void BuildToolBar();
  void FillPageList();
  void ZoomChosen(int row);
  void ApplyFit();
  void ShowCurrentPage();

  std::unique_ptr<RichTextBox> letter_;
  std::unique_ptr<printing::PreviewPages> pages_;
  QScrollArea* scroll_;
  PreviewSheets* sheets_;
  QListWidget* list_;
  QComboBox* zoom_box_;
  QLabel* page_label_;
  Fit fit_ = kFitPage;
};

}  // namespace tenora
