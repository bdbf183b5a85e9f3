// A disk in memory that loses power, fills up or fails at any chosen step, and then has kept of
// what was not synced whatever it liked: each write wholly, in part or not at all, in any order.
#pragma once

#include <functional>
#include <map>
#include <random>
#include <vector>

#include "platform/access/storage/file_storage.h"

namespace tenora::test {

// The power has gone. No error of the system, so that nothing in the program handles it.
struct PowerCut {};

class SimulatedDisk final : public access::Storage {
 public:
  using Contents = std::vector<std::byte>;
  // What happens at the step of this number, counted from 0: a write (which is done by half first),
  // a sync, a change of length, a file made or removed, a folder synced.
  struct Trouble {
    enum Kind { kNone, kPowerCut, kErrorOnce, kErrorFromThereOn } kind = kNone;
    int step = 0;
    int reason = 0;  // errno
  };

  void Put(const std::filesystem::path& path, const Contents& contents);
  // As a program sees it now; nothing for a file that is not there.
  Contents Get(const std::filesystem::path& path) const;
  void SetTrouble(Trouble trouble);
  int steps() const { return step_; }
  // The disk after the power came back.
  SimulatedDisk AfterPowerCut(unsigned seed) const;

  std::unique_ptr<access::StorageFile> Open(const std::filesystem::path& path, Mode mode) override;
  std::unique_ptr<access::StorageFile> Create(const std::filesystem::path& path,
                                              const std::filesystem::path& like) override;
  void Remove(const std::filesystem::path& path) override;
  void SyncFolder(const std::filesystem::path& folder) override;

 private:
  friend class SimulatedFile;
  // A write or, without bytes, a new length.
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
  // Runs `half` of a step that meets trouble. False when the power has gone before.
  bool Step(const std::function<void()>& half);

  Folder now_, synced_;
  Trouble trouble_;
  int step_ = 0;
  bool dead_ = false;
};

}  // namespace tenora::test
