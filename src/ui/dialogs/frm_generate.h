// Asks for the recipients of a template's letters and their destination.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "letters/generation_request.h"
#include "letters/recipients.h"
#include "platform/dialogs/dialogs.h"
#include "rental/caches.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QVBoxLayout;

namespace tenora {

class RecipientModel;
class RecipientFilterModel;
class RecipientView;

class frmGenerate : public QDialog {
  Q_OBJECT

 public:
  // The template's kind ("Templates", "Owner Templates") decides who is listed; any other leaves
  // the list empty. The caches must outlive the dialog.
  frmGenerate(const Caches& caches, const std::string& template_kind,
              const std::string& template_name, Dialogs& dialogs, QWidget* parent = nullptr);

  // Also enables what belongs to it: the subject and the e-mail filter for kEmail.
  void SetDestination(Destination destination);

  // Ticks this recipient, and shows closed ones if it is closed.
  void Preselect(const Recipient& recipient);

  // After the dialog was accepted: template, destination, subject, PDF and the recipients.
  GenerationRequest Request() const;
  // Whether to print on the default printer without asking.
  bool UsesDefaultPrinter() const;

 private:
  QWidget* MakeListSide();
  QWidget* MakeOptionSide();
  void MakeDestinations(QVBoxLayout* column);
  void Refill();
  void ShowCount();
  std::vector<int> ShownRows() const;
  void TickShown(bool ticked);
  void InvertShown();
  void Generate();

  const Caches& caches_;
  std::string kind_, name_;
  Dialogs& dialogs_;
  Destination destination_ = Destination::kPrinter;
  RecipientModel* model_;
  RecipientFilterModel* shown_;
  RecipientView* list_;
  QLineEdit* search_;
  QLabel* count_;
  QCheckBox* closed_;
  QCheckBox* by_property_;
  QCheckBox* exclude_;
  QCheckBox* automatic_;
  QCheckBox* pdf_;
  QRadioButton* printer_;
  QRadioButton* email_;
  QRadioButton* folder_;
  QLabel* subject_label_;
  QLineEdit* subject_;
};

}  // namespace tenora
