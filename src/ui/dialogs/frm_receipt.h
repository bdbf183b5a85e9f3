// Options for the output of receipts or inspection letters.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "data/settings.h"
#include "platform/dialogs/dialogs.h"

class QCheckBox;
class QComboBox;

namespace tenora {

class frmReceipt : public QDialog {
  Q_OBJECT

 public:
  enum class DocumentKind { kReceipt, kInspectionLetter };

  // `formats` are the templates, without ".rtf". `application` names the running program: where it
  // holds "Mail", the action button says "&Print".
  frmReceipt(DocumentKind kind, Settings& settings, Dialogs& dialogs,
             const std::vector<std::string>& formats, const std::string& application,
             QWidget* parent = nullptr);

 private:
  // A check box of the dialog and the setting behind it.
  struct Choice {
    QCheckBox* box;
    const char* key;
  };

  bool IsReceipt() const { return kind_ == DocumentKind::kReceipt; }
  const char* Section() const { return IsReceipt() ? "Receipt" : "InspectionLetter"; }
  QCheckBox* AddChoice(const QString& caption, const char* name, const char* key,
                       const char* default_text);
  void ShowFormats(const std::vector<std::string>& formats);
  void Save();

  DocumentKind kind_;
  Settings& settings_;
  Dialogs& dialogs_;
  QComboBox* format_;
  QCheckBox* print_ = nullptr;
  QCheckBox* email_ = nullptr;
  std::vector<Choice> choices_;
};

}  // namespace tenora
