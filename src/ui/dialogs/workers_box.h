// "In the background, by the workers": whether letters are to be put into the queue on the server.
#pragma once

#include <QCheckBox>
#include <string>
#include <thread>

#include "rental/session.h"

namespace tenora {

class WorkersBox : public QCheckBox {
  Q_OBJECT

 public:
  // Looks, beside the windows, whether the server of the session's branch has a queue, and whether
  // the login may put runs there. The box does not show where the rental data are a file.
  WorkersBox(Session& session, const std::string& template_kind, const std::string& template_name);

  // What workers cannot do of the user's other choices, for which the box is disabled; empty:
  // nothing.
  void SetObstacle(const QString& obstacle);
  bool Chosen() const;

 private:
  void LookForQueue(const std::string& service);
  void ShowObstacle();

  bool on_server_ = false;
  QString of_template_, of_choices_, of_server_;  // obstacles
  // Last: it ends before what it tells.
  std::jthread thread_;
};

}  // namespace tenora
