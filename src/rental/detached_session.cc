#include "rental/detached_session.h"

#include <optional>

#include "platform/access/file_state.h"
#include "platform/dialogs/silent_dialogs.h"
#include "platform/locale/locale.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"

namespace tenora {

struct DetachedSession::Parts {
  // Options are kept in it once they were asked for: for another state of the file it is made anew.
  struct Kept {
    Kept(const Platform& platform, const std::filesystem::path& location)
        : session(platform, DatabaseUse::kLook), one_file(session.database, location) {}

    Session session;
    const Database::OneFile one_file;
  };

  Parts(const Platform& given, const std::filesystem::path& location)
      : file(location),
        workspace(query::Workspace::Create(
            [&clock = given.clock] { return clock.Now(); }, query::kTimeLimit,
            [&locale = given.locale](Date date) { return locale.ShortDate(date); })),
        platform{given.clock,          dialogs,           given.locale, given.registry, *workspace,
                 given.program_folder, given.state_folder} {
    kept.emplace(platform, file);
  }

  std::mutex taken;
  const std::filesystem::path file;
  SilentDialogs dialogs;
  const std::unique_ptr<query::Workspace> workspace;
  const Platform platform;
  std::optional<Kept> kept;
  std::optional<access::FileState> loaded;  // whose caches are there
};

DetachedSession::DetachedSession(Session& session)
    : parts_(std::make_unique<Parts>(session.platform, session.database.Location())) {}
DetachedSession::~DetachedSession() = default;

std::unique_lock<std::mutex> DetachedSession::Take() { return std::unique_lock(parts_->taken); }

std::unique_lock<std::mutex> DetachedSession::TryTake() {
  return std::unique_lock(parts_->taken, std::try_to_lock);
}

Session& DetachedSession::session() { return parts_->kept->session; }

const std::filesystem::path& DetachedSession::file() const { return parts_->file; }

Platform DetachedSession::PlatformWith(Dialogs& dialogs) const {
  const Platform& own = parts_->platform;
  return {own.clock,          dialogs,         own.locale, own.registry, own.workspace,
          own.program_folder, own.state_folder};
}

std::vector<std::string> DetachedSession::TakeMessages() { return parts_->dialogs.TakeMessages(); }

bool DetachedSession::IsFresh() const {
  return parts_->loaded && parts_->loaded == access::ReadFileState(parts_->file);
}

std::string DetachedSession::Refresh() {
  if (IsFresh()) return {};
  // Before reading: what is written meanwhile counts as a change.
  const access::FileState now = access::ReadFileState(parts_->file);
  parts_->loaded.reset();
  TakeMessages();
  try {
    parts_->kept.emplace(parts_->platform, parts_->file);
    if (!session().ReloadRentalData()) return parts_->dialogs.TakeFirstInOneLine();
  } catch (...) {
    return ErrorText(CurrentError());
  }
  // A file that was written a moment ago could be written again without a trace, and a branch on a
  // server has no such state: the engine knows what of it is there.
  if (now != access::FileState() && access::IsSettled(now)) parts_->loaded = now;
  return {};
}

}  // namespace tenora
