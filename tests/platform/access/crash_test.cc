// A change that is interrupted leaves the database as it was before or as it is after the change,
// whichever step is interrupted and however the disk behaves.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "platform/access/database_writer.h"
#include "platform/access/simulated_disk.h"
#include "platform/access/storage/exclusive_access.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "support/slow_build.h"
#include "support/test_files.h"

namespace tenora::test {
namespace {

using access::WriteTransaction;
using Contents = SimulatedDisk::Contents;
using Trouble = SimulatedDisk::Trouble;

const std::filesystem::path kPath = "/simulated/property.mdb";

Contents Sample() {
  const std::string text = ReadWholeFile(SampleDatabase());
  const auto* start = reinterpret_cast<const std::byte*>(text.data());
  return {start, start + text.size()};
}

// Overwrites rows, moves one to another page, splits index pages, adds data pages and pages of long
// values.
void Change(access::Storage& storage, const std::filesystem::path& path) {
  WriteTransaction::Options options;
  options.storage = &storage;
  const auto transaction = WriteTransaction::Begin(path, options);
  access::WritableTable& fields = transaction->Table("custom_fields");
  const auto rows = fields.All();
  fields.Update(rows.front(), {{"value", std::string("1001")}});
  fields.Update(rows.at(1), {{"value", std::string(250, 'v')}});
  fields.Delete(rows.at(2));
  transaction->Table("owner").Insert({{"Code", std::string("NEW")},
                                      {"name", std::string("New Owner")},
                                      {"notes", std::string(9000, 'n')}});
  for (std::int64_t i = 0; i < 150; ++i) {
    transaction->Table("revenues")
        .Insert({{"recordnumber", 900000 + i}, {"tenant_code", std::string("T00001")}});
  }
  transaction->Commit();
}

bool Succeeds(access::Storage& storage) {
  try {
    Change(storage, kPath);
    return true;
  } catch (const RuntimeError&) {
    return false;
  }
}

struct Images {
  Contents before = Sample(), after;
  int steps = 0;  // of the complete change
};

Images MakeImages() {
  Images images;
  SimulatedDisk disk;
  disk.Put(kPath, images.before);
  Change(disk, kPath);
  images.after = disk.Get(kPath);
  images.steps = disk.steps();
  return images;
}

// Opens the database as the next program does.
std::string StateAfterRecovery(SimulatedDisk& disk, const Images& images) {
  access::RecoverDatabase(disk, kPath, {});
  if (!disk.Get(access::JournalPath(kPath)).empty()) return "a journal remains";
  const Contents found = disk.Get(kPath);
  if (found == images.before) return "before";
  if (found == images.after) return "after";
  std::string where = "between, pages";
  const auto page = [](const Contents& image, std::size_t at) {
    const std::size_t start = std::min(at, image.size());
    return std::span(image).subspan(start, std::min<std::size_t>(4096, image.size() - start));
  };
  for (std::size_t at = 0; at < std::max(found.size(), images.after.size()); at += 4096) {
    const bool old = std::ranges::equal(page(found, at), page(images.before, at));
    const bool now = std::ranges::equal(page(found, at), page(images.after, at));
    if (old == now && old) continue;
    where.append(" ").append(std::to_string(at / 4096));
    where.append(old ? " old" : now ? " new" : " neither");
  }
  return where;
}

TEST(AnInterruptedChange, IsAtomicWhenThePowerFails) {
  const Images images = MakeImages();
  ASSERT_NE(images.after, images.before);
  constexpr unsigned kSeeds = kSlowBuild ? 4 : 12;
  int points = 0, before = 0, after = 0;
  for (int step = 0; step < images.steps; ++step) {
    SimulatedDisk disk;
    disk.Put(kPath, images.before);
    disk.SetTrouble({Trouble::kPowerCut, step, 0});
    bool committed = false;
    try {
      Change(disk, kPath);
      committed = true;
    } catch (const PowerCut&) {
    }
    for (unsigned seed = 0; seed < kSeeds; ++seed, ++points) {
      SimulatedDisk survivor = disk.AfterPowerCut(seed);
      const std::string state = StateAfterRecovery(survivor, images);
      ASSERT_TRUE(state == "before" || state == "after")
          << state << ", step " << step << ", seed " << seed;
      if (committed) {
        ASSERT_EQ(state, "after") << "step " << step << ", seed " << seed;
      }
      ++(state == "before" ? before : after);
    }
  }
  std::printf("%d steps, %d power cuts: %d before, %d after\n", images.steps, points, before,
              after);
  EXPECT_GT(before, 0);
  EXPECT_GT(after, 0);
}

TEST(AnInterruptedChange, IsAtomicWhenThePowerFailsAgainDuringRecovery) {
  const Images images = MakeImages();
  int points = 0;
  for (int step = 0; step < images.steps; step += kSlowBuild ? 17 : 3) {
    SimulatedDisk disk;
    disk.Put(kPath, images.before);
    disk.SetTrouble({Trouble::kPowerCut, step, 0});
    try {
      Change(disk, kPath);
    } catch (const PowerCut&) {
    }
    for (unsigned seed = 0; seed < (kSlowBuild ? 2 : 4); ++seed) {
      SimulatedDisk whole = disk.AfterPowerCut(seed);
      access::RecoverDatabase(whole, kPath, {});
      for (int second = 0; second < whole.steps(); ++second, ++points) {
        SimulatedDisk once = disk.AfterPowerCut(seed);
        once.SetTrouble({Trouble::kPowerCut, second, 0});
        try {
          access::RecoverDatabase(once, kPath, {});
        } catch (const PowerCut&) {
        }
        SimulatedDisk twice = once.AfterPowerCut(seed + 7);
        const std::string state = StateAfterRecovery(twice, images);
        ASSERT_TRUE(state == "before" || state == "after")
            << state << ", steps " << step << " and " << second << ", seed " << seed;
      }
    }
  }
  std::printf("%d power cuts during recovery\n", points);
  EXPECT_GT(points, 0);
}

TEST(AFailingDisk, LeavesChangesAtomicAndReportsErrors) {
  const Images images = MakeImages();
  // A slow build tries half of the steps, each with one of the four kinds of failure.
  constexpr int kStride = kSlowBuild ? 8 : 1;
  int points = 0, first = 0;
  for (const int reason : {ENOSPC, EIO}) {
    for (const Trouble::Kind kind : {Trouble::kErrorOnce, Trouble::kErrorFromThereOn}) {
      for (int step = 2 * first++ % kStride; step < images.steps; step += kStride, ++points) {
        SimulatedDisk disk;
        disk.Put(kPath, images.before);
        disk.SetTrouble({kind, step, reason});
        const bool succeeded = Succeeds(disk);
        SimulatedDisk cut = disk.AfterPowerCut(static_cast<unsigned>(step));
        disk.SetTrouble({});
        const std::string state = StateAfterRecovery(disk, images);
        ASSERT_TRUE(state == "before" || state == "after") << state << ", step " << step;
        if (succeeded) {
          ASSERT_EQ(state, "after") << "step " << step;
        }
        const std::string later = StateAfterRecovery(cut, images);
        ASSERT_TRUE(later == "before" || later == "after") << later << ", step " << step;
        if (succeeded) {
          ASSERT_EQ(later, "after") << "step " << step;
        }
      }
    }
  }
  std::printf("%d failing steps\n", points);
}

// The local file system; kills the process at one step, in the middle of a write.
class KillingStorage final : public access::Storage {
 public:
  explicit KillingStorage(int step) : left_(step) {}

  std::unique_ptr<access::StorageFile> Open(const std::filesystem::path& path, Mode mode) override {
    auto file = disk_.Open(path, mode);
    return file == nullptr ? nullptr : std::make_unique<File>(*this, std::move(file));
  }
  std::unique_ptr<access::StorageFile> Create(const std::filesystem::path& path,
                                              const std::filesystem::path& like) override {
    Step();
    return std::make_unique<File>(*this, disk_.Create(path, like));
  }
  void Remove(const std::filesystem::path& path) override {
    Step();
    disk_.Remove(path);
  }
  bool Rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    Step();
    return disk_.Rename(from, to);
  }
  void SyncFolder(const std::filesystem::path& folder) override {
    Step();
    disk_.SyncFolder(folder);
  }

 private:
  class File final : public access::StorageFile {
   public:
    File(KillingStorage& storage, std::unique_ptr<StorageFile> file)
        : storage_(storage), file_(std::move(file)) {}
    std::uint64_t Size() override { return file_->Size(); }
    std::size_t Read(std::uint64_t offset, std::span<std::byte> into) override {
      return file_->Read(offset, into);
    }
    void Write(std::uint64_t offset, access::Bytes bytes) override {
      if (storage_.left_ == 0) file_->Write(offset, bytes.first(bytes.size() / 2));
      storage_.Step();
      file_->Write(offset, bytes);
    }
    void Truncate(std::uint64_t size) override {
      storage_.Step();
      file_->Truncate(size);
    }
    void Sync() override { storage_.Step(); }
    bool TryLock(access::LockKind kind, access::ByteRange bytes) override {
      return file_->TryLock(kind, bytes);
    }
    std::optional<access::ByteRange> OtherLock(access::LockKind kind,
                                               access::ByteRange bytes) override {
      return file_->OtherLock(kind, bytes);
    }
    bool IsAt(const std::filesystem::path& path) override { return file_->IsAt(path); }

   private:
    KillingStorage& storage_;
    std::unique_ptr<StorageFile> file_;
  };

  void Step() {
    if (left_-- == 0) ::raise(SIGKILL);
  }

  access::DiskStorage disk_;
  int left_;
};

TEST(AnInterruptedChange, IsAtomicWhenTheProcessIsKilled) {
  const Images images = MakeImages();
  const ScratchFolder scratch;
  const std::filesystem::path path = scratch / "property.mdb";
  constexpr int kStride = kSlowBuild ? 3 : 1;
  int killed = 0;
  for (int step = 0;; step += kStride) {
    std::filesystem::copy_file(SampleDatabase(), path,
                               std::filesystem::copy_options::overwrite_existing);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      KillingStorage storage(step);
      Change(storage, path);
      ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    access::DatabaseFile::Open(path);
    std::error_code none;
    const auto left = std::filesystem::file_size(access::JournalPath(path), none);
    EXPECT_TRUE(none || left == 0) << step;
    const std::string found = ReadWholeFile(path);
    const auto same = [&](const Contents& image) {
      return found == std::string_view(reinterpret_cast<const char*>(image.data()), image.size());
    };
    ASSERT_TRUE(same(images.before) || same(images.after)) << "step " << step;
    if (WIFEXITED(status)) {
      EXPECT_EQ(WEXITSTATUS(status), 0);
      EXPECT_TRUE(same(images.after));
      EXPECT_FALSE(std::filesystem::exists(access::LockFilePath(path))) << "left by the killed";
      break;
    }
    ++killed;
  }
  std::printf("killed %d times\n", killed);
  EXPECT_GE(killed * kStride, images.steps - 1);
}

}  // namespace
}  // namespace tenora::test
