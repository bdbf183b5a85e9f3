// How long one receipt number takes to advance, safe on disk, in a file with 5,000 and one with
// 500,000 rows, beside what the syncs alone take on the same disk.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/access/database_writer.h"
#include "platform/access/storage/file_storage.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using access::WritableTable;
using access::WriteTransaction;

// The disks of this machine, slowed to a plain office server's.
class SlowStorage final : public access::Storage {
 public:
  static constexpr std::chrono::milliseconds kSyncTime{5};

  std::unique_ptr<access::StorageFile> Open(const std::filesystem::path& path, Mode mode) override {
    auto file = disk_.Open(path, mode);
    return file == nullptr ? nullptr : std::make_unique<File>(*this, std::move(file));
  }
  std::unique_ptr<access::StorageFile> Create(const std::filesystem::path& path,
                                              const std::filesystem::path& like) override {
    return std::make_unique<File>(*this, disk_.Create(path, like));
  }
  void Remove(const std::filesystem::path& path) override { disk_.Remove(path); }
  bool Rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    return disk_.Rename(from, to);
  }
  void SyncFolder(const std::filesystem::path&) override { Sync(); }
  int syncs() const { return syncs_; }

 private:
  class File final : public access::StorageFile {
   public:
    File(SlowStorage& storage, std::unique_ptr<StorageFile> file)
        : storage_(storage), file_(std::move(file)) {}
    std::uint64_t Size() override { return file_->Size(); }
    std::size_t Read(std::uint64_t offset, std::span<std::byte> into) override {
      return file_->Read(offset, into);
    }
    void Write(std::uint64_t offset, access::Bytes bytes) override { file_->Write(offset, bytes); }
    void Truncate(std::uint64_t size) override { file_->Truncate(size); }
    void Sync() override { storage_.Sync(); }
    bool TryLock(access::LockKind kind, access::ByteRange bytes) override {
      return file_->TryLock(kind, bytes);
    }
    std::optional<access::ByteRange> OtherLock(access::LockKind kind,
                                               access::ByteRange bytes) override {
      return file_->OtherLock(kind, bytes);
    }
    access::FileState State() override { return file_->State(); }
    access::FileState MarkChanged() override { return file_->MarkChanged(); }
    bool IsAt(const std::filesystem::path& path) override { return file_->IsAt(path); }

   private:
    SlowStorage& storage_;
    std::unique_ptr<StorageFile> file_;
  };

  void Sync() {
    ++syncs_;
    std::this_thread::sleep_for(kSyncTime);
  }

  access::DiskStorage disk_;
  int syncs_ = 0;
};

double MillisecondsOf(const auto& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

double Median(std::vector<double> times) {
  std::ranges::nth_element(times, times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2));
  return times[times.size() / 2];
}

void Fill(const std::filesystem::path& path, std::int64_t rows) {
  const auto transaction = WriteTransaction::Begin(path);
  WritableTable& fields = transaction->Table("custom_fields");
  for (std::int64_t i = 0; i < rows; ++i) {
    fields.Insert({{"parentcode", std::string("P").append(std::to_string(i))},
                   {"parenttype", std::int64_t{202}},
                   {"fieldcode", std::string("NxtReceipt")},
                   {"value", std::string("1000")}});
  }
  transaction->Commit();
}

void Advance(const std::filesystem::path& path, std::int64_t building,
             access::Storage* storage = nullptr) {
  WriteTransaction::Options options;
  options.storage = storage;
  const auto transaction = WriteTransaction::Begin(path, options);
  WritableTable& fields = transaction->Table("custom_fields");
  const auto row = fields.Find({{"parentcode", std::string("P").append(std::to_string(building))},
                                {"parenttype", std::int64_t{202}},
                                {"fieldcode", std::string("NxtReceipt")}});
  const int next = std::stoi(TextOf(fields.Read(row.at(0))[3])) + 1;
  fields.Update(row[0], {{"value", std::to_string(next)}});
  transaction->Commit();
}

// One page written and synced.
double SyncTime(const std::filesystem::path& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT, 0600);
  const std::string page(4096, 'x');
  std::vector<double> times;
  for (int i = 0; i < 50; ++i) {
    times.push_back(MillisecondsOf([&] {
      if (::pwrite(fd, page.data(), page.size(), 0) > 0) ::fdatasync(fd);
    }));
  }
  ::close(fd);
  return Median(times);
}

void Run() {
  const test::ScratchFolder scratch;
  const double sync = SyncTime(scratch / "sync");
  std::printf("one page written and synced: %.2f ms\n", sync);
  double first = 0;
  for (const std::int64_t rows : {5000, 500000}) {
    const auto path = scratch / (std::to_string(rows) + ".mdb");
    std::filesystem::copy_file(test::SampleDatabase(), path);
    const double filled = MillisecondsOf([&] { Fill(path, rows); });
    std::vector<double> times;
    for (std::int64_t i = 0; i < 100; ++i) {
      times.push_back(MillisecondsOf([&] { Advance(path, i * 7919 % rows); }));
    }
    const double advance = Median(times);
    if (first == 0) first = advance;
    std::printf(
        "%6lld rows (%.0f ms to insert): a receipt number takes %.2f ms, %.1f syncs; "
        "%.2f times that of 5,000 rows\n",
        static_cast<long long>(rows), filled, advance, advance / sync, advance / first);
    SlowStorage slow;
    times.clear();
    for (std::int64_t i = 0; i < 20; ++i) {
      times.push_back(MillisecondsOf([&] { Advance(path, i * 7919 % rows, &slow); }));
    }
    std::printf("       on a disk that syncs in 5 ms: %.2f ms, %d syncs\n", Median(times),
                slow.syncs() / 20);
  }
}

}  // namespace
}  // namespace tenora

int main() {
  try {
    tenora::Run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
