// A disk in memory that loses power, fills up or fails at a chosen step. After a power cut each
// write that was not synced has survived completely, in part or not at all, in any order.
#pragma once

#include <functional>
#include <map>
#include <random>
#include <vector>

#include "platform/access/storage/file_storage.h"

namespace tenora::test {

// The power is gone. Not derived from any exception that the program handles.
struct PowerCut {};

class SimulatedDisk final : public access::Storage {
 public:
  using Contents = std::vector<std::byte>;
  // What happens at the step of this number, counted from 0. Steps are writes (half of which is
  // done first), syncs, changes of length, creating and removing files, and syncing folders.
  struct Trouble {
    enum Kind { kNone, kPowerCut, kErrorOnce, kErrorFromThereOn } kind = kNone;
    int step = 0;
    int reason = 0;  // errno
  };

  void Put(const std::filesystem::path& path, const Contents& contents);
  // The content that programs see; empty for a missing file.
  Contents Get(const std::filesystem::path& path) const;
  void SetTrouble(Trouble trouble);
  int steps() const { return step_; }
  // How often programs have read from that offset of any file.
  int ReadsAt(std::uint64_t offset) const;
  // The disk after the power is back; `seed` chooses what has survived.
  SimulatedDisk AfterPowerCut(unsigned seed) const;

  std::unique_ptr<access::StorageFile> Open(const std::filesystem::path& path, Mode mode) override;
  std::unique_ptr<access::StorageFile> Create(const std::filesystem::path& path,
                                              const std::filesystem::path& like) override;
  void Remove(const std::filesystem::path& path) override;
  bool Rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  void SyncFolder(const std::filesystem::path& folder) override;

 private:
  friend class SimulatedFile;
  // A write or a new length.
  struct Change {
    std::uint64_t offset = 0;
    Contents bytes;
    bool truncates = false;
  };
  struct Node {
    Contents now, synced;
    std::vector<Change> unsynced;
  };
  using Folder = std::map<std::filesystem::path, std::shared_ptr<Node>>;

  static void Apply(const Change& change, Contents& contents);
  void Do(Node& node, Change change);
  // Counts a step. Runs `half` of it if this is where the trouble is, then raises. False when the
  // power has been cut before.
  bool Step(const std::function<void()>& half);

  Folder now_, synced_;
  Trouble trouble_;
  int step_ = 0;
  std::map<std::uint64_t, int> reads_;  // by offset
  bool dead_ = false;
};

}  // namespace tenora::test
