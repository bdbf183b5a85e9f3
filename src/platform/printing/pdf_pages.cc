#include "platform/printing/pdf_pages.h"

#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>

namespace tenora::printing {
namespace {

constexpr int kUnitsPerInch = 1440;
constexpr double kTwipsPerPoint = 20;

}  // namespace

PdfPages::PdfPages(QIODevice& device, const std::string& title, const Paper& paper, Sheet sheet)
    : paper_(paper) {
  writer_.emplace(&device);
  writer_->setResolution(kUnitsPerInch);
  writer_->setTitle(QString::fromStdString(title));
  writer_->setCreator(QStringLiteral("Tenora Mail Merge Facility"));
  Lay(sheet);
  painter_.begin(&*writer_);
}

// Of the pages begun from now on.
void PdfPages::Lay(Sheet sheet) {
  const Paper laid = Laid(paper_, sheet);
  const QSizeF size(laid.width / kTwipsPerPoint, laid.height / kTwipsPerPoint);
  const QPageSize page_size(size, QPageSize::Point, {}, QPageSize::ExactMatch);
  sheet_ = sheet;
  writer_->setPageLayout(QPageLayout(page_size, QPageLayout::Portrait, QMarginsF()));
}

void PdfPages::NewPage(Sheet sheet) {
  if (sheet != sheet_) Lay(sheet);
  writer_->newPage();
}

PdfPages::~PdfPages() {
  if (painter_.isActive()) painter_.end();
}

bool PdfPages::End() {
  const bool ended = painter_.end();
  writer_.reset();
  return ended;
}

}  // namespace tenora::printing
