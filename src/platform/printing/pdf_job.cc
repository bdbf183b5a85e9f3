#include "platform/printing/pdf_job.h"

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

PdfJob::PdfJob(const std::filesystem::path& folder, const std::string& title, const Paper& paper)
    : title_(title), spool_(folder) {
  if (!file_.open(spool_.descriptor(), QIODevice::WriteOnly, QFileDevice::DontCloseHandle)) {
    throw FileError(EIO, folder);
  }
  writer_.emplace(&file_);
  writer_->setResolution(kUnitsPerInch);
  writer_->setTitle(QString::fromStdString(title));
  writer_->setCreator(QStringLiteral("Tenora Mail Merge Facility"));
  const QSizeF size(paper.width / kTwipsPerPoint, paper.height / kTwipsPerPoint);
  writer_->setPageLayout(QPageLayout(QPageSize(size, QPageSize::Point, {}, QPageSize::ExactMatch),
                                     QPageLayout::Portrait, QMarginsF()));
  if (!painter_.begin(&*writer_)) throw FileError(EIO, folder);
}

PdfJob::~PdfJob() {
  if (painter_.isActive()) painter_.end();
}

void PdfJob::NewPage() { writer_->newPage(); }

SpoolFile& PdfJob::Finish() {
  const bool ended = painter_.end();
  writer_.reset();
  errno = 0;
  if (!ended || !file_.flush() || file_.error() != QFileDevice::NoError) {
    throw FileError(file_.error() == QFileDevice::ResourceError ? ENOSPC : EIO,
                    spool_.path().parent_path());
  }
  return spool_;
}

}  // namespace tenora::printing
