#include "platform/printing/pdf_job.h"

#include <cerrno>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora::printing {

PdfJob::PdfJob(const std::filesystem::path& folder, const std::string& title, const Paper& paper,
               Sheet sheet)
    : title_(title), spool_(folder) {
  if (!file_.open(spool_.descriptor(), QIODevice::WriteOnly, QFileDevice::DontCloseHandle)) {
    throw FileError(EIO, folder);
  }
  pages_.emplace(file_, title, paper, sheet);
  if (!pages_->ok()) throw FileError(EIO, folder);
}

SpoolFile& PdfJob::Finish() {
  const bool ended = pages_->End();
  errno = 0;
  if (!ended || !file_.flush() || file_.error() != QFileDevice::NoError) {
    throw FileError(file_.error() == QFileDevice::ResourceError ? ENOSPC : EIO,
                    spool_.path().parent_path());
  }
  return spool_;
}

}  // namespace tenora::printing
