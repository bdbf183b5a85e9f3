// The status bar's part about the letter in front: its recipient and whether it is saved.
#pragma once

#include <QAction>
#include <QLabel>
#include <QStatusBar>
#include <string>

#include "merge/merge_target.h"

namespace tenora {

class LetterStatus {
 public:
  // `page_width` toggles wrapping at the page width; a check box for it is added to the bar.
  LetterStatus(QStatusBar& bar, QAction& page_width);

  // Null if no letter is open. `which`: of several recipients of one name, else empty.
  void Show(const LetterMembers* letter, const std::string& which);

 private:
  QLabel* recipient_;
  QLabel* state_;
};

}  // namespace tenora
