#include "platform/query/cache/linked_files.h"

#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/access/engine_error.h"
#include "platform/runtime/file_lookup.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

namespace fs = std::filesystem;

constexpr int kCircularReference = 3102, kNoDriver = 3170;
constexpr int kTries = 50;
constexpr std::size_t kMostFiles = 32;

constexpr std::string_view kAccess = "MS Access", kServer = "ODBC";

// What the engine reads a link with: "ODBC", "Text", "Excel 8.0".
std::string ProductOf(const access::LinkedTable& link) {
  const std::string product = link.connect.substr(0, link.connect.find(';'));
  // A server's connection may begin with its parts.
  if (product.find('=') != std::string::npos) return std::string(kServer);
  if (!product.empty()) return product;
  return std::string(link.database.empty() ? kServer : kAccess);
}

bool HasDrive(std::string_view path) { return path.size() > 1 && path[1] == ':'; }
bool HasComputer(std::string_view path) {
  return path.starts_with("\\\\") || path.starts_with("//");
}

// All names of a file are the same here.
fs::path Resolved(const fs::path& path) {
  std::error_code unresolved;
  fs::path resolved = fs::weakly_canonical(path, unresolved);
  return unresolved ? path : resolved;
}

RuntimeError LinkError(int number, const std::string& description) {
  // A link may hold any bytes; a zero would end the text.
  using namespace std::string_view_literals;
  return RuntimeError(number, ReplaceAll(description, "\0"sv, "\\0"), "DAO.Database");
}

RuntimeError NotThere(const access::LinkedTable& link, const fs::path& database) {
  std::string text =
      "Could not find file '" + link.database + "', to which table '" + link.name + "' is linked.";
  if (HasDrive(link.database) || HasComputer(link.database)) {
    text += " A file of that name beside '" + database.string() + "' would stand for it.";
  }
  return LinkError(access::engine_error::kFileNotFound, text);
}

}  // namespace

std::optional<fs::path> FindLinkedFile(const access::LinkedTable& link, const fs::path& database) {
  if (!EqualsNoCase(ProductOf(link), kAccess)) return std::nullopt;
  if (link.database.find('\0') != std::string::npos) return std::nullopt;
  const fs::path named = NativePath(link.database);
  const fs::path folder = database.parent_path();
  std::vector<fs::path> places;
  if (!HasDrive(link.database)) places.push_back(folder / named);
  if (HasDrive(link.database) || HasComputer(link.database)) {
    places.push_back(folder / named.filename());
  }
  for (const fs::path& place : places) {
    fs::path found = FindIgnoringCase(place);
    std::error_code unknown;
    if (fs::is_regular_file(found, unknown)) return found;
  }
  return std::nullopt;
}

std::string DescribeLink(const access::LinkedTable& link, const fs::path& database) {
  const std::string table = "linked to table '" + link.source + "' of ";
  const std::string product = ProductOf(link);
  if (EqualsNoCase(product, kServer)) return table + "a server";
  const std::string where = table + "'" + link.database + "'";
  if (!EqualsNoCase(product, kAccess)) return where + " (" + product + ")";
  const std::optional<fs::path> file = FindLinkedFile(link, database);
  if (!file) return where + ", which is not there";
  return *file == link.database ? where : where + ", found as '" + file->string() + "'";
}

LinkedFiles::LinkedFiles(const fs::path& database) : database_(Resolved(database)) {}

std::shared_ptr<FileTable> LinkedFiles::Open(const access::LinkedTable& link) {
  std::shared_ptr<FileTable>& table = tables_[ToLower(link.name)];
  if (table == nullptr) table = Follow(link, link.name);
  return table;
}

FileReader& LinkedFiles::ReaderOf(const fs::path& path) {
  File& file = files_[path];
  if (file.reader == nullptr) {
    file.state = access::ReadFileState(path);
    file.settled = access::IsSettled(file.state);
    file.reader = std::make_shared<FileReader>(path, file.state, ReadLocking::kLock);
  }
  return *file.reader;
}

// A file's table may itself be linked. Our own file is not opened a second time: within a
// transaction it is locked against us too.
std::shared_ptr<FileTable> LinkedFiles::Follow(const access::LinkedTable& first,
                                               const std::string& name) {
  struct Found {
    std::shared_ptr<FileTable> table;
    std::optional<access::LinkedTable> link;
  };
  std::set<fs::path> passed = {database_};
  fs::path from = database_;
  for (access::LinkedTable link = first;;) {
    const std::string product = ProductOf(link);
    if (!EqualsNoCase(product, kAccess)) {
      throw LinkError(kNoDriver, "Could not find installable ISAM. Table '" + link.name +
                                     "' is linked through " + product +
                                     ": only tables of Access files are read here.");
    }
    const std::optional<fs::path> found = FindLinkedFile(link, from);
    if (!found) throw NotThere(link, from);
    const fs::path path = Resolved(*found);
    if (!passed.insert(path).second) {
      throw LinkError(kCircularReference, "Circular reference caused by '" + name +
                                              "': it is linked to '" + path.string() +
                                              "', from where the link comes.");
    }
    if (passed.size() > kMostFiles || (files_.size() >= kMostFiles && !files_.contains(path))) {
      throw LinkError(access::engine_error::kOutOfResources,
                      "System resource exceeded: table '" + name + "' is linked to '" +
                          path.string() + "', and too many files are open for links.");
    }
    FileReader& reader = ReaderOf(path);
    Found next = About([&] { return "table '" + link.name + "' is linked to it"; },
                       [&] {
                         return reader.Read(kTries, [&](const access::DatabaseFile& file) {
                           const access::Table* const table = file.FindTable(link.source);
                           Found there;
                           if (table == nullptr) {
                             there.link = file.FindLink(link.source);
                           } else {
                             there.table =
                                 std::make_shared<FileTable>(*table, files_.at(path).reader, name);
                           }
                           return there;
                         });
                       });
    if (next.table != nullptr) return next.table;
    if (!next.link) {
      throw LinkError(access::engine_error::kNoSuchTable,
                      "The database engine cannot find the input table or query '" + link.source +
                          "' in '" + path.string() + "', to which table '" + link.name +
                          "' is linked.");
    }
    link = *std::move(next.link);
    from = path;
  }
}

bool LinkedFiles::Unchanged() const {
  for (const auto& [path, file] : files_) {
    if (!file.settled || access::ReadFileState(path) != file.state) return false;
  }
  return true;
}

void LinkedFiles::EndStep() {
  for (auto& [path, file] : files_) file.reader->EndStep();
}

}  // namespace tenora::query
