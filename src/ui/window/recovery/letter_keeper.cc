#include "ui/window/recovery/letter_keeper.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "ui/window/recovery/frm_unsaved_letters.h"

namespace tenora {
LetterKeeper::LetterKeeper(Session& session, LetterDesk& desk, OpenLetters& letters,
                           const Pauses& pauses)
    : session_(session),
      letters_(letters),
      desk_(desk),
      store_(session.platform.state_folder / "unsaved"),
      pauses_(pauses) {
  writing_.setMaxThreadCount(1);  // so that what is queued is done in its order
  soon_.setSingleShot(true);
  connect(&soon_, &QTimer::timeout, this, &LetterKeeper::KeepChanged);
  connect(&desk, &LetterDesk::Added, this, &LetterKeeper::Watch);
}

LetterKeeper::~LetterKeeper() { writing_.waitForDone(); }

void LetterKeeper::Watch(LetterWindow* window) {
  watched_[window].number = ++last_number_;
  connect(window, &LetterWindow::CaptionChanged, this, [this, window] { Changed(window); });
  connect(window, &LetterWindow::Closed, this, [this, window] { Drop(window); });
  connect(window, &QObject::destroyed, this, [this, window] { watched_.erase(window); });
  Changed(window);
}

void LetterKeeper::Changed(LetterWindow* window) {
  if (!window->letter().members().Changed) return Drop(window);
  watched_[window].changed = true;
  if (!soon_.isActive()) waiting_.start();
  soon_.start(
      static_cast<int>(std::clamp(pauses_.longest - waiting_.elapsed(), qint64{0}, pauses_.usual)));
}

void LetterKeeper::Drop(LetterWindow* window) {
  Watched& letter = watched_[window];
  letter.changed = false;
  if (!std::exchange(letter.kept, false)) return;
  writing_.start([this, number = letter.number] { store_.Drop(number); });
}

UnsavedLetter LetterKeeper::Snapshot(const LetterWindow& window) const {
  UnsavedLetter letter = window.letter().Unsaved();
  letter.program_folder = session_.platform.program_folder.string();
  letter.kept = session_.platform.clock.Now();
  return letter;
}

void LetterKeeper::KeepChanged() {
  for (LetterWindow* window : desk_.Letters()) {
    Watched& letter = watched_[window];
    if (!std::exchange(letter.changed, false)) continue;
    letter.kept = true;
    writing_.start([this, number = letter.number, snapshot = Snapshot(*window)] {
      try {
        store_.Keep(number, snapshot);
      } catch (...) {
        const QString reason = QString::fromStdString(ErrorText(CurrentError()));
        QMetaObject::invokeMethod(
            this, [this, reason] { TellFailure(reason); }, Qt::QueuedConnection);
      }
    });
  }
}

bool LetterKeeper::KeepNow() {
  soon_.stop();
  writing_.waitForDone();
  bool all = true;
  for (LetterWindow* window : desk_.Letters()) {
    if (!window->letter().members().Changed) continue;
    Watched& letter = watched_[window];
    letter.kept = true;
    try {
      store_.Keep(letter.number, Snapshot(*window));
    } catch (...) {
      all = false;
    }
  }
  return all;
}

// Once: the next attempt follows in seconds.
void LetterKeeper::TellFailure(const QString& reason) {
  if (std::exchange(failure_told_, true)) return;
  session_.platform.dialogs.Show(
      {.text = "The changes of open letters cannot be kept for the case that Tenora ends without "
               "saving them:\r\n" +
               reason.toStdString() + "\r\nSave your letters from time to time.",
       .icon = Icon::kExclamation});
}

bool LetterKeeper::OfferLeft(QWidget* window) {
  writing_.waitForDone();
  const std::vector<UnsavedStore::Left> left =
      store_.FindLeft(session_.platform.program_folder.string());
  if (left.empty()) return false;
  frmUnsavedLetters(
      session_.platform.locale, letters_.custom_fields(), left,
      {.recover = [this](const UnsavedStore::Left& chosen) { return Recover(chosen); },
       .discard = [this](const UnsavedStore::Left& chosen) { return Discard(chosen); }},
      window)
      .exec();
  return true;
}

bool LetterKeeper::HasLeft(const std::filesystem::path& file) {
  writing_.waitForDone();
  const std::vector<UnsavedStore::Left> left =
      store_.FindLeft(session_.platform.program_folder.string());
  return std::ranges::any_of(
      left, [&](const UnsavedStore::Left& each) { return each.letter.path == file.string(); });
}

bool LetterKeeper::Recover(const UnsavedStore::Left& left) {
  if (!letters_.OpenRecovered(left.letter)) return false;
  // Only what is safe here may go there.
  if (KeepNow()) store_.Discard(left);
  return true;
}

bool LetterKeeper::Discard(const UnsavedStore::Left& left) {
  const Answer answer = session_.platform.dialogs.Show(
      {.text = "Discard the unsaved changes of \"" + left.letter.title +
               "\"? They cannot be brought back.",
       .buttons = Buttons::kYesNo,
       .icon = Icon::kQuestion,
       .default_answer = Answer::kNo});
  if (answer != Answer::kYes) return false;
  store_.Discard(left);
  return true;
}

}  // namespace tenora
