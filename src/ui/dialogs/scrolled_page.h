// The part of a dialog that scrolls where a small or enlarged screen is lower than it.
#pragma once

#include <QScrollArea>

namespace tenora {

class ScrolledPage : public QScrollArea {
 public:
  // Takes the page over.
  explicit ScrolledPage(QWidget* page);
};

}  // namespace tenora
