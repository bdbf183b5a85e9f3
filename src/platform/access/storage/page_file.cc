#include "platform/access/storage/page_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tenora::access {
namespace {

// Row pointers have three bytes for a page number.
constexpr std::uint64_t kMostPages = 1U << 24;

RuntimeError CannotOpen(int reason, const std::filesystem::path& path) {
  if (reason == ENOENT) {
    return RuntimeError(engine_error::kFileNotFound, "Could not find file '" + path.string() + "'.",
                        "DAO.Workspace");
  }
  std::string text = "The database engine cannot open the file '" + path.string() + "'. ";
  text += reason == EACCES || reason == EPERM ? "You need permission to view its data."
                                              : std::generic_category().message(reason) + ".";
  return RuntimeError(engine_error::kCannotOpenFile, text, "DAO.Workspace");
}

Corruption ReadFailure(const StorageError& error, std::uint32_t page) {
  return Corruption(page, std::generic_category().message(error.reason()),
                    engine_error::kDiskOrNetworkError);
}

// The content of a file in memory.
class MemoryFile final : public ReadableFile {
 public:
  explicit MemoryFile(std::vector<std::byte> bytes) : bytes_(std::move(bytes)) {}

  std::uint64_t Size() override { return bytes_.size(); }

  std::size_t Read(std::uint64_t offset, std::span<std::byte> into) override {
    const std::size_t start = std::min<std::size_t>(offset, bytes_.size());
    const std::size_t count = std::min(into.size(), bytes_.size() - start);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(start), count, into.begin());
    return count;
  }

 private:
  std::vector<std::byte> bytes_;
};

// Owns the file that its pages are read from.
class OwningPageFile final : public PageFile {
 public:
  OwningPageFile(const std::filesystem::path& path, std::unique_ptr<ReadableFile> file)
      : PageFile(path, *file), file_(std::move(file)) {}

 private:
  std::unique_ptr<ReadableFile> file_;
};

}  // namespace

PageFile::PageFile(std::filesystem::path path, ReadableFile& file)
    : path_(std::move(path)), file_(file) {
  std::array<std::byte, kHeaderSize> start;
  std::size_t count = 0;
  try {
    size_ = file_.Size();
    count = file_.Read(0, start);
  } catch (const StorageError& error) {
    throw CorruptionError(ReadFailure(error, 0), path_, {});
  }
  header_ = ReadFileHeader(Bytes(start).first(count), path_);
  const std::uint64_t page_size = layout().page_size;
  if (size_ % page_size != 0) {
    throw UnrecognizedFormat(
        path_, "The file is truncated at byte " + std::to_string(size_) + ", within a page");
  }
  if (size_ / page_size > kMostPages) {
    throw UnrecognizedFormat(path_, "The file has more pages than the format can number");
  }
  page_count_ = static_cast<std::uint32_t>(size_ / page_size);
}

std::size_t PageFile::ReadAt(std::uint64_t offset, std::span<std::byte> into,
                             std::uint32_t number) const {
  try {
    return file_.Read(offset, into);
  } catch (const StorageError& error) {
    throw ReadFailure(error, number);
  }
}

void PageFile::AddPages(std::uint32_t count) {
  page_count_ += count;
  size_ = std::uint64_t{page_count_} * layout().page_size;
}

void PageFile::Read(std::uint32_t number, PageBuffer& page) const {
  if (page.number == number) return;
  if (number >= page_count_) {
    throw Corruption(number, "the page is beyond the end of the file, which is truncated at byte " +
                                 std::to_string(size_));
  }
  page.number = PageBuffer::kNone;
  page.size = layout().page_size;
  const std::uint64_t offset = std::uint64_t{number} * page.size;
  const std::size_t count = ReadAt(offset, std::span(page.bytes).first(page.size), number);
  if (count < page.size) {
    throw Corruption(number, "the file was truncated while it was open, at byte " +
                                 std::to_string(offset + count));
  }
  page.number = number;
}

std::shared_ptr<const PageFile> PageFile::Open(const std::filesystem::path& path) {
  std::unique_ptr<StorageFile> file;
  try {
    file = DiskStorage().Open(path, Storage::Mode::kRead);
  } catch (const StorageError& error) {
    if (error.reason() == EISDIR) throw UnrecognizedFormat(path, "It is a folder");
    if (error.reason() == EINVAL) throw UnrecognizedFormat(path, "It is not a regular file");
    throw CannotOpen(error.reason(), path);
  }
  if (file == nullptr) throw CannotOpen(ENOENT, path);
  return std::make_shared<const OwningPageFile>(path, std::move(file));
}

std::shared_ptr<const PageFile> PageFile::OfBytes(std::vector<std::byte> bytes,
                                                  const std::filesystem::path& path) {
  return std::make_shared<const OwningPageFile>(path,
                                                std::make_unique<MemoryFile>(std::move(bytes)));
}

}  // namespace tenora::access
