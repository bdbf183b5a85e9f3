#include "ui/window/preview/print_preview.h"

#include <QScrollBar>
#include <QSignalBlocker>
#include <QSplitter>
#include <QToolBar>
#include <algorithm>

#include "platform/dialogs/window_size.h"
#include "ui/window/appearance/icons.h"
#include "ui/window/preview/preview_sheets.h"

namespace tenora {
namespace {

constexpr double kLeastZoom = 0.1, kMostZoom = 4, kZoomStep = 1.25;
constexpr int kThumbWidth = 110;  // pixels
const QList<int> kZooms{50, 75, 100, 125, 150, 200, 300};

}  // namespace

PrintPreview::PrintPreview(std::unique_ptr<RichTextBox> letter,
                           std::unique_ptr<printing::PreviewPages> pages, QWidget* parent)
    : QMainWindow(parent), letter_(std::move(letter)), pages_(std::move(pages)) {
  setObjectName(QStringLiteral("frmPreview"));
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(LineIcon("preview"));
  auto* splitter = new QSplitter(this);
  list_ = new QListWidget(splitter);
  list_->setObjectName(QStringLiteral("lstPages"));
  list_->setAccessibleName(tr("Pages"));
  list_->setFrameShape(QFrame::NoFrame);
  list_->setViewMode(QListView::IconMode);
  list_->setMovement(QListView::Static);
  list_->setFlow(QListView::TopToBottom);
  list_->setWrapping(false);
  list_->setSpacing(8);
  scroll_ = new QScrollArea(splitter);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setAccessibleName(tr("Sheets"));
  scroll_->setBackgroundRole(QPalette::Mid);
  sheets_ = new PreviewSheets(*pages_);
  scroll_->setWidget(sheets_);
  scroll_->setWidgetResizable(true);
  splitter->addWidget(list_);
  splitter->addWidget(scroll_);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({kThumbWidth + 50, 740});
  setCentralWidget(splitter);
  resize(OpeningSize(*this, {900, 760}));

  FillPageList();
  BuildToolBar();
  connect(list_, &QListWidget::currentRowChanged, this, &PrintPreview::ShowPage);
  connect(scroll_->verticalScrollBar(), &QScrollBar::valueChanged, this,
          &PrintPreview::ShowCurrentPage);
  ShowCurrentPage();
}

void PrintPreview::BuildToolBar() {
  QToolBar* bar = addToolBar(tr("Preview"));
  bar->setMovable(false);
  bar->setIconSize(QSize(20, 20));
  const auto add = [&](const char* icon, const QString& text, const QKeySequence& keys, auto run) {
    QAction* action = bar->addAction(LineIcon(icon), text);
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, run);
    return action;
  };
  add("print", tr("Print…"), QKeySequence::Print, [this] {
    emit PrintAsked();
  })->setObjectName(QStringLiteral("mnuPrint"));
  bar->addSeparator();
  add("zoomout", tr("Zoom out"), QKeySequence::ZoomOut,
      [this] { SetZoom(sheets_->zoom() / kZoomStep); });
  zoom_box_ = new QComboBox(bar);
  zoom_box_->setObjectName(QStringLiteral("cboZoom"));
  zoom_box_->setAccessibleName(tr("Zoom"));
  zoom_box_->addItem(tr("Whole page"));
  zoom_box_->addItem(tr("Page width"));
  for (const int zoom : kZooms) zoom_box_->addItem(tr("%1 %").arg(zoom), zoom / 100.0);
  connect(zoom_box_, &QComboBox::activated, this, &PrintPreview::ZoomChosen);
  bar->addWidget(zoom_box_);
  add("zoomin", tr("Zoom in"), QKeySequence::ZoomIn,
      [this] { SetZoom(sheets_->zoom() * kZoomStep); });
  bar->addSeparator();
  page_label_ = new QLabel(bar);
  page_label_->setObjectName(QStringLiteral("lblPage"));
  page_label_->setContentsMargins(8, 0, 8, 0);
  bar->addWidget(page_label_);
  auto* close = new QAction(this);
  close->setShortcuts({QKeySequence::Close, QKeySequence(Qt::Key_Escape)});
  connect(close, &QAction::triggered, this, &QWidget::close);
  addAction(close);
}

void PrintPreview::FillPageList() {
  const double pixels_per_twip = kThumbWidth / pages_->PageSize().width();
  list_->setIconSize((pages_->PageSize() * pixels_per_twip).toSize());
  for (int page = 0; page < pages_->PageCount(); ++page) {
    QPixmap sheet = QPixmap::fromImage(pages_->Page(page, pixels_per_twip, devicePixelRatioF()));
    list_->addItem(new QListWidgetItem(QIcon(sheet), QString::number(page + 1)));
  }
}

void PrintPreview::ShowPage(int number) {
  if (number < 0) return;
  scroll_->verticalScrollBar()->setValue(sheets_->SheetAt(number).top() - 12);
}

void PrintPreview::SetZoom(double zoom) {
  fit_ = kFitNone;
  sheets_->SetZoom(std::clamp(zoom, kLeastZoom, kMostZoom));
  zoom_box_->setCurrentIndex(zoom_box_->findData(sheets_->zoom()));
  zoom_box_->setPlaceholderText(tr("%1 %").arg(qRound(sheets_->zoom() * 100)));
}

void PrintPreview::ZoomChosen(int row) {
  if (row >= 2) return SetZoom(zoom_box_->itemData(row).toDouble());
  fit_ = row == 0 ? kFitPage : kFitWidth;
  ApplyFit();
}

void PrintPreview::ApplyFit() {
  if (fit_ == kFitNone) return;
  constexpr int kAround = 40;
  const QSizeF paper = pages_->PageSize() / 1440 * logicalDpiX();
  const double across = (scroll_->viewport()->width() - kAround) / paper.width();
  const double down = (scroll_->viewport()->height() - kAround) / paper.height();
  sheets_->SetZoom(
      std::clamp(fit_ == kFitPage ? std::min(across, down) : across, kLeastZoom, kMostZoom));
}

void PrintPreview::ShowCurrentPage() {
  const int page =
      sheets_->PageAt(scroll_->verticalScrollBar()->value() + scroll_->viewport()->height() / 3);
  page_label_->setText(tr("Page %1 of %2").arg(page + 1).arg(PageCount()));
  const QSignalBlocker quiet(list_);
  list_->setCurrentRow(page);
}

void PrintPreview::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  ApplyFit();
}

void PrintPreview::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  ApplyFit();
}

}  // namespace tenora
