// The Help menu's windows: the guide, the notice of template forms, About.
#pragma once

#include <QWidget>
#include <string>

#include "ui/window/letter/open_letters.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class HelpCommands {
 public:
  // Everything passed in must outlive this object. `window` is the parent of the windows.
  HelpCommands(Session& session, ctlTree& tree, OpenLetters& letters, QWidget* window)
      : session_(session), tree_(tree), letters_(letters), window_(window) {}

  // Shows a page of the guide, by file name; reports it if the documents are not installed.
  void ShowGuide(const std::string& page);
  // Lists the template forms; each can be opened from the list.
  void ShowForms();
  void ShowAbout();

 private:
  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  QWidget* window_;
};

}  // namespace tenora
