// The status bar's part about the letter in front: its recipient and whether it is saved.
#pragma once

#include <QAction>
#include <QLabel>
#include <QStatusBar>

#include "merge/merge_target.h"

namespace tenora {

class LetterStatus {
 public:
  // `page_width` toggles wrapping at the page width; a check box for it is added to the bar.
  LetterStatus(QStatusBar& bar, QAction& page_width);

  // Null if no letter is open.
  void Show(const LetterMembers* letter);

 private:
  QLabel* recipient_;
  QLabel* state_;
};

}  // namespace tenora
