// Reads what is known of a template's recipients beside the windows: on a thread of its own, in the
// session that is kept for such work.
#pragma once

#include <QObject>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <thread>
#include <utility>

#include "letters/recipient_table.h"
#include "merge/fact.h"
#include "rental/session.h"

namespace tenora {

// What has been read.
struct RecipientValues {
  RecipientTable table;
  std::set<std::string> names;  // of the facts that the table has
  bool by_property = false;
  // Rows by their key and text.
  std::map<std::pair<std::string, std::string>, std::size_t> rows = {};

  std::optional<std::size_t> Find(const RecipientRow& row) const;
};

class RecipientReader : public QObject {
  Q_OBJECT

 public:
  // The session's platform outlives this.
  RecipientReader(Session& session, std::string template_kind, std::string template_name);
  // Waits until the thread has stopped, which it does soon.
  ~RecipientReader() override;

  // Reads the facts of these names and those of earlier calls; a reading that is under way for
  // something else is given up.
  void Read(const std::set<std::string>& names, bool by_property);
  // Nothing is read any more, nor told.
  void Stop();

 signals:
  // Before the first NowRead: the names of all facts, with the fields of the office's own.
  void NamesRead(std::shared_ptr<const FactNames> names);
  void NowRead(std::shared_ptr<const RecipientValues> values);
  // Why nothing can be read.
  void Failed(const QString& problem);

 private:
  struct Reading {
    std::shared_ptr<const FactNames> names;  // with the first reading
    std::shared_ptr<const RecipientValues> values;
    QString problem;
  };

  void Start();
  Reading ReadOnThread(const RecipientTable::Subject& subject, const std::set<std::string>& names,
                       bool first, const std::stop_token& stop);
  void Finish(const Reading& reading, bool stopped);

  Session& session_;
  const std::string kind_, template_name_;
  std::shared_ptr<DetachedSession> detached_;
  std::set<std::string> names_;
  bool by_property_ = false;
  bool names_read_ = false;
  bool stopped_ = false;
  bool wanted_ = false;  // something else than what is being read
  // Last: it ends before what it works on.
  std::jthread thread_;
};

}  // namespace tenora
