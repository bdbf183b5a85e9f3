// Unsaved letters that an earlier program has left: the user looks at each beside its saved file,
// and recovers or discards it. They can also be left until later.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <functional>
#include <vector>

#include "letters/custom_field_codes.h"
#include "letters/unsaved_store.h"
#include "platform/locale/locale.h"
#include "platform/richtext/rich_text_box.h"
#include "ui/editor/letter_view.h"

namespace tenora {

class frmUnsavedLetters : public QDialog {
  Q_OBJECT

 public:
  // Each gives true when the letter is settled; it then goes from the list.
  struct Actions {
    std::function<bool(const UnsavedStore::Left&left)> recover, discard;
  };

  // `letters`, of which there is at least one, and the others outlive the dialog.
  frmUnsavedLetters(const Locale& locale, const CustomFieldCodes& custom_fields,
                    const std::vector<UnsavedStore::Left>& letters, Actions actions,
                    QWidget* parent = nullptr);
  ~frmUnsavedLetters() override;

 private:
  // A letter to look at, and what it is.
  struct Version {
    RichTextBox box;
    QLabel* caption = nullptr;
    LetterView* view = nullptr;
  };

  QWidget* MakeList();
  QWidget* MakeVersion(Version& version, const char* name, const QString& accessible_name);
  const UnsavedStore::Left& Chosen() const;
  void ShowChosen();
  void ShowKept(const UnsavedLetter& letter);
  void ShowSaved(const UnsavedLetter& letter);
  void Settle(const std::function<bool(const UnsavedStore::Left& left)>& action);

  const Locale& locale_;
  const CustomFieldCodes& custom_fields_;
  const std::vector<UnsavedStore::Left>& letters_;
  Actions actions_;
  QTreeWidget* list_;
  Version kept_, saved_;
};

}  // namespace tenora
