#include "rental/session.h"

#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/locale/locale.h"
#include "platform/registry/registry.h"
#include "platform/runtime/pdf_target.h"
#include "rental/detached_session.h"

namespace tenora {

bool Session::ReloadRentalData() {
  const std::size_t errors_before = database.ErrorsReported();
  const OpenedDatabase opened(database);
  // The failure has been shown; every load below would fail too.
  if (!database.IsOpen()) return false;
  caches.Load(database);
  options.LoadOptions();
  return database.ErrorsReported() == errors_before;
}

void Session::SetChequeWord() {
  cheque_word = "Cheque";
  try {
    const std::string date = platform.locale.ShortDate(Date::FromCalendar(2000, 12, 22));
    if (!date.starts_with('2')) cheque_word = "Check";
  } catch (const std::exception&) {
    // Deliberate: the word stays as it is.
  }
}

std::shared_ptr<DetachedSession> Session::Beside() {
  if (beside_ == nullptr || beside_->file() != database.Location()) {
    beside_ = std::make_shared<DetachedSession>(*this);
  }
  return beside_;
}

ScratchSweep Session::SweepScratchFiles() {
  std::vector<std::filesystem::path> others{
      platform.registry.FileOf(registry::Hive::kCurrentUser).parent_path()};
  std::error_code none;
  const std::filesystem::path temporary = std::filesystem::temp_directory_path(none);
  if (!none) others.push_back(temporary);
  const std::filesystem::path pdfs = FolderOfPdfTarget(PdfTargetFromEnvironment());
  if (!pdfs.empty()) others.push_back(pdfs);
  return {database.DataFolder(), std::move(others)};
}

}  // namespace tenora
