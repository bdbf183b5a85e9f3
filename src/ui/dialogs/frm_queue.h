// The queue of letters on a server: its runs and how they stand, what they have left to a person,
// and the workers. It follows the server, and does with a run or a letter in doubt what the user
// asks.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/dialogs/dialogs.h"
#include "platform/locale/locale.h"
#include "ui/dialogs/queue_watch.h"

namespace tenora {

class frmQueue : public QDialog {
  Q_OBJECT

 public:
  // `service` and `data_folder` as QueueWatch takes them. Everything passed in by reference must
  // outlive the dialog.
  frmQueue(Dialogs& dialogs, const Locale& locale, const std::string& service,
           const std::filesystem::path& data_folder, QWidget* parent = nullptr);

 signals:
  void OpenAsked(const std::filesystem::path& file);

 private:
  QWidget* MakeRuns();
  QWidget* MakeLetters();
  QWidget* MakeWorkers();
  void Show(const std::shared_ptr<const QueueView>& view);
  void ShowRuns();
  void ShowLetters();
  void ShowWorkers();
  void ShowState();
  void ShowPossible();
  // The run, or the run of the branch, that is chosen; null for none.
  const QueuedRun* ChosenRun() const;
  const QueueView::Letter* ChosenLetter() const;
  bool Confirmed(const std::string& question);
  void Pause();
  void Resume();
  void Cancel();
  void ClearDoubt(bool arrived);

  Dialogs& dialogs_;
  const Locale& locale_;
  std::shared_ptr<const QueueView> view_;  // null before the first look
  QString told_, problem_;                 // of the last action; why the server cannot be asked
  QTreeWidget* runs_;
  QTreeWidget* letters_;
  QTreeWidget* workers_;
  QTabWidget* tabs_;
  QLabel* state_;
  QPushButton* pause_ = nullptr;
  QPushButton* resume_ = nullptr;
  QPushButton* cancel_ = nullptr;
  QPushButton* open_ = nullptr;
  QPushButton* arrived_ = nullptr;
  QPushButton* send_again_ = nullptr;
  // Last: it ends before what it tells.
  QueueWatch watch_;
};

}  // namespace tenora
