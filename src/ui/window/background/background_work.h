// Long work beside the windows: it runs on a thread of its own while the windows repaint, shows its
// progress once it has taken a moment, and can be cancelled.
#pragma once

#include <QString>
#include <QWidget>
#include <functional>

namespace tenora {

// What the work tells and asks, on its own thread.
class WorkProgress {
 public:
  virtual ~WorkProgress() = default;
  // `total` 0: nobody knows how much there is to do.
  virtual void Report(int done, int total, const QString& text) = 0;
  virtual bool Cancelled() const = 0;
};

using Work = std::function<void(WorkProgress& progress)>;

// The windows take no input until the work is done; boxes that the work itself shows do. Raises
// what the work raises. Work never touches a widget, nor a box with an editor on it.
void RunInBackground(QWidget* parent, const QString& title, const Work& work);

// How the parts of a window have their long work run: by RunInBackground, and whatever it would
// disturb waits meanwhile.
using WorkRunner = std::function<void(const QString& title, const Work& work)>;

}  // namespace tenora
