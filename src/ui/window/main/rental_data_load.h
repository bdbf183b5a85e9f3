// Loads the caches of tenants, owners, properties and account codes, the options and the custom
// fields from the rental database: at start-up, after the settings or the file have changed, and
// when a database that was missing is there.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <optional>

#include "letters/custom_field_codes.h"
#include "platform/access/file_state.h"
#include "rental/session.h"
#include "ui/window/background/background_work.h"

namespace tenora {

class RentalDataLoad : public QObject {
  Q_OBJECT

 public:
  // `run` reads a branch on a server.
  RentalDataLoad(Session& session, WorkRunner run, QObject* parent = nullptr);

  // A step that fails shows its error, and the rest runs. Where the database is missing the user
  // can browse for it; where it is on a server that does not answer, give up waiting.
  void Load();
  // The same if nothing could be loaded before, or the file is another one or was written since.
  void LoadIfChanged();
  // While held, a database that turns up is not loaded: work on another thread may be using the
  // caches.
  void Hold(bool hold) { held_ = hold; }

 signals:
  // For the status bar.
  void Told(const QString& message);
  // By each load: whether there was no database to read. The caches still have what was read
  // before.
  void Missing(bool missing);
  void CustomFieldsRead(const tenora::CustomFieldCodes& codes);
  // By LoadIfChanged, or since a database has turned up.
  void Reloaded();

 private:
  // A database's file, and how it was.
  struct File {
    std::filesystem::path path;
    access::FileState state;

    bool operator==(const File&) const = default;
  };

  // What a load has read, beside the caches and options.
  struct Loaded {
    File file;
    std::optional<CustomFieldCodes> fields;
  };

  // None where the database cannot be opened. Also called beside the windows.
  std::optional<Loaded> Read();
  std::optional<Loaded> ReadFromServer();
  std::optional<File> FileNow();
  bool Browse();
  void WatchForMissing(bool missing);
  void LookForMissing();

  Session& session_;
  const WorkRunner run_;
  std::optional<File> loaded_;
  QFileSystemWatcher watcher_;
  QTimer look_{this};
  std::optional<File> seen_;  // when last looked for
  bool held_ = false;
  bool told_missing_ = false;  // what the status bar may still show
};

}  // namespace tenora
