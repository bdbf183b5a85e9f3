// Asks for the recipients of a template's letters and their destination.
#pragma once

#include <QDialog>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "letters/generation_request.h"
#include "letters/recipients.h"
#include "platform/dialogs/dialogs.h"
#include "platform/query/engine.h"
#include "rental/session.h"
#include "ui/dialogs/recipient_reader.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSplitter;
class QVBoxLayout;

namespace tenora {

class FilterPanel;
class RecipientColumns;
class RecipientModel;
class RecipientFilterModel;
class RecipientView;
class WorkersBox;

class frmGenerate : public QDialog {
  Q_OBJECT

 public:
  // The template's kind ("Templates", "Owner Templates") decides who of the session's caches is
  // listed; any other leaves the list empty. What else the table shows of them is read beside the
  // windows and follows. The session must outlive the dialog.
  frmGenerate(Session& session, const std::string& template_kind, const std::string& template_name,
              QWidget* parent = nullptr);
  ~frmGenerate() override;

  // Also enables what belongs to it: the subject and the e-mail filter for kEmail.
  void SetDestination(Destination destination);

  // Ticks this recipient, and shows closed ones if it is closed.
  void Preselect(const Recipient& recipient);

  // After the dialog was accepted: template, destination, subject, PDF and the recipients.
  GenerationRequest Request() const;
  // Whether to print on the default printer without asking.
  bool UsesDefaultPrinter() const;

  // Whether the letters are to be put into the queue on the server.
  bool ByWorkers() const;

  // Also remembers the table's columns, order and room.
  void done(int result) override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QWidget* MakeListSide();
  QWidget* MakeOptionSide();
  void MakeDestinations(QVBoxLayout* column);
  void Refill();
  // What of the choices keeps the letters from the workers.
  void ShowWorkers();
  void MakeTable();
  // The names with kBranchColumn before them, where the recipients are a branch's.
  std::shared_ptr<const FactNames> WithBranch(const std::shared_ptr<const FactNames>& names) const;
  // Asks for the facts of the columns and the filter, where they have not been read.
  void ReadFacts();
  void ShowValues(const std::shared_ptr<const RecipientValues>& values);
  void ApplyFilter();
  void ApplyOrder();
  // Whether the values are there that the filter and the list need.
  bool HasFactsOfFilter() const;
  std::vector<RecipientRow> ChosenRows() const;
  void ShowCount();
  // A fact of a property that the filter names while owners are listed once; empty for none.
  std::string FactWithoutProperty() const;
  std::vector<int> ShownRows() const;
  void TickShown(bool ticked);
  void InvertShown();
  void Generate();

  Session& session_;
  std::string kind_, name_;
  Dialogs& dialogs_;
  const std::optional<query::BranchOrigin> origin_;  // of the recipients; none: a file
  Destination destination_ = Destination::kPrinter;
  RecipientModel* model_;
  RecipientFilterModel* shown_;
  RecipientView* list_;
  FilterPanel* filter_;
  RecipientColumns* columns_;
  RecipientReader* reader_;
  QSplitter* sides_;
  QString reading_problem_;
  bool generate_when_read_ = false;
  QLineEdit* search_;
  QLabel* count_;
  QLabel* state_;  // of the reading, and of the filter
  QCheckBox* closed_;
  QCheckBox* by_property_;
  QCheckBox* exclude_;
  QCheckBox* automatic_;
  QCheckBox* pdf_;
  QCheckBox* one_pdf_;
  QCheckBox* duplex_;
  QCheckBox* post_list_;
  WorkersBox* workers_;
  QRadioButton* printer_;
  QRadioButton* email_;
  QRadioButton* folder_;
  QLabel* subject_label_;
  QLineEdit* subject_;
};

}  // namespace tenora
