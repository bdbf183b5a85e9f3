#include "platform/printing/pdf_pages.h"

#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>

namespace tenora::printing {
namespace {

constexpr int kUnitsPerInch = 1440;
constexpr double kTwipsPerPoint = 20;

}  // namespace

PdfPages::PdfPages(QIODevice& device, const std::string& title, const Paper& paper) {
  writer_.emplace(&device);
  writer_->setResolution(kUnitsPerInch);
  writer_->setTitle(QString::fromStdString(title));
  writer_->setCreator(QStringLiteral("Tenora Mail Merge Facility"));
  const QSizeF size(paper.width / kTwipsPerPoint, paper.height / kTwipsPerPoint);
  writer_->setPageLayout(QPageLayout(QPageSize(size, QPageSize::Point, {}, QPageSize::ExactMatch),
                                     QPageLayout::Portrait, QMarginsF()));
  painter_.begin(&*writer_);
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
