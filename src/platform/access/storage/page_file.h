// A database file as an array of pages. A page is copied into the caller's buffer by one positioned
// read. The file is never memory-mapped: if another program truncates a mapped file, or its server
// goes away, touching the lost part kills the process, while a read reports an error.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/access/format/file_header.h"
#include "platform/access/format/page.h"
#include "platform/access/storage/file_storage.h"

namespace tenora::access {

class PageFile {
 public:
  // Raises what DatabaseFile::Open raises, except for errors in the catalogue.
  static std::shared_ptr<const PageFile> Open(const std::filesystem::path& path);
  // The same for bytes in memory; `path` is used in messages only.
  static std::shared_ptr<const PageFile> OfBytes(std::vector<std::byte> bytes,
                                                 const std::filesystem::path& path);
  virtual ~PageFile() = default;

  const std::filesystem::path& path() const { return path_; }
  const FileHeader& header() const { return header_; }
  const Layout& layout() const { return LayoutOf(header_.format); }
  std::uint64_t size() const { return size_; }
  std::uint32_t page_count() const { return page_count_; }

  // Reads a page into `page`, unless it holds that page already. Raises Corruption for a page
  // beyond the end of the file, now or when it was opened.
  void Read(std::uint32_t number, PageBuffer& page) const;

 protected:
  // Reads the header; `file` must outlive the object. Raises what Open raises.
  PageFile(std::filesystem::path path, ReadableFile& file);
  void AddPages(std::uint32_t count);
  // Fills `into` from byte `offset`, which is on page `number`; returns fewer bytes only at the end
  // of the file. Raises Corruption 3043 when the system reports a failure.
  virtual std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into,
                             std::uint32_t number) const;

 private:
  std::filesystem::path path_;
  ReadableFile& file_;
  std::uint64_t size_ = 0;
  std::uint32_t page_count_ = 0;
  FileHeader header_;
};

}  // namespace tenora::access
