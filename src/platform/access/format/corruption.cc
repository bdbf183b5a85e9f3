#include "platform/access/format/corruption.h"

namespace tenora::access {
namespace {

constexpr const char* kSource = "DAO.Database";

}  // namespace

RuntimeError CorruptionError(const Corruption& corruption, const std::filesystem::path& file,
                             std::string_view table) {
  std::string text;
  if (corruption.number() == engine_error::kDiskOrNetworkError) {
    text = "Disk or network error. File '" + file.string() + "', ";
  } else {
    text = "Cannot open database '" + file.string() +
           "'. It may not be a database that your application recognizes, or the file may be "
           "corrupt: ";
  }
  if (!table.empty()) text.append("table '").append(table).append("', ");
  text.append("page ")
      .append(std::to_string(corruption.page()))
      .append(": ")
      .append(corruption.what());
  return RuntimeError(corruption.number(), text + ".", kSource);
}

RuntimeError UnrecognizedFormat(const std::filesystem::path& file, std::string_view reason) {
  std::string text = "Unrecognized database format '" + file.string() + "'.";
  if (!reason.empty()) text.append(" ").append(reason).append(".");
  return RuntimeError(engine_error::kUnrecognizedFormat, text, kSource);
}

}  // namespace tenora::access
