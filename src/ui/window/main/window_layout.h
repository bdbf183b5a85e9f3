// Saves and restores the layout of the main window: position and size, tool bars, letters as tabs
// or windows, the tree's width and its expanded entries.
#pragma once

#include <QMainWindow>
#include <QSplitter>

#include "data/settings.h"
#include "ui/window/letter/letter_desk.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class WindowLayout {
 public:
  // The splitter contains the tree and the desk. Everything passed in must outlive this object.
  WindowLayout(Settings& settings, QMainWindow& window, QSplitter& splitter, ctlTree& tree,
               LetterDesk& desk)
      : settings_(settings), window_(window), splitter_(splitter), tree_(tree), desk_(desk) {}

  // Call before the window is shown.
  void Restore();
  // Restores the tree's state; call once the window is shown and has its width.
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
