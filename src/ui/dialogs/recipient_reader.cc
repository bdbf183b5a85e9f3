#include "ui/dialogs/recipient_reader.h"

#include <vector>

#include "platform/query/engine.h"
#include "platform/runtime/error.h"
#include "rental/detached_session.h"

namespace tenora {

std::optional<std::size_t> RecipientValues::Find(const RecipientRow& row) const {
  const auto found = rows.find({row.key, row.text});
  return found == rows.end() ? std::nullopt : std::optional(found->second);
}

RecipientReader::RecipientReader(Session& session, std::string template_kind,
                                 std::string template_name)
    : session_(session),
      kind_(std::move(template_kind)),
      template_name_(std::move(template_name)) {}

RecipientReader::~RecipientReader() { Stop(); }

void RecipientReader::Stop() {
  stopped_ = true;
  thread_.request_stop();
  if (thread_.joinable()) thread_.join();
}

void RecipientReader::Read(const std::set<std::string>& names, bool by_property) {
  const std::size_t known = names_.size();
  names_.insert(names.begin(), names.end());
  const bool same = names_.size() == known && by_property == by_property_;
  by_property_ = by_property;
  if (stopped_) return;
  if (!thread_.joinable()) return Start();
  if (same) return;
  wanted_ = true;
  thread_.request_stop();
}

void RecipientReader::Start() {
  wanted_ = false;
  try {
    if (!detached_) detached_ = session_.Beside();
  } catch (const RuntimeError& error) {
    emit Failed(QString::fromStdString(ErrorText(error)));
    return;
  }
  // The data folder is asked of the first session: on its own thread.
  const RecipientTable::Subject subject{.template_kind = kind_,
                                        .by_property = by_property_,
                                        .template_name = template_name_,
                                        .data_folder = session_.database.DataFolder()};
  thread_ = std::jthread(
      [this, subject, names = names_, first = !names_read_](const std::stop_token& stop) {
        const Reading reading = ReadOnThread(subject, names, first, stop);
        QMetaObject::invokeMethod(
            this, [this, reading, stop] { Finish(reading, stop.stop_requested()); },
            Qt::QueuedConnection);
      });
}

RecipientReader::Reading RecipientReader::ReadOnThread(const RecipientTable::Subject& subject,
                                                       const std::set<std::string>& names,
                                                       bool first, const std::stop_token& stop) {
  Reading reading;
  try {
    const auto taken = detached_->Take();
    const query::StoppableWaiting waiting(detached_->session().platform.workspace,
                                          [&stop] { return stop.stop_requested(); });
    const std::vector<std::string> list(names.begin(), names.end());
    reading.problem = QString::fromStdString(detached_->Refresh());
    if (!reading.problem.isEmpty()) return reading;
    Session& session = detached_->session();
    const OpenedDatabase opened(session.database);
    if (first) {
      reading.names = std::make_shared<FactNames>(RecipientFactNames(session, kind_));
    }
    auto values = std::make_shared<RecipientValues>(
        RecipientValues{RecipientTable(session, subject, list, stop), names, subject.by_property});
    for (std::size_t row = 0; row < values->table.size(); ++row) {
      values->rows.emplace(std::pair(values->table.Row(row).key, values->table.Row(row).text), row);
    }
    reading.values = std::move(values);
  } catch (const RuntimeError& error) {
    reading.problem = QString::fromStdString(ErrorText(error));
  }
  return reading;
}

void RecipientReader::Finish(const Reading& reading, bool stopped) {
  if (stopped_) return;
  thread_.join();
  thread_ = {};
  if (reading.names) {
    names_read_ = true;
    emit NamesRead(reading.names);
  }
  if (wanted_) {
    Start();
  } else if (!stopped && reading.values) {
    emit NowRead(reading.values);
  } else if (!stopped) {
    emit Failed(reading.problem);
  }
}

}  // namespace tenora
