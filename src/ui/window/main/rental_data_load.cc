#include "ui/window/main/rental_data_load.h"

#include <QApplication>
#include <filesystem>
#include <system_error>
#include <utility>

#include "data/data_age.h"
#include "data/database.h"
#include "platform/dialogs/guard.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

// Milliseconds; a file that has not changed for so long has been copied completely.
constexpr int kLookEvery = 500;

// The nearest folder above a file that is there.
std::filesystem::path NearestFolder(std::filesystem::path path) {
  std::error_code error;
  do {
    path = path.parent_path();
  } while (path.has_relative_path() && !std::filesystem::is_directory(path, error));
  return path;
}

}  // namespace

RentalDataLoad::RentalDataLoad(Session& session, WorkRunner run, QObject* parent)
    : QObject(parent), session_(session), run_(std::move(run)) {
  look_.setObjectName(QStringLiteral("tmrLook"));
  look_.setSingleShot(true);
  look_.setInterval(kLookEvery);
  connect(&look_, &QTimer::timeout, this, &RentalDataLoad::LookForMissing);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this] { look_.start(); });
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { look_.start(); });
}

std::optional<RentalDataLoad::Loaded> RentalDataLoad::Read() {
  Database& database = session_.database;
  const OpenedDatabase opened(database);
  // The error has been shown; each of the loads below would only fail again.
  if (!database.IsOpen()) return std::nullopt;
  // Before reading: what is written meanwhile counts as a change.
  Loaded loaded{{database.LastOpened(), access::ReadFileState(database.LastOpened())}, {}};
  ResumeNext step(session_.platform.dialogs, "frmMain - MDIForm_Load");
  session_.caches.Load(database, [&step](const Caches::LoadStep& load) { step(load); });
  step([&] { session_.options.LoadOptions(); });
  step([&] { loaded.fields = ReadCustomFieldCodes(database); });
  return loaded;
}

// It may be far away, or silent.
std::optional<RentalDataLoad::Loaded> RentalDataLoad::ReadFromServer() {
  std::optional<Loaded> loaded;
  run_(tr("Reading"), [&](WorkProgress& progress) {
    const query::StoppableWaiting waiting(session_.platform.workspace,
                                          [&progress] { return progress.Cancelled(); });
    progress.Report(0, 0, tr("Waiting for the database server"));
    loaded = Read();
  });
  return loaded;
}

void RentalDataLoad::Load() {
  loaded_.reset();
  session_.database.OnMissing([this] { return Browse(); });
  const std::optional<File> now = FileNow();
  const bool on_server = now && server::IsBranchLocation(now->path.string());
  const std::optional<Loaded> loaded = on_server ? ReadFromServer() : Read();
  session_.database.OnMissing({});
  WatchForMissing(!loaded);
  emit Missing(!loaded);
  if (!loaded) {
    told_missing_ = true;
    emit Told(
        tr("The rental database could not be read: tenants and owners are "
           "missing."));
    return;
  }
  if (loaded->fields) emit CustomFieldsRead(*loaded->fields);
  // A file that was written a moment ago could be written again without a trace, and a branch on a
  // server has no such state.
  const access::FileState& state = loaded->file.state;
  if (state != access::FileState() && access::IsSettled(state)) loaded_ = loaded->file;
  if (std::exchange(told_missing_, false)) {
    emit Told(tr("The rental database is there: tenants and owners were read."));
  }
}

void RentalDataLoad::LoadIfChanged() {
  const std::optional<File> now = FileNow();
  if (now && loaded_ == now) return;
  Load();
  emit Reloaded();
}

// None for settings that cannot be read; opening the database tells why.
std::optional<RentalDataLoad::File> RentalDataLoad::FileNow() {
  try {
    const std::filesystem::path path = session_.database.Location();
    return File{path, access::ReadFileState(path)};
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

bool RentalDataLoad::Browse() {
  Dialogs& dialogs = session_.platform.dialogs;
  const auto path = dialogs.ChooseFileToOpen("Database", "Access database|*.mdb;*.accdb");
  if (!path) return false;
  session_.settings.SaveSettingText("Settings", "Networkable", "1");
  session_.settings.SaveSettingText("Settings", "DatabaseLocation", path->string());
  if (path->parent_path() != session_.database.DataFolder()) {
    dialogs.Say("Templates and letters are still those of " +
                session_.database.DataFolder().string() +
                "; from the next start they are those beside this database.");
  }
  return true;
}

// Of a network folder the system may not tell, and a database server never; F5 looks then.
void RentalDataLoad::WatchForMissing(bool missing) {
  seen_.reset();
  QStringList folders;
  try {
    Database& database = session_.database;
    if (const auto away = database.ServerAway()) {
      folders << QString::fromStdString(NearestFolder(*away).string());
    }
    const std::filesystem::path location = database.Location();
    if (missing && !server::IsBranchLocation(location.string())) {
      folders << QString::fromStdString(NearestFolder(location).string());
    }
  } catch (const RuntimeError&) {
    // Settings that cannot be read name no folder.
  }
  const QStringList watched = watcher_.directories() + watcher_.files();
  if (!watched.isEmpty()) watcher_.removePaths(watched);
  folders.removeDuplicates();
  if (!folders.isEmpty()) watcher_.addPaths(folders);
}

void RentalDataLoad::LookForMissing() {
  const std::optional<File> now = FileNow();
  if (!now || now->state == access::FileState()) return WatchForMissing(true);
  // A box in front may show what would be loaded again.
  const bool busy = held_ || QApplication::activeModalWidget() != nullptr;
  if (busy || seen_ != now) {
    seen_ = now;
    look_.start();
    return;
  }
  if (loaded_ && loaded_->path == now->path) return;
  if (!session_.database.CanBeRead()) {
    // It may become one.
    watcher_.addPath(QString::fromStdString(now->path.string()));
    return;
  }
  told_missing_ = true;  // perhaps a server's, and not that it is missing
  Load();
  emit Reloaded();
}

}  // namespace tenora
