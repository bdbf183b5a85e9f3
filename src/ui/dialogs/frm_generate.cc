#include "ui/dialogs/frm_generate.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <set>
#include <utility>

#include "data/data_age.h"
#include "letters/recipient_table.h"
#include "letters/template_library.h"
#include "platform/dialogs/window_size.h"
#include "platform/runtime/clock.h"
#include "platform/server/branch_location.h"
#include "ui/dialogs/filter_panel.h"
#include "ui/dialogs/recipient_columns.h"
#include "ui/dialogs/recipient_list.h"
#include "ui/dialogs/scrolled_page.h"
#include "ui/dialogs/workers_box.h"

namespace tenora {
namespace {

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(name);
  return widget;
}

// Of the database that was read; a server that is away meanwhile is told of by what needs it.
std::optional<query::BranchOrigin> OriginOf(Session& session) {
  const std::filesystem::path& database = session.database.LastOpened();
  if (!server::IsBranchLocation(database.string())) return std::nullopt;
  try {
    return session.platform.workspace.OpenDatabase(database)->Origin();
  } catch (const RuntimeError&) {
    return std::nullopt;
  }
}

// The usual columns but for those that the list's text has: name and property.
std::vector<std::string> ColumnsBehind(const std::string& template_kind, bool with_branch) {
  std::vector<std::string> names = UsualColumns(template_kind);
  std::erase_if(names, [](const std::string& name) {
    return name == "Tenant Name" || name == "Property Code" || name == "Name";
  });
  if (with_branch) names.emplace(names.begin(), kBranchColumn);
  return names;
}

// Also where the layout was stored with a file.
void ShowBranchIn(RecipientLayout& layout) {
  std::vector<RecipientLayout::Column>& columns = layout.columns;
  const bool shown =
      std::ranges::find(columns, kBranchColumn, &RecipientLayout::Column::name) != columns.end();
  if (columns.empty() || shown) return;
  const auto text = std::ranges::find(columns, "", &RecipientLayout::Column::name);
  columns.insert(text == columns.end() ? columns.begin() : text + 1, {.name = kBranchColumn});
}

// The facts that a filter most often asks for come first: what is owed, and since when.
std::vector<std::string> FilteredFirst(const std::string& template_kind) {
  std::vector<std::string> names = UsualColumns(template_kind);
  const auto owed = [](const std::string& name) {
    return name == "Balance Owing" || name == "Days Behind" || name == "Arrears";
  };
  std::ranges::stable_partition(names, owed);
  return names;
}

}  // namespace

frmGenerate::frmGenerate(Session& session, const std::string& template_kind,
                         const std::string& template_name, QWidget* parent)
    : QDialog(parent),
      session_(session),
      kind_(template_kind),
      name_(template_name),
      dialogs_(session.platform.dialogs),
      origin_(OriginOf(session)),
      model_(new RecipientModel(session.platform.locale, this)),
      shown_(new RecipientFilterModel(*model_)),
      list_(Named(new RecipientView, "lstMultiSelect")),
      filter_(new FilterPanel(session.platform.registry, dialogs_, kind_, name_,
                              FilteredFirst(template_kind))),
      columns_(new RecipientColumns(*list_, *model_, dialogs_,
                                    ColumnsBehind(template_kind, origin_.has_value()))),
      reader_(new RecipientReader(session, template_kind, template_name)),
      sides_(Named(new QSplitter, "spltSides")),
      search_(Named(new QLineEdit, "txtSearch")),
      count_(Named(new QLabel, "lblCount")),
      state_(Named(new QLabel, "lblState")),
      closed_(Named(new QCheckBox, "chkClosed")),
      by_property_(Named(new QCheckBox(tr("One for each &property")), "chkByProperty")),
      exclude_(Named(new QCheckBox(tr("E&xclude those without an e-mail address")),
                     "ExcludeNoEmailAddress")),
      automatic_(Named(new QCheckBox(tr("Use the &default printer")), "chkAuto")),
      pdf_(Named(new QCheckBox(tr("Save a PD&F beside each letter")), "chkPdf")),
      one_pdf_(Named(new QCheckBox(tr("&One PDF of all letters")), "chkOnePdf")),
      duplex_(Named(new QCheckBox(tr("Eac&h on a sheet of its own")), "chkDuplex")),
      post_list_(
          Named(new QCheckBox(tr("&Keep a list of the letters for the post")), "chkPostList")),
      workers_(Named(new WorkersBox(session, kind_, name_), "chkWorkers")),
      printer_(Named(new QRadioButton(tr("P&rinter")), "optPrinter")),
      email_(Named(new QRadioButton(tr("&E-mail")), "optEmail")),
      folder_(Named(new QRadioButton(tr("&Save only")), "optFolder")),
      subject_label_(Named(new QLabel(tr("S&ubject")), "lblSubject")),
      subject_(Named(new QLineEdit(QString::fromStdString(template_name)), "txtSubject")) {
  setObjectName("frmGenerate");
  setWindowTitle(tr("Generate Letters"));
  reader_->setParent(this);
  columns_->setParent(this);
  list_->setModel(shown_);
  auto* buttons = new QDialogButtonBox;
  auto* generate =
      Named(buttons->addButton(tr("&Generate"), QDialogButtonBox::AcceptRole), "cmdGenerate");
  Named(buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole), "cmdCancel")
      ->setAutoDefault(false);
  connect(buttons, &QDialogButtonBox::accepted, this, &frmGenerate::Generate);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  sides_->addWidget(MakeListSide());
  sides_->addWidget(new ScrolledPage(MakeOptionSide()));
  sides_->setChildrenCollapsible(false);
  sides_->setStretchFactor(0, 1);
  auto* layout = new QVBoxLayout(this);
  // Over both sides: its lines need the width.
  layout->addWidget(filter_);
  layout->addWidget(sides_, 1);
  layout->addWidget(buttons);
  // Not before the dialog has it: Return would go to the button that Tab passed last.
  generate->setDefault(true);
  connect(model_, &RecipientModel::TicksChanged, this, &frmGenerate::ShowCount);
  MakeTable();
  SetDestination(Destination::kPrinter);
  search_->setFocus();
  resize(OpeningSize(*this, {1240, 680}));
}

frmGenerate::~frmGenerate() { reader_->Stop(); }

void frmGenerate::MakeTable() {
  const FactNames* const fixed = RecipientFactNames(kind_);
  if (fixed == nullptr) return;
  const auto names = std::make_shared<const FactNames>(*fixed);
  if (origin_) model_->SetBranch(origin_->branch);
  const auto use_names = [this](const std::shared_ptr<const FactNames>& known) {
    const auto columns = WithBranch(known);
    model_->SetNames(columns);
    columns_->SetNames(columns);
    // The same filter as before, read again.
    const bool generate = generate_when_read_;
    filter_->SetNames(known);
    generate_when_read_ = generate;
  };
  use_names(names);
  RecipientLayout layout = StoredRecipientLayout(session_.platform.registry, kind_);
  if (origin_) ShowBranchIn(layout);
  if (layout.table_width > 0 && layout.options_width > 0) {
    sides_->setSizes({layout.table_width, layout.options_width});
  }
  columns_->Restore(layout, *WithBranch(names));
  connect(reader_, &RecipientReader::NamesRead, this, use_names);
  connect(reader_, &RecipientReader::NowRead, this, &frmGenerate::ShowValues);
  connect(reader_, &RecipientReader::Failed, this, [this](const QString& problem) {
    reading_problem_ = problem;
    generate_when_read_ = false;
    ApplyFilter();
  });
  connect(columns_, &RecipientColumns::ColumnsChanged, this, &frmGenerate::ReadFacts);
  connect(columns_, &RecipientColumns::OrderChanged, this, &frmGenerate::ApplyOrder);
  connect(filter_, &FilterPanel::Changed, this, [this] {
    generate_when_read_ = false;
    ReadFacts();
    ApplyFilter();
  });
}

std::shared_ptr<const FactNames> frmGenerate::WithBranch(
    const std::shared_ptr<const FactNames>& names) const {
  if (!origin_) return names;
  const auto all = std::make_shared<FactNames>();
  all->Add(kBranchColumn, FactType::kText);
  all->Add(*names);
  return all;
}

void frmGenerate::done(int result) {
  reader_->Stop();
  if (RecipientFactNames(kind_) != nullptr) {
    RecipientLayout layout = columns_->Layout();
    layout.table_width = sides_->sizes().value(0);
    layout.options_width = sides_->sizes().value(1);
    StoreRecipientLayout(session_.platform.registry, kind_, layout);
  }
  QDialog::done(result);
}

// What is typed into the search or the filter is no order to write letters.
void frmGenerate::keyPressEvent(QKeyEvent* event) {
  QWidget* const focused = focusWidget();
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!enter || focused == nullptr) return QDialog::keyPressEvent(event);
  auto* button = qobject_cast<QAbstractButton*>(focused);
  if (qobject_cast<QPushButton*>(focused) != nullptr ||
      qobject_cast<QToolButton*>(focused) != nullptr) {
    button->click();
  } else if (focused != search_ && !filter_->isAncestorOf(focused)) {
    return QDialog::keyPressEvent(event);
  }
  event->accept();
}

bool frmGenerate::HasFactsOfFilter() const {
  const RecipientValues* values = model_->Values();
  if (values == nullptr || values->by_property != by_property_->isChecked()) return false;
  const std::optional<Condition>& condition = filter_->condition();
  return !condition || std::ranges::all_of(condition->Names(), [&](const std::string& name) {
    return values->names.contains(name);
  });
}

void frmGenerate::ReadFacts() {
  if (RecipientFactNames(kind_) == nullptr) return;
  std::set<std::string> names(model_->Columns().begin(), model_->Columns().end());
  if (origin_) names.erase(kBranchColumn);
  const std::optional<Condition>& condition = filter_->condition();
  if (condition) names.insert(condition->Names().begin(), condition->Names().end());
  const RecipientValues* values = model_->Values();
  const bool all_there = HasFactsOfFilter() && std::ranges::includes(values->names, names);
  if (!all_there) reader_->Read(names, by_property_->isChecked());
}

void frmGenerate::ShowValues(const std::shared_ptr<const RecipientValues>& values) {
  reading_problem_.clear();
  model_->SetValues(values);
  // A filter may have come since.
  ReadFacts();
  ApplyFilter();
  ApplyOrder();
  if (std::exchange(generate_when_read_, false)) Generate();
}

void frmGenerate::ApplyFilter() {
  // What is typed is no condition for a moment: the list waits.
  if (filter_->Problem().empty() && (HasFactsOfFilter() || !filter_->condition())) {
    shown_->SetCondition(filter_->condition());
  }
  ShowCount();
}

void frmGenerate::ApplyOrder() { shown_->SetOrder(columns_->SortedBy(), columns_->Descending()); }

QWidget* frmGenerate::MakeListSide() {
  auto* side = new QWidget;
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(0, 0, 6, 0);
  search_->setPlaceholderText(tr("Search names, properties and addresses"));
  search_->setAccessibleName(tr("Search"));
  search_->setClearButtonEnabled(true);
  list_->setAccessibleName(tr("Recipients"));
  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    shown_->SetSearch(text);
    ShowCount();
  });
  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, auto&& action) {
    auto* button = Named(new QPushButton(caption), name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
  };
  add(tr("Select &All"), "cmdSelectAll", [this] { TickShown(true); });
  add(tr("Select &None"), "cmdSelectNone", [this] { TickShown(false); });
  add(tr("&Invert"), "cmdInvert", [this] { InvertShown(); });
  row->addStretch();
  auto* columns = Named(new QPushButton(tr("Colu&mns")), "cmdColumns");
  columns->setAutoDefault(false);
  columns->setMenu(&columns_->Menu());
  auto* search_row = new QHBoxLayout;
  search_row->addWidget(search_, 1);
  search_row->addWidget(columns);
  column->addLayout(search_row);
  column->addWidget(list_, 1);
  state_->setWordWrap(true);
  state_->setTextFormat(Qt::PlainText);
  column->addWidget(state_);
  auto* state_row = new QHBoxLayout;
  state_row->addWidget(count_, 1);
  if (origin_) {
    const std::string age =
        DataAgeText(origin_->branch, LocalTime(origin_->taken), session_.platform.clock.Now());
    auto* label = Named(new QLabel(QString::fromStdString(age)), "lblDataAge");
    label->setTextFormat(Qt::PlainText);
    state_row->addWidget(label);
  }
  column->addLayout(state_row);
  // From the search straight into what it leaves.
  setTabOrder(search_, list_);
  setTabOrder(list_, columns);
  column->addLayout(row);
  return side;
}

QWidget* frmGenerate::MakeOptionSide() {
  auto* side = new QWidget;
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(6, 0, 0, 0);
  auto* label = new QLabel(tr("&Template"));
  auto* name = Named(new QLineEdit(QString::fromStdString(name_)), "txtName");
  name->setReadOnly(true);
  label->setBuddy(name);
  column->addWidget(label);
  column->addWidget(name);
  auto* who = new QGroupBox(tr("Recipients"));
  auto* who_column = new QVBoxLayout(who);
  const bool owners = kind_ == kOwnerTemplates;
  closed_->setText(owners ? tr("Include &closed owners") : tr("Include &closed tenancies"));
  by_property_->setVisible(owners);
  for (QCheckBox* box : {closed_, by_property_, exclude_}) {
    who_column->addWidget(box);
    connect(box, &QCheckBox::toggled, this, &frmGenerate::Refill);
  }
  column->addWidget(who);
  MakeDestinations(column);
  column->addStretch();
  return side;
}

void frmGenerate::MakeDestinations(QVBoxLayout* column) {
  auto* where = new QGroupBox(tr("Send to"));
  auto* where_column = new QVBoxLayout(where);
  subject_label_->setBuddy(subject_);
  auto* subject_row = new QHBoxLayout;
  subject_row->addSpacing(20);
  subject_row->addWidget(subject_label_);
  subject_row->addWidget(subject_, 1);
  auto* printer_row = new QHBoxLayout;
  printer_row->addSpacing(20);
  printer_row->addWidget(automatic_);
  where_column->addWidget(printer_);
  where_column->addLayout(printer_row);
  where_column->addWidget(email_);
  where_column->addLayout(subject_row);
  where_column->addWidget(folder_);
  column->addWidget(where);
  column->addWidget(pdf_);
  column->addWidget(one_pdf_);
  auto* duplex_row = new QHBoxLayout;
  duplex_row->addSpacing(20);
  duplex_row->addWidget(duplex_);
  column->addLayout(duplex_row);
  column->addWidget(post_list_);
  column->addWidget(workers_);
  const QString place = tr("Written into the data folder, under the name of the run log");
  one_pdf_->setToolTip(place);
  post_list_->setToolTip(place);
  duplex_->setToolTip(
      tr("Where both sides of the paper are printed: an empty page follows a letter "
         "that ends on a front side"));
  duplex_->setEnabled(false);
  connect(one_pdf_, &QCheckBox::toggled, duplex_, &QCheckBox::setEnabled);
  for (const QCheckBox* box : {one_pdf_, post_list_}) {
    connect(box, &QCheckBox::toggled, this, &frmGenerate::ShowWorkers);
  }
  // On click, not on toggle: a radio button that is switched off by another emits toggled as well.
  connect(printer_, &QRadioButton::clicked, this,
          [this] { SetDestination(Destination::kPrinter); });
  connect(email_, &QRadioButton::clicked, this, [this] { SetDestination(Destination::kEmail); });
  connect(folder_, &QRadioButton::clicked, this, [this] { SetDestination(Destination::kFolder); });
}

void frmGenerate::SetDestination(Destination destination) {
  destination_ = destination;
  const bool email = destination == Destination::kEmail;
  printer_->setChecked(destination == Destination::kPrinter);
  email_->setChecked(email);
  folder_->setChecked(destination == Destination::kFolder);
  automatic_->setEnabled(destination == Destination::kPrinter);
  subject_label_->setEnabled(email);
  subject_->setEnabled(email);
  exclude_->setEnabled(email);
  ShowWorkers();
  Refill();
}

void frmGenerate::ShowWorkers() {
  QString obstacle;
  if (one_pdf_->isChecked()) {
    obstacle = tr("one PDF of all letters is made on this computer only");
  } else if (post_list_->isChecked()) {
    obstacle = tr("the list for the post is made on this computer only");
  } else if (destination_ == Destination::kEmail && !session_.options.SmtpSend) {
    obstacle = tr("the office's e-mails are sent by a mail program, which workers do not have");
  }
  workers_->SetObstacle(obstacle);
}

void frmGenerate::Preselect(const Recipient& recipient) {
  for (const bool closed : {false, true}) {
    if (closed) closed_->setChecked(true);
    for (int row = 0; row < model_->rowCount(); ++row) {
      if (model_->Row(row).recipient != recipient) continue;
      model_->Tick({row}, true);
      const QModelIndex shown = shown_->mapFromSource(model_->index(row, 0));
      list_->setCurrentIndex(shown);
      list_->scrollTo(shown);
      return;
    }
  }
  closed_->setChecked(false);
}

void frmGenerate::Refill() {
  RecipientFilter filter;
  filter.closed = closed_->isChecked();
  filter.by_property = by_property_->isChecked();
  filter.exclude_no_email_available = exclude_->isEnabled();
  filter.exclude_no_email_ticked = exclude_->isChecked();
  model_->SetRows(ListRecipients(session_.caches, kind_, filter));
  ReadFacts();
  ApplyFilter();
  ApplyOrder();
}

void frmGenerate::ShowCount() {
  const QLocale locale;
  int left = 0, ticked = 0, left_out = 0;
  for (int row = 0; row < model_->rowCount(); ++row) {
    if (shown_->Leaves(row)) ++left;
    if (!model_->IsTicked(row)) continue;
    ++(shown_->Leaves(row) ? ticked : left_out);
  }
  const int found = shown_->rowCount();
  QString text = filter_->condition()
                     ? tr("%1 of %2 listed, %3 selected")
                           .arg(locale.toString(left), locale.toString(model_->rowCount()),
                                locale.toString(ticked))
                     : tr("%1 of %2 selected").arg(locale.toString(ticked), locale.toString(left));
  if (found != left) text += tr(" – %1 shown").arg(locale.toString(found));
  if (left_out > 0) {
    text += tr(" – %1 more selected, but left out by the filter: no letter")
                .arg(locale.toString(left_out));
  }
  count_->setText(text);

  QString state;
  if (!reading_problem_.isEmpty()) {
    state = tr("What is known of the recipients cannot be read: %1").arg(reading_problem_);
  } else if (!filter_->Problem().empty() && filter_->IsOpen()) {
    state = tr("The list stays as it is until the condition is right.");
  } else if (!filter_->Problem().empty()) {
    state = tr("The list stays as it is, since the condition \"%1\" is not right. %2")
                .arg(filter_->Text(), QString::fromStdString(filter_->Problem()));
  } else if (RecipientFactNames(kind_) != nullptr && !HasFactsOfFilter()) {
    state = tr("Reading what is known of the recipients…");
  } else if (const std::string fact = FactWithoutProperty(); !fact.empty()) {
    state =
        tr("%1 is known of owners listed once for each property: tick \"One for each property\".")
            .arg(QString::fromStdString(fact));
  } else if (shown_->Undecided() > 0) {
    state = tr("Of %1 it cannot be said whether they meet the condition. They are left out.")
                .arg(locale.toString(static_cast<qulonglong>(shown_->Undecided())));
  }
  state_->setText(state);
  state_->setVisible(!state.isEmpty());
}

std::string frmGenerate::FactWithoutProperty() const {
  if (by_property_->isChecked() || !filter_->condition()) return {};
  const std::vector<std::string>& names = filter_->condition()->Names();
  const auto found = std::ranges::find_if(
      names, [&](const std::string& name) { return IsPropertyFact(kind_, name); });
  return found == names.end() ? "" : *found;
}

std::vector<int> frmGenerate::ShownRows() const {
  std::vector<int> rows;
  for (int i = 0; i < shown_->rowCount(); ++i) {
    rows.push_back(shown_->mapToSource(shown_->index(i, 0)).row());
  }
  return rows;
}

void frmGenerate::TickShown(bool ticked) { model_->Tick(ShownRows(), ticked); }

void frmGenerate::InvertShown() {
  std::vector<int> on, off;
  for (const int row : ShownRows()) (model_->IsTicked(row) ? off : on).push_back(row);
  model_->Tick(on, true);
  model_->Tick(off, false);
}

// Those who are ticked and whom the filter leaves, in the list's own order.
std::vector<RecipientRow> frmGenerate::ChosenRows() const {
  std::vector<RecipientRow> rows;
  for (int row = 0; row < model_->rowCount(); ++row) {
    if (model_->IsTicked(row) && shown_->Leaves(row)) rows.push_back(model_->Row(row));
  }
  return rows;
}

void frmGenerate::Generate() {
  if (!filter_->Problem().empty()) {
    return dialogs_.Say("The filter's condition is not right yet.\r\n" +
                        filter_->Text().toStdString() + "\r\n" + filter_->Problem());
  }
  if (filter_->condition() && !HasFactsOfFilter()) {
    generate_when_read_ = reading_problem_.isEmpty();
    if (!generate_when_read_) {
      dialogs_.Say("What the filter needs to know of the recipients cannot be read.");
    }
    return;
  }
  if (ChosenRows().empty()) return dialogs_.Say("Nothing selected");
  filter_->NoteUse();
  accept();
}

GenerationRequest frmGenerate::Request() const {
  GenerationRequest request;
  request.template_kind = kind_;
  request.template_name = name_;
  request.destination = destination_;
  request.subject = subject_->text().toStdString();
  request.pdf = pdf_->isChecked();
  if (one_pdf_->isChecked()) request.one_pdf.emplace();
  request.duplex = one_pdf_->isChecked() && duplex_->isChecked();
  if (post_list_->isChecked()) request.post_list.emplace();
  for (const RecipientRow& row : ChosenRows()) request.recipients.push_back(row.recipient);
  return request;
}

bool frmGenerate::ByWorkers() const { return workers_->Chosen(); }

bool frmGenerate::UsesDefaultPrinter() const { return automatic_->isChecked(); }

}  // namespace tenora
