#include "platform/runtime/file_lookup.h"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <system_error>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

bool Exists(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

// The entry of a folder that has this name but for what folding ignores; empty without one.
fs::path EntryLike(const fs::path& folder, const std::string& name) {
  const std::string wanted = FoldedName(name);
  std::string found;
  std::error_code error;
  for (fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, error), end;
       !error && entry != end; entry.increment(error)) {
    const std::string candidate = entry->path().filename().string();
    if ((found.empty() || candidate < found) && FoldedName(candidate) == wanted) found = candidate;
  }
  return found;
}

}  // namespace

// Folding can make characters that decompose, hence the normalization on both sides of it.
std::string FoldedName(std::string_view name) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* const decomposer = icu::Normalizer2::getNFDInstance(status);
  if (U_FAILURE(status) || !IsValidUtf8(name)) return std::string(name);
  const auto text =
      icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())});
  icu::UnicodeString folded = decomposer->normalize(text, status).foldCase();
  folded = decomposer->normalize(folded, status);
  std::string result;
  folded.toUTF8String(result);
  return U_FAILURE(status) ? std::string(name) : result;
}

fs::path FindIgnoringCase(const fs::path& path) {
  if (path.empty() || Exists(path)) return path;
  fs::path found = path.root_path();
  for (const fs::path& name : path.relative_path()) {
    const fs::path exact = found / name;
    if (Exists(exact)) {
      found = exact;
      continue;
    }
    const fs::path like = EntryLike(found, name.string());
    if (like.empty()) return path;
    found /= like;
  }
  return found;
}

}  // namespace tenora
