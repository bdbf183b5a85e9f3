// The Help menu's windows: the guide, the notice of template forms, About.
#pragma once

#include <QWidget>
#include <string>

#include "ui/window/letter/open_letters.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class HelpCommands {
 public:
  // All outlive this; the windows stand over `window`.
  HelpCommands(Session& session, ctlTree& tree, OpenLetters& letters, QWidget* window)
      : session_(session), tree_(tree), letters_(letters), window_(window) {}

  // A page of the guide by its file's name; says so where the documents are not installed.
  void ShowGuide(const std::string& page);
  // The template forms there are, each to be opened from the notice.
  void ShowForms();
  void ShowAbout();

 private:
  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  QWidget* window_;
};

}  // namespace tenora
