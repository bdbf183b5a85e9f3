// Files dropped on the window, or pasted into a letter: letters are opened, documents of word
// processors offered for import, pictures put into the letter in front.
#pragma once

#include <QStringList>

#include "rental/session.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/main/import_templates.h"

namespace tenora {

class GivenFiles {
 public:
  // Everything passed in must outlive this object.
  GivenFiles(Session& session, OpenLetters& letters, ImportTemplates& imports)
      : session_(session), letters_(letters), imports_(imports) {}

  // Takes them one after the other; errors are shown, and one box at the end names those that were
  // left, with the reason.
  void Take(const QStringList& files);
  // The same of those that a letter left: they are no pictures.
  void TakeAllButPictures(const QStringList& files);

 private:
  Session& session_;
  OpenLetters& letters_;
  ImportTemplates& imports_;
};

}  // namespace tenora
