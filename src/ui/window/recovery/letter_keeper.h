// Keeps the changed letters of the main window on the disk until they are saved or their changes
// are declined, and offers those that an earlier program has left.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QThreadPool>
#include <QTimer>
#include <QWidget>
#include <map>

#include "letters/unsaved_store.h"
#include "rental/session.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/letter/open_letters.h"

namespace tenora {

class LetterKeeper : public QObject {
  Q_OBJECT

 public:
  // In milliseconds. A letter is kept after the first without a change, and when changes go on
  // without such a pause, after the second.
  struct Pauses {
    qint64 usual = 2000, longest = 10000;
  };

  // All outlive this object.
  LetterKeeper(Session& session, LetterDesk& desk, OpenLetters& letters)
      : LetterKeeper(session, desk, letters, Pauses()) {}
  LetterKeeper(Session& session, LetterDesk& desk, OpenLetters& letters, const Pauses& pauses);
  ~LetterKeeper() override;

  // Keeps every changed letter as it is at this moment; they are on the disk when the call returns.
  // False when one could not be kept. Raises nothing.
  bool KeepNow();
  // Shows what earlier programs have left, for the user to recover or discard; false where there is
  // nothing. `window` is the parent of the dialog.
  bool OfferLeft(QWidget* window);
  // Whether they have left changes of the letter in this file.
  bool HasLeft(const std::filesystem::path& file);

 private:
  struct Watched {
    int number = 0;        // under which it is kept
    bool changed = false;  // since it was last kept
    bool kept = false;     // a file of it may be there
  };

  void Watch(LetterWindow* window);
  void Changed(LetterWindow* window);
  void Drop(LetterWindow* window);
  // Hands what has changed to the writing thread.
  void KeepChanged();
  UnsavedLetter Snapshot(const LetterWindow& window) const;
  void TellFailure(const QString& reason);
  bool Recover(const UnsavedStore::Left& left);
  bool Discard(const UnsavedStore::Left& left);

  Session& session_;
  OpenLetters& letters_;
  LetterDesk& desk_;
  UnsavedStore store_;  // used by one thread at a time: the pool's, or this one while it is idle
  QThreadPool writing_;
  std::map<const QObject*, Watched> watched_;
  int last_number_ = 0;
  Pauses pauses_;
  QTimer soon_;
  QElapsedTimer waiting_;  // since the first change that is not kept
  bool failure_told_ = false;
};

}  // namespace tenora
