// The commands of the tree's context menu.
#pragma once

#include <QAction>
#include <QMenu>
#include <QObject>

#include "ui/window/letter/open_letters.h"
#include "ui/window/main/generate_letters.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class TreeCommands : public QObject {
  Q_OBJECT

 public:
  // Everything passed in must outlive this object. The two actions are those of the menus:
  // Generate, and E-mail for the letter in front.
  TreeCommands(Session& session, ctlTree& tree, OpenLetters& letters, GenerateLetters& generate,
               QAction& generate_action, QAction& mail_action)
      : session_(session),
        tree_(tree),
        letters_(letters),
        generate_(generate),
        generate_action_(generate_action),
        mail_action_(mail_action) {}

  void FillMenu(QMenu& menu, const TreeModel::Entry& entry);

 signals:
  // The outcome, for the status bar.
  void Told(const QString& message);

 private:
  // Asks for the new name of a template or saved letter; an open letter is updated.
  void Rename(const TreeModel::Entry& entry);
  void ShowFolder(const TreeModel::Entry& entry);

  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  GenerateLetters& generate_;
  QAction& generate_action_;
  QAction& mail_action_;
};

}  // namespace tenora
