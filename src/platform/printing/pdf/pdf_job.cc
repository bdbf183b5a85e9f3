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

PdfPages::PdfPages(QIODevice& device, const std::string& title, const Paper& paper) {
  writer_.emplace(&device);
  writer_->setResolution(kUnitsPerInch);
  writer_->setTitle(QString::fromStdString(title));
  writer_->setCreator(QStringLiteral("Tenora Mail Merge Facility"));
  SetPaper(paper);
  painter_.begin(&*writer_);
}

// Takes effect with the next page.
void PdfPages::SetPaper(const Paper& paper) {
  const QSizeF size(paper.width / kTwipsPerPoint, paper.height / kTwipsPerPoint);
  const QPageSize page_size(size, QPageSize::Point, {}, QPageSize::ExactMatch);
  paper_ = paper;
  writer_->setPageLayout(QPageLayout(page_size, QPageLayout::Portrait, QMarginsF()));
}

void PdfPages::NewPage(const Paper& paper) {
  if (paper != paper_) SetPaper(paper);
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

PdfJob::PdfJob(const std::filesystem::path& folder, const std::string& title, const Paper& paper)
    : title_(title), spool_(folder) {
  if (!file_.open(spool_.descriptor(), QIODevice::WriteOnly, QFileDevice::DontCloseHandle)) {
    throw FileError(EIO, folder);
  }
  pages_.emplace(file_, title, paper);
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
