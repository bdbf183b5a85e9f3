#include "platform/access/page_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tenora::access {
namespace {

// Row pointers have three bytes for a page number.
constexpr std::uint64_t kMostPages = 1U << 24;

RuntimeError CannotOpen(int reason, const std::filesystem::path& path) {
  if (reason == ENOENT || reason == ENOTDIR) {
    return RuntimeError(engine_error::kFileNotFound, "Could not find file '" + path.string() + "'.",
                        "DAO.Workspace");
  }
  std::string text = "The database engine cannot open the file '" + path.string() + "'. ";
  text += reason == EACCES || reason == EPERM ? "You need permission to view its data."
                                              : std::generic_category().message(reason) + ".";
  return RuntimeError(engine_error::kCannotOpenFile, text, "DAO.Workspace");
}

class DiskFile final : public PageFile {
 public:
  // Takes over the descriptor.
  DiskFile(const std::filesystem::path& path, int fd, std::uint64_t size)
      : PageFile(path, size), fd_(fd) {
    try {
      Begin();
    } catch (...) {
      ::close(fd_);
      throw;
    }
  }
  ~DiskFile() override { ::close(fd_); }
  DiskFile(const DiskFile&) = delete;
  DiskFile& operator=(const DiskFile&) = delete;

 private:
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into,
                     std::uint32_t number) const override {
    std::size_t filled = 0;
    while (filled < into.size()) {
      const ssize_t count = ::pread(fd_, into.data() + filled, into.size() - filled,
                                    static_cast<off_t>(offset + filled));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) {
        throw Damage(number, std::generic_category().message(errno),
                     engine_error::kDiskOrNetworkError);
      }
      if (count == 0) break;
      filled += static_cast<std::size_t>(count);
    }
    return filled;
  }

  int fd_;
};

class MemoryFile final : public PageFile {
 public:
  MemoryFile(const std::filesystem::path& path, std::vector<std::byte> bytes)
      : PageFile(path, bytes.size()), bytes_(std::move(bytes)) {
    Begin();
  }

 private:
  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into,
                     std::uint32_t) const override {
    const std::size_t start = std::min<std::size_t>(offset, bytes_.size());
    const std::size_t count = std::min(into.size(), bytes_.size() - start);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(start), count, into.begin());
    return count;
  }

  std::vector<std::byte> bytes_;
};

}  // namespace

void PageFile::Begin() {
  std::array<std::byte, kHeaderSize> start;
  std::size_t count = 0;
  try {
    count = ReadAt(0, start, 0);
  } catch (const Damage& damage) {
    throw DamageError(damage, path_, {});
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

void PageFile::AddPages(std::uint32_t count) {
  page_count_ += count;
  size_ = std::uint64_t{page_count_} * layout().page_size;
}

void PageFile::Read(std::uint32_t number, PageBuffer& page) const {
  if (page.number == number) return;
  if (number >= page_count_) {
    throw Damage(number, "the page lies behind the end of the file, which is truncated at byte " +
                             std::to_string(size_));
  }
  page.number = PageBuffer::kNone;
  page.size = layout().page_size;
  const std::uint64_t offset = std::uint64_t{number} * page.size;
  const std::size_t count = ReadAt(offset, std::span(page.bytes).first(page.size), number);
  if (count < page.size) {
    throw Damage(number, "the file was cut short while it was open, at byte " +
                             std::to_string(offset + count));
  }
  page.number = number;
}

std::shared_ptr<const PageFile> PageFile::Open(const std::filesystem::path& path) {
  // Without blocking, so that a pipe of that name cannot hold us up.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) throw CannotOpen(errno, path);
  struct stat status {};
  if (::fstat(fd, &status) != 0) {
    const int reason = errno;
    ::close(fd);
    throw CannotOpen(reason, path);
  }
  if (!S_ISREG(status.st_mode)) {
    ::close(fd);
    throw UnrecognizedFormat(path, S_ISDIR(status.st_mode) ? "It is a folder" : "It is no file");
  }
  return std::make_shared<const DiskFile>(path, fd, static_cast<std::uint64_t>(status.st_size));
}

std::shared_ptr<const PageFile> PageFile::OfBytes(std::vector<std::byte> bytes,
                                                  const std::filesystem::path& path) {
  return std::make_shared<const MemoryFile>(path, std::move(bytes));
}

}  // namespace tenora::access
