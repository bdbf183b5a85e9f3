#include "letters/generate/merged_files.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "letters/generate/letter_maker.h"
#include "letters/generate/merged_pdf.h"
#include "letters/generate/post_list.h"
#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

bool BeginsWith(const fs::path& file, std::string_view begin) {
  std::string read(begin.size(), '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.read(read.data(), static_cast<std::streamsize>(read.size()));
  return stream && read == begin;
}

// A run log may name any file: none is replaced that does not begin as those of runs do.
void RequireOwn(const fs::path& target, std::string_view begin) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(target, error);
  if (status.type() == fs::file_type::not_found) return;
  if (!fs::is_regular_file(status) || !BeginsWith(target, begin)) {
    throw StandardError(error_number::kFileAlreadyExists,
                        target.string() + " is there and was not made by a run of letters");
  }
}

}  // namespace

MergedFiles MergeFiles(const RunLedger& log, Session& session, GenerationObserver& observer,
                       bool stopped) {
  MergedFiles merged;
  const GenerationRequest& request = log.request();
  const auto make = [&](const auto& asked, const char* ending, const char* what, auto&& write) {
    if (!asked) return;
    try {
      write(asked->empty() ? fs::path(log.path()).replace_extension(ending) : *asked);
    } catch (...) {
      merged.problems.push_back(what + (" was not made: " + ErrorText(CurrentError())));
    }
  };
  const fs::path data_folder = session.database.DataFolder();
  make(request.post_list, ".csv", "The list of the letters", [&](const fs::path& target) {
    RequireOwn(target, kPostListBegin);
    WriteWholeFile(target, PostList(log.run(), data_folder, session.caches));
    merged.post_list = target;
    observer.Saved(target);
  });
  make(request.one_pdf, ".pdf", "The PDF of all letters", [&](const fs::path& target) {
    // It could be only of some, and take as long as they did.
    if (stopped) throw LetterProblem("the run was stopped; resuming it makes the PDF");
    RequireOwn(target, "%PDF-");
    WriteMergedPdf(
        log.run(), data_folder, target, StoredMargins(session.settings),
        [&] { return observer.StopAsked(); }, merged);
    if (!merged.pdf.empty()) observer.Saved(merged.pdf);
  });
  return merged;
}

}  // namespace tenora
