// What the status bar says of the letter in front: to whom it is, and whether it is saved.
#pragma once

#include <QAction>
#include <QLabel>
#include <QStatusBar>

#include "merge/merge_target.h"

namespace tenora {

class LetterStatus {
 public:
  // The action wraps letters at the page width; the bar gets a check box for it.
  LetterStatus(QStatusBar& bar, QAction& page_width);

  // Null where no letter is open.
  void Show(const LetterMembers* letter);

 private:
  QLabel* recipient_;
  QLabel* state_;
};

}  // namespace tenora
