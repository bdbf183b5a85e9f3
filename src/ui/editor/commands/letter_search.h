// Finds and replaces text in a letter. What is put in takes the format of what it replaces, and
// protected text stays.
#pragma once

#include <QString>
#include <QTextBlock>
#include <QTextCursor>
#include <optional>
#include <vector>

#include "ui/editor/document/edited_letter.h"

namespace tenora {

class LetterSearch {
 public:
  struct Wanted {
    QString text;
    bool match_case = false, whole_words = false;
  };
  enum class Direction { kForward, kBackward };
  enum class Found { kNo, kYes, kPastTheEnd };  // the last: beyond the letter's end, or its start
  struct Count {
    int replaced = 0;
    int kept = 0;  // since they are protected
  };

  // The letter outlives this object.
  explicit LetterSearch(EditedLetter& letter) : letter_(letter) {}

  // Selects the next occurrence after the selection, or before it. Where there is none and `wrap`
  // is set, goes on from the other end.
  Found Find(const Wanted& wanted, Direction direction, bool wrap);
  // Replaces the selection where that is an occurrence; false, and nothing is changed, elsewhere
  // and where it is protected, which the status bar then says.
  bool Replace(const Wanted& wanted, const QString& with);
  // Replaces every occurrence, as one undo step.
  Count ReplaceAll(const Wanted& wanted, const QString& with);
  // Replaces text within one paragraph, given by positions of the control's document; false where
  // it is protected.
  bool ReplaceText(int start, int end, const QString& with);

  // From now on only what is selected now is searched, and shown as such; also false where nothing
  // is selected.
  bool LimitToSelection();
  void Unlimit();

 private:
  // An occurrence: its characters' positions, one after the other but for marks that are not text.
  using Place = std::vector<int>;

  std::vector<Place> FindAll(const Wanted& wanted);
  static void FindInBlock(const QTextBlock& block, const Wanted& wanted,
                          std::vector<Place>& places);
  bool InLimits(const Place& place) const;
  void Put(QTextCursor& cursor, const Place& place, const QString& with);

  EditedLetter& letter_;
  struct Limits {
    QTextCursor start, end;
  };
  std::optional<Limits> limits_;
};

}  // namespace tenora
