#include "rental/detached_session.h"

#include <utility>

#include "platform/dialogs/dialogs.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"

namespace tenora {
namespace {

// Keeps what it is told, and is never answered.
class SilentDialogs : public Dialogs {
 public:
  Answer Show(const MessageBox& box) override {
    messages.push_back(box.text);
    return box.default_answer;
  }
  std::optional<std::string> AskText(const std::string&, const std::string&,
                                     const std::string&) override {
    return std::nullopt;
  }
  std::optional<std::size_t> Choose(const std::string&, const std::vector<std::string>&,
                                    std::size_t) override {
    return std::nullopt;
  }
  std::optional<std::filesystem::path> ChooseFileToOpen(const std::string&,
                                                        const std::string&) override {
    return std::nullopt;
  }
  std::optional<std::filesystem::path> ChooseFileToSave(const std::string&, const std::string&,
                                                        const std::filesystem::path&) override {
    return std::nullopt;
  }

  std::vector<std::string> messages;
};

}  // namespace

struct DetachedSession::Parts {
  Parts(const Platform& platform, const std::filesystem::path& location)
      : file(location),
        workspace(query::Workspace::Create([&clock = platform.clock] { return clock.Now(); })),
        session(Platform{platform.clock, dialogs, platform.locale, platform.registry, *workspace,
                         platform.program_folder, platform.state_folder},
                DatabaseUse::kLook),
        one_file(session.database, location) {}

  const std::filesystem::path file;
  SilentDialogs dialogs;
  const std::unique_ptr<query::Workspace> workspace;
  Session session;
  const Database::OneFile one_file;
};

DetachedSession::DetachedSession(Session& session)
    : parts_(std::make_unique<Parts>(session.platform, session.database.Location())) {}
DetachedSession::~DetachedSession() = default;

Session& DetachedSession::session() { return parts_->session; }

const std::filesystem::path& DetachedSession::file() const { return parts_->file; }

std::vector<std::string> DetachedSession::TakeMessages() {
  return std::exchange(parts_->dialogs.messages, {});
}

}  // namespace tenora
