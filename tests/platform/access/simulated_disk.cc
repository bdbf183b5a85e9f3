#include "platform/access/simulated_disk.h"

#include <algorithm>

namespace tenora::test {

using access::Bytes;
using access::LockKind;
using access::StorageError;

class SimulatedFile final : public access::StorageFile {
 public:
  SimulatedFile(SimulatedDisk& disk, std::filesystem::path path,
                std::shared_ptr<SimulatedDisk::Node> node)
      : disk_(disk), path_(std::move(path)), node_(std::move(node)) {}

  std::uint64_t Size() override { return node_->now.size(); }

  std::size_t Read(std::uint64_t offset, std::span<std::byte> into) override {
    ++disk_.reads_[offset];
    const std::size_t start = std::min<std::size_t>(offset, node_->now.size());
    const std::size_t count = std::min(into.size(), node_->now.size() - start);
    std::copy_n(node_->now.begin() + static_cast<std::ptrdiff_t>(start), count, into.begin());
    return count;
  }

  void Write(std::uint64_t offset, Bytes bytes) override {
    const auto write = [&](Bytes part) {
      disk_.Do(*node_, {offset, {part.begin(), part.end()}, false});
    };
    if (disk_.Step([&] { write(bytes.first(bytes.size() / 2)); })) write(bytes);
  }

  void Truncate(std::uint64_t size) override {
    if (disk_.Step([] {})) disk_.Do(*node_, {size, {}, true});
  }

  void Sync() override {
    if (!disk_.Step([] {})) return;
    node_->synced = node_->now;
    node_->unsynced.clear();
  }

  bool TryLock(LockKind, access::ByteRange) override { return true; }
  std::optional<access::ByteRange> OtherLock(LockKind, access::ByteRange) override {
    return std::nullopt;
  }

  bool IsAt(const std::filesystem::path& path) override {
    const auto found = disk_.now_.find(path);
    return found != disk_.now_.end() && found->second == node_;
  }

 private:
  SimulatedDisk& disk_;
  std::filesystem::path path_;
  std::shared_ptr<SimulatedDisk::Node> node_;
};

void SimulatedDisk::Put(const std::filesystem::path& path, const Contents& contents) {
  now_[path] = synced_[path] = std::make_shared<Node>(Node{contents, contents, {}});
}

SimulatedDisk::Contents SimulatedDisk::Get(const std::filesystem::path& path) const {
  const auto found = now_.find(path);
  return found == now_.end() ? Contents() : found->second->now;
}

void SimulatedDisk::SetTrouble(Trouble trouble) {
  trouble_ = trouble;
  step_ = 0;
}

int SimulatedDisk::ReadsAt(std::uint64_t offset) const {
  const auto found = reads_.find(offset);
  return found == reads_.end() ? 0 : found->second;
}

void SimulatedDisk::Apply(const Change& change, Contents& contents) {
  if (change.truncates) return contents.resize(change.offset);
  const std::size_t end = change.offset + change.bytes.size();
  if (contents.size() < end) contents.resize(end);
  std::copy(change.bytes.begin(), change.bytes.end(),
            contents.begin() + static_cast<std::ptrdiff_t>(change.offset));
}

void SimulatedDisk::Do(Node& node, Change change) {
  Apply(change, node.now);
  node.unsynced.push_back(std::move(change));
}

bool SimulatedDisk::Step(const std::function<void()>& half) {
  if (dead_) return false;
  const int step = step_++;
  switch (trouble_.kind) {
    case Trouble::kNone:
      return true;
    case Trouble::kPowerCut:
      if (step != trouble_.step) return true;
      half();
      dead_ = true;
      throw PowerCut();
    case Trouble::kErrorOnce:
      if (step != trouble_.step) return true;
      break;
    case Trouble::kErrorFromThereOn:
      if (step < trouble_.step) return true;
      break;
  }
  half();
  throw StorageError(trouble_.reason, "simulated", "use");
}

SimulatedDisk SimulatedDisk::AfterPowerCut(unsigned seed) const {
  std::mt19937 random(seed);
  SimulatedDisk after;
  std::map<std::shared_ptr<Node>, std::shared_ptr<Node>> kept;
  const auto keep = [&](const std::filesystem::path& path, const std::shared_ptr<Node>& node) {
    std::shared_ptr<Node>& copy = kept[node];
    if (copy == nullptr) {
      Contents contents = node->synced;
      // Seeds 0 and 1 are the simple cases: nothing survives, everything does.
      for (const Change& change : node->unsynced) {
        switch (seed < 2 ? seed : random() % 4) {
          case 0:
            break;
          case 1:
            Apply(change, contents);
            break;
          default: {
            if (change.truncates) break;
            Change torn = change;
            const std::size_t cut = random() % (change.bytes.size() + 1);
            if (random() % 2 == 0) {
              torn.bytes.resize(cut);
            } else {
              torn.bytes.erase(torn.bytes.begin(),
                               torn.bytes.begin() + static_cast<std::ptrdiff_t>(cut));
              torn.offset += cut;
            }
            Apply(torn, contents);
          }
        }
      }
      copy = std::make_shared<Node>(Node{contents, contents, {}});
    }
    after.now_[path] = after.synced_[path] = copy;
  };
  Folder all = now_;
  all.insert(synced_.begin(), synced_.end());
  for (const auto& [path, any] : all) {
    const bool latest = seed < 2 ? seed == 1 : random() % 2 == 0;
    const Folder& folder = latest ? now_ : synced_;
    const auto found = folder.find(path);
    if (found != folder.end()) keep(path, found->second);
  }
  return after;
}

std::unique_ptr<access::StorageFile> SimulatedDisk::Open(const std::filesystem::path& path, Mode) {
  const auto found = now_.find(path);
  if (found == now_.end()) return nullptr;
  return std::make_unique<SimulatedFile>(*this, path, found->second);
}

std::unique_ptr<access::StorageFile> SimulatedDisk::Create(const std::filesystem::path& path,
                                                           const std::filesystem::path&) {
  if (!now_.contains(path)) {
    Step([] {});
    now_[path] = std::make_shared<Node>();
  }
  return Open(path, Mode::kReadWrite);
}

void SimulatedDisk::Remove(const std::filesystem::path& path) {
  try {
    if (Step([] {})) now_.erase(path);
  } catch (const PowerCut&) {
    // Called by a destructor, which must not throw; nothing follows that would notice.
    dead_ = true;
  }
}

bool SimulatedDisk::Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (now_.contains(to)) return false;
  if (Step([] {})) {
    now_[to] = now_.at(from);
    now_.erase(from);
  }
  return true;
}

void SimulatedDisk::SyncFolder(const std::filesystem::path&) {
  if (Step([] {})) synced_ = now_;
}

}  // namespace tenora::test
