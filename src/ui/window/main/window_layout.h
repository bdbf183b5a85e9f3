// How the user has arranged the main window, kept from one run to the next: place and size, bars,
// letters as tabs or windows, the tree's width and what is open in it.
#pragma once

#include <QMainWindow>
#include <QSplitter>

#include "data/settings.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class WindowLayout {
 public:
  // The splitter holds the tree and the desk. All outlive this.
  WindowLayout(Settings& settings, QMainWindow& window, QSplitter& splitter, ctlTree& tree,
               LetterDesk& desk)
      : settings_(settings), window_(window), splitter_(splitter), tree_(tree), desk_(desk) {}

  // Before the window is shown.
  void Restore();
  // The tree, once the window is on the screen and has its width.
  void RestoreTree();
  void Store();

 private:
  Settings& settings_;
  QMainWindow& window_;
  QSplitter& splitter_;
  ctlTree& tree_;
  LetterDesk& desk_;
};

}  // namespace tenora
