#include "platform/printing/pdf/pdf_job.h"

#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>
#include <cerrno>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora::printing {
namespace {

constexpr int kUnitsPerInch = 1440;
constexpr double kTwipsPerPoint = 20;

}  // namespace

PdfPages::PdfPages(QIODevice& device, const std::string& title, const Paper& paper,
                   Orientation orientation)
    : paper_(paper) {
  writer_.emplace(&device);
  writer_->setResolution(kUnitsPerInch);
  writer_->setTitle(QString::fromStdString(title));
  writer_->setCreator(QStringLiteral("Tenora Mail Merge Facility"));
  SetOrientation(orientation);
  painter_.begin(&*writer_);
}

// Takes effect with the next page.
void PdfPages::SetOrientation(Orientation orientation) {
  const Paper oriented = Oriented(paper_, orientation);
  const QSizeF size(oriented.width / kTwipsPerPoint, oriented.height / kTwipsPerPoint);
  const QPageSize page_size(size, QPageSize::Point, {}, QPageSize::ExactMatch);
  orientation_ = orientation;
  writer_->setPageLayout(QPageLayout(page_size, QPageLayout::Portrait, QMarginsF()));
}

void PdfPages::NewPage(Orientation orientation) {
  if (orientation != orientation_) SetOrientation(orientation);
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

PdfJob::PdfJob(const std::filesystem::path& folder, const std::string& title, const Paper& paper,
               Orientation orientation)
    : title_(title), spool_(folder) {
  if (!file_.open(spool_.descriptor(), QIODevice::WriteOnly, QFileDevice::DontCloseHandle)) {
    throw FileError(EIO, folder);
  }
  pages_.emplace(file_, title, paper, orientation);
  if (!pages_->ok()) throw FileError(EIO, folder);
}

SpoolFile& PdfJob::Finish() {
  const bool ended = pages_->End();
  errno = 0;
  if (!ended || !file_.flush() || file_.error() != QFileDevice::NoError) {
    throw FileError(file_.error() == QFileDevice::ResourceError ? ENOSPC : EIO, spool_.folder());
  }
  return spool_;
}

}  // namespace tenora::printing
