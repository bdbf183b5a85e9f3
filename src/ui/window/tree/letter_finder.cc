#include "ui/window/tree/letter_finder.h"

#include <QMetaObject>
#include <chrono>
#include <unordered_map>
#include <utility>

#include "letters/template_library.h"
#include "platform/runtime/search_text.h"

namespace tenora {
namespace {

constexpr std::size_t kMostKept = 300'000;  // names of letters
constexpr std::chrono::milliseconds kTellEvery{150};

}  // namespace

// The folded names of the letters of folders that have been read: the next key finds them here.
struct LetterFinder::Names {
  std::unordered_map<std::string, std::vector<std::string>> of_folder;
  std::size_t count = 0;
};

struct LetterFinder::Search {
  std::filesystem::path data_folder;
  Places places;
  std::vector<std::string> words;
  std::shared_ptr<Names> names;
  std::shared_ptr<std::atomic<bool>> stop;

  bool Holds(const TreeModel::Unlisted& place) const {
    const std::string person = FoldedForSearch(place.name + '\n' + place.address) + '\n';
    for (const std::string& folder : place.folders) {
      auto known = names->of_folder.find(folder);
      if (known == names->of_folder.end()) known = Read(folder);
      for (const std::string& name : known->second) {
        if (HoldsWords(person + name, words)) return true;
      }
    }
    return false;
  }

  std::unordered_map<std::string, std::vector<std::string>>::iterator Read(
      const std::string& folder) const {
    std::vector<std::string> folded;
    for (const std::string& name : TemplateLibrary(data_folder).Names(folder)) {
      folded.push_back(FoldedForSearch(name));
    }
    if (names->count + folded.size() > kMostKept) {
      names->of_folder.clear();
      names->count = 0;
    }
    names->count += folded.size();
    return names->of_folder.emplace(folder, std::move(folded)).first;
  }
};

LetterFinder::LetterFinder(QObject* parent) : QObject(parent), names_(std::make_shared<Names>()) {
  thread_.setMaxThreadCount(1);
}

LetterFinder::~LetterFinder() {
  Cancel();
  thread_.waitForDone();
}

void LetterFinder::Cancel() {
  if (stop_) *stop_ = true;
  stop_.reset();
  running_ = false;
}

void LetterFinder::Forget() { names_ = std::make_shared<Names>(); }

void LetterFinder::Start(const std::filesystem::path& data_folder, Places places,
                         std::vector<std::string> words) {
  Cancel();
  stop_ = std::make_shared<std::atomic<bool>>(false);
  running_ = true;
  thread_.start([this, search = Search{data_folder, std::move(places), std::move(words), names_,
                                       stop_}] { Look(search); });
}

void LetterFinder::Look(const Search& search) {
  QStringList keys;
  int found = 0;
  bool all = true;
  auto told = std::chrono::steady_clock::now();
  for (const TreeModel::Unlisted& place : search.places) {
    if (*search.stop) return;
    if (!search.Holds(place)) continue;
    keys.append(place.key);
    all = ++found < kMostFound;
    if (!all) break;
    if (std::chrono::steady_clock::now() - told < kTellEvery) continue;
    Tell(search, std::exchange(keys, {}));
    told = std::chrono::steady_clock::now();
  }
  Tell(search, keys);
  QMetaObject::invokeMethod(
      this,
      [this, stop = search.stop, all] {
        if (*stop) return;
        running_ = false;
        emit Ended(all);
      },
      Qt::QueuedConnection);
}

void LetterFinder::Tell(const Search& search, const QStringList& keys) {
  if (keys.isEmpty()) return;
  QMetaObject::invokeMethod(
      this,
      [this, stop = search.stop, keys] {
        if (!*stop) emit Found(keys);
      },
      Qt::QueuedConnection);
}

}  // namespace tenora
