// The Import Template command: makes a template of a word processor's document and opens it with
// what the template check finds.
#pragma once

#include <QWidget>
#include <filesystem>
#include <utility>

#include "rental/session.h"
#include "ui/window/background/background_work.h"
#include "ui/window/letter/lint_panel.h"
#include "ui/window/letter/open_letters.h"
#include "ui/window/tree/ctl_tree.h"

namespace tenora {

class ImportTemplates {
 public:
  // Everything passed in must outlive this object.
  ImportTemplates(Session& session, ctlTree& tree, OpenLetters& letters, LintPanel& lint_panel,
                  WorkRunner run)
      : session_(session),
        tree_(tree),
        letters_(letters),
        lint_panel_(lint_panel),
        run_(std::move(run)) {}

  // Asks for the document and the kind of template. Raises what ImportTemplate raises.
  void Import();
  // The same of a document that is known; asks for the kind.
  void Import(const std::filesystem::path& document);
  // Whether a file of this name is a document that can be imported, and no letter.
  static bool IsDocument(const std::filesystem::path& file);

 private:
  Session& session_;
  ctlTree& tree_;
  OpenLetters& letters_;
  LintPanel& lint_panel_;
  WorkRunner run_;
};

}  // namespace tenora
