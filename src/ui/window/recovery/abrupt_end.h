// Ends of the process that do not close its windows: SIGINT, SIGTERM and SIGHUP, a log-out, and
// Qt's exit where the display is gone.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <functional>

namespace tenora {

class AbruptEnd : public QObject {
 public:
  // From now on `before_end` is called on this thread before such an end. There is one such object
  // at a time. A second signal ends the process at once; one that the process was started to ignore
  // stays ignored.
  explicit AbruptEnd(std::function<void()> before_end);
  // Restores the previous handling of the signals.
  ~AbruptEnd() override;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void EndBySignal();

  std::function<void()> before_end_;
  int signals_[2] = {-1, -1};  // a pipe
  QSocketNotifier* arrived_ = nullptr;
};

}  // namespace tenora
