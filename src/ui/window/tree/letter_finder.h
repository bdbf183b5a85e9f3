// Looks for saved letters by name in the background, in folders that the tree has not listed: with
// thousands of recipients on a server that takes a while, and listing them all too much memory.
#pragma once

#include <QObject>
#include <QStringList>
#include <QThreadPool>
#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ui/window/tree/tree_model.h"

namespace tenora {

class LetterFinder : public QObject {
  Q_OBJECT

 public:
  using Places = std::vector<TreeModel::Unlisted>;

  // A search ends after this many recipients.
  static constexpr int kMostFound = 200;

  explicit LetterFinder(QObject* parent = nullptr);
  ~LetterFinder() override;

  // Ends the search that is running. Each word (SearchWords) must be in a letter's name, in that of
  // its recipient or in the property's address.
  void Start(const std::filesystem::path& data_folder, Places places,
             std::vector<std::string> words);
  void Cancel();
  bool Running() const { return running_; }
  // Files have come or gone: what earlier searches have read no longer counts.
  void Forget();

 signals:
  // Keys of recipients who have such letters; in several parts, from the first ones on.
  void Found(const QStringList& keys);
  // Also when there are more than kMostFound, not when it was cancelled.
  void Ended(bool all);

 private:
  struct Names;
  struct Search;

  void Look(const Search& search);
  void Tell(const Search& search, const QStringList& keys);

  std::shared_ptr<std::atomic<bool>> stop_;  // of the search that runs
  std::shared_ptr<Names> names_;
  bool running_ = false;
  QThreadPool thread_;  // one, so that a search begins when the one before it has ended
};

}  // namespace tenora
