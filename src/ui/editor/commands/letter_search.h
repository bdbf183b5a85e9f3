// Finds and replaces text in a letter. What is put in takes the format of what it replaces.
// Protected text stays, and so does what is inside a merge code, which another name would break,
// unless "<<" or ">>" is looked for itself.
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
  enum class Replaced { kNo, kYes, kInCode };   // the last: left as it is
  struct Count {
    int replaced = 0;
    int kept = 0;     // since they are protected
    int in_code = 0;  // left as they are
  };

  // The letter outlives this object.
  explicit LetterSearch(EditedLetter& letter) : letter_(letter) {}

  // Selects the next occurrence after the selection, or before it. Where there is none and `wrap`
  // is set, goes on from the other end.
  Found Find(const Wanted& wanted, Direction direction, bool wrap);
  // Replaces the selection where that is an occurrence. Nothing is changed elsewhere, and where it
  // is protected, which the status bar then says.
  Replaced Replace(const Wanted& wanted, const QString& with);
  // Replaces every occurrence, as one undo step.
  Count ReplaceAll(const Wanted& wanted, const QString& with);
  // Replaces text within one paragraph, given by positions of the control's document; false where
  // it is protected.
  bool ReplaceText(int start, int end, const QString& with);

  // From now on only what is selected now is searched, and shown as such; it grows and shrinks with
  // what is replaced. Also false where nothing is selected.
  bool LimitToSelection();
  // Selects it again where nothing else has been selected.
  void Unlimit();

 private:
  // An occurrence.
  struct Place {
    int start() const { return positions.front(); }
    int end() const { return positions.back() + 1; }

    std::vector<int> positions;  // one after the other but for marks that are not text
    bool in_code = false;        // and to be left there
  };

  std::vector<Place> FindAll(const Wanted& wanted);
  static void FindInBlock(const QTextBlock& block, const Wanted& wanted,
                          std::vector<Place>& places);
  bool InLimits(const Place& place) const;
  void Put(QTextCursor& cursor, const Place& place, const QString& with);

  EditedLetter& letter_;
  std::optional<QTextCursor> limits_;  // from its end to its start
};

}  // namespace tenora
