// Runs of letters that workers make: puts them into the queue on the server, and shows the queue.
#pragma once

#include <QObject>
#include <QWidget>
#include <utility>

#include "letters/generation_request.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/open_letters.h"

namespace tenora {

class QueuedRuns : public QObject {
  Q_OBJECT

 public:
  // Everything passed in must outlive this object. `run` puts letters into the queue; `window` is
  // the parent of the dialogs.
  QueuedRuns(Session& session, OpenLetters& letters, WorkRunner run, QWidget* window)
      : session_(session), letters_(letters), run_(std::move(run)), window_(window) {}

  // Whether the settings name a branch on a server.
  bool HasServer();
  // Puts a run of these letters into the queue, after it has asked what the template asks. Raises
  // what PrepareForQueue raises, and ServerError; nothing is in the queue then, nor after a cancel.
  void Put(GenerationRequest request);
  // Shows the queue, in the window that shows it already where there is one.
  void ShowQueue();

 signals:
  // What was put, for the status bar.
  void Told(const QString& message);

 private:
  // False when the user cancels.
  bool AskAnswers(GenerationRequest& request);

  Session& session_;
  OpenLetters& letters_;
  WorkRunner run_;
  QWidget* window_;
};

}  // namespace tenora
