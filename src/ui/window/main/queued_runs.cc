#include "ui/window/main/queued_runs.h"

#include <QLocale>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "letters/letter_queue.h"
#include "platform/dialogs/guard.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/server/branch_location.h"
#include "ui/dialogs/frm_answers.h"
#include "ui/dialogs/frm_queue.h"

namespace tenora {
namespace {

constexpr std::chrono::seconds kStatementLimit{60};

// Gives the run's number; 0 after a cancel.
int PutRun(Session& session, const server::BranchLocation& place, GenerationRequest request,
           WorkProgress& progress) {
  const auto cancelled = [&progress] { return progress.Cancelled(); };
  const int letters = static_cast<int>(request.recipients.size());
  const auto report = [&](int done, const QString& text) { progress.Report(done, letters, text); };
  report(0, QueuedRuns::tr("Reading the rental data"));
  const query::StoppableWaiting waiting(session.platform.workspace, cancelled);
  std::vector<Recipient> recipients = request.recipients;
  const QueueRequest ready = PrepareForQueue(session, std::move(request),
                                             [&](const Caches&) { return std::move(recipients); });
  report(0, QueuedRuns::tr("Waiting for the database server"));
  const auto connection = server::Connection::Open(place.service, kStatementLimit,
                                                   server::Waiting{.stop_asked = cancelled});
  LetterQueue(*connection).Require(QueueUse::kRuns);
  NewQueuedRun run(*connection, ready.request, ready.template_source, session.platform.clock.Now());
  run.Add(place.branch, ready.request.recipients);
  if (cancelled()) return 0;
  report(letters, QueuedRuns::tr("%1 letters").arg(letters));
  run.Open();
  return run.id();
}

}  // namespace

bool QueuedRuns::HasServer() {
  try {
    return server::IsBranchLocation(session_.database.Location().string());
  } catch (const RuntimeError&) {
    // Settings that cannot be read name no server.
    return false;
  }
}

bool QueuedRuns::AskAnswers(GenerationRequest& request) {
  const std::vector<std::string> questions = QuestionsBeforeQueue(session_, request);
  if (questions.empty()) return true;
  frmAnswers ask(questions, request.answers, frmAnswers::Purpose::kQueue, window_);
  if (ask.exec() != QDialog::Accepted) return false;
  request.answers = ask.Answers();
  return true;
}

void QueuedRuns::Put(GenerationRequest request) {
  if (!AskAnswers(request)) return;
  const server::BranchLocation place =
      server::ReadBranchLocation(session_.database.Location().string());
  const qsizetype letters = static_cast<qsizetype>(request.recipients.size());
  int id = 0;
  run_(tr("Into the Queue"),
       [&](WorkProgress& progress) { id = PutRun(session_, place, std::move(request), progress); });
  if (id == 0) return;
  const QString count = QLocale().toString(static_cast<qlonglong>(letters));
  const QString told =
      (letters == 1
           ? tr("Run %1: %2 letter is in the queue. Tools > Queue shows how it stands.")
           : tr("Run %1: %2 letters are in the queue. Tools > Queue shows how they stand."))
          .arg(QString::number(id), count);
  emit Told(told);
  session_.platform.dialogs.Say(told.toStdString());
}

void QueuedRuns::ShowQueue() {
  if (auto* shown = window_->findChild<frmQueue*>()) {
    shown->raise();
    return shown->activateWindow();
  }
  const std::string service =
      server::ReadBranchLocation(session_.database.Location().string()).service;
  auto* queue = new frmQueue(session_.platform.dialogs, session_.platform.locale, service,
                             session_.database.DataFolder(), window_);
  queue->setAttribute(Qt::WA_DeleteOnClose);
  QObject::connect(queue, &frmQueue::OpenAsked, queue, [this](const std::filesystem::path& file) {
    Guarded(session_.platform.dialogs, "frmQueue - cmdOpen_Click",
            [&] { letters_.OpenFile(file); });
  });
  queue->show();
}

}  // namespace tenora
