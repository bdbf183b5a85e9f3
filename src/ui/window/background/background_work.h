// Runs a long task on its own thread while the windows repaint, shows its progress if it takes more
// than a moment, and lets the user cancel it.
#pragma once

#include <QString>
#include <QWidget>
#include <functional>

namespace tenora {

// How a task reports its progress and asks whether it was cancelled, on its own thread.
class WorkProgress {
 public:
  virtual ~WorkProgress() = default;
  // `total` 0: the amount of work is unknown.
  virtual void Report(int done, int total, const QString& text) = 0;
  virtual bool Cancelled() const = 0;
};

using Work = std::function<void(WorkProgress& progress)>;

// The windows accept no input until the work is done, except for message boxes of the work itself.
// Raises what the work raises. The work must not touch a widget, nor a RichTextBox shown in one.
void RunInBackground(QWidget* parent, const QString& title, const Work& work);

// Runs long work for the parts of a window: RunInBackground, with whatever must not run at the same
// time suspended.
using WorkRunner = std::function<void(const QString& title, const Work& work)>;

}  // namespace tenora
