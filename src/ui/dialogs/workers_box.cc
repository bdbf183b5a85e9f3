#include "ui/dialogs/workers_box.h"

#include <chrono>
#include <filesystem>
#include <stop_token>

#include "letters/letter_queue.h"
#include "platform/runtime/error.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

constexpr std::chrono::seconds kStatementLimit{10};

QString Description(const RuntimeError& error) {
  return QString::fromStdString(std::string(error.description()));
}

}  // namespace

WorkersBox::WorkersBox(Session& session, const std::string& template_kind,
                       const std::string& template_name)
    : QCheckBox(tr("In the &background, by the workers")) {
  const std::string opened = session.database.LastOpened().string();
  on_server_ = server::IsBranchLocation(opened);
  setVisible(on_server_);
  if (!on_server_) return;
  try {
    GenerationRequest request;
    request.template_kind = template_kind;
    request.template_name = template_name;
    QuestionsBeforeQueue(session, request);
  } catch (const RuntimeError& error) {
    of_template_ = Description(error);
  }
  ShowObstacle();
  LookForQueue(server::ReadBranchLocation(opened).service);
}

void WorkersBox::SetObstacle(const QString& obstacle) {
  of_choices_ = obstacle;
  ShowObstacle();
}

bool WorkersBox::Chosen() const { return on_server_ && isEnabled() && isChecked(); }

void WorkersBox::LookForQueue(const std::string& service) {
  thread_ = std::jthread([this, service](const std::stop_token& stop) {
    try {
      const auto connection = server::Connection::Open(
          service, kStatementLimit, {.stop_asked = [&stop] { return stop.stop_requested(); }});
      LetterQueue(*connection).Require(QueueUse::kRuns);
    } catch (const RuntimeError& error) {
      QMetaObject::invokeMethod(
          this,
          [this, problem = Description(error)] {
            of_server_ = problem;
            ShowObstacle();
          },
          Qt::QueuedConnection);
    }
  });
}

void WorkersBox::ShowObstacle() {
  QString obstacle;
  for (const QString& each : {of_server_, of_template_, of_choices_}) {
    if (obstacle.isEmpty()) obstacle = each;
  }
  setEnabled(obstacle.isEmpty());
  setToolTip(obstacle.isEmpty()
                 ? tr("The letters are put into the queue on the server: the workers make them, "
                      "and Tools > Queue shows how they stand")
                 : tr("Not by the workers: %1").arg(obstacle));
}

}  // namespace tenora
