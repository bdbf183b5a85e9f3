#include "ui/dialogs/frm_run_report.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>
#include <utility>

#include "platform/dialogs/window_size.h"

namespace tenora {
namespace {

constexpr int kReportRole = Qt::UserRole;      // of a letter: its place among those listed
constexpr int kReasonRole = Qt::UserRole + 1;  // the whole of what the second column says

QString NameOf(const Recipient& recipient) {
  QString name = QString::fromStdString(recipient.name);
  if (!recipient.code.empty()) name += " (" + QString::fromStdString(recipient.code) + ")";
  return name;
}

QString Headline(const GenerationSummary& summary, Destination destination) {
  QString done = frmRunReport::tr("made");
  if (destination == Destination::kPrinter) done = frmRunReport::tr("printed");
  if (destination == Destination::kEmail) {
    done = summary.composed ? frmRunReport::tr("opened in the mail program")
                            : frmRunReport::tr("e-mailed");
  }
  return frmRunReport::tr("%1 of %2 letters were %3.")
      .arg(summary.done)
      .arg(summary.asked)
      .arg(done);
}

bool LettersMissing(const GenerationSummary& summary) {
  return summary.failed.size() + summary.untouched() > 0;
}

// With the letters the files of all of them are made again.
QString MissingCaption(const GenerationSummary& summary) {
  return LettersMissing(summary) ? frmRunReport::tr("&Make Missing Letters")
                                 : frmRunReport::tr("&Make Missing Files");
}

QString InDoubtAdvice(Destination destination) {
  return destination == Destination::kPrinter
             ? frmRunReport::tr(
                   "Look whether the printer printed it. It is not printed again by "
                   "itself: if it is missing, open the letter and print it.")
             : frmRunReport::tr(
                   "It may have arrived, and is not sent again by itself. Ask the "
                   "recipient; if it did not arrive, open the letter and e-mail it.");
}

}  // namespace

frmRunReport::frmRunReport(const GenerationSummary& summary, Destination destination,
                           QWidget* parent)
    : QDialog(parent), list_(new QTreeWidget), reason_(new QPlainTextEdit) {
  setObjectName("frmRunReport");
  setWindowTitle(tr("Letters Left"));
  auto* headline = new QLabel(Headline(summary, destination));
  headline->setObjectName("lblSummary");
  QFont bold = headline->font();
  bold.setBold(true);
  headline->setFont(bold);

  list_->setObjectName("lstLetters");
  list_->setAccessibleName(tr("Letters"));
  list_->setHeaderLabels({tr("Recipient"), tr("Why")});
  list_->setAllColumnsShowFocus(true);
  AddGroup(tr("Held back, because something is wrong in them"), summary.held,
           tr("Open the letter, correct and save it; or correct the template or the data. Then "
              "resume the run under Tools > Unfinished Runs."));
  const std::size_t unaddressed = summary.no_address.size();
  AddGroup(unaddressed == 1 ? tr("1 has no e-mail address")
                            : tr("%1 have no e-mail address").arg(unaddressed),
           summary.no_address,
           tr("The letter is saved. Print it, or enter the address in the rental package and "
              "resume the run under Tools > Unfinished Runs."));
  AddGroup(tr("In doubt: nobody knows whether they arrived"), summary.in_doubt,
           InDoubtAdvice(destination));
  AddMissing(summary);
  AddUndone(summary);
  list_->expandAll();
  list_->setColumnWidth(0, 280);
  connect(list_, &QTreeWidget::currentItemChanged, this, [this] { ShowReason(); });
  connect(list_, &QTreeWidget::itemChanged, this, [this] { ShowTicked(); });
  connect(list_, &QTreeWidget::itemActivated, this, [this](const QTreeWidgetItem* item) {
    const QVariant at = item->data(0, kReportRole);
    if (!at.isValid()) return;
    const LetterReport& report = listed_[at.toULongLong()];
    if (!report.file.empty()) Choose(Choice::kOpen, {report});
  });

  reason_->setObjectName("txtReason");
  reason_->setAccessibleName(tr("Why"));
  reason_->setReadOnly(true);
  reason_->setTabChangesFocus(true);
  reason_->setFixedHeight(fontMetrics().lineSpacing() * 5);
  auto* log =
      new QLabel(tr("Log: %1").arg(QString::fromStdString(summary.log.filename().string())));
  log->setTextFormat(Qt::PlainText);
  log->setTextInteractionFlags(Qt::TextSelectableByMouse);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(headline);
  layout->addWidget(list_, 1);
  layout->addWidget(reason_);
  layout->addWidget(log);
  layout->addWidget(MakeButtons(summary, destination));
  resize(OpeningSize(*this, {780, 480}));
  // The only letter needs no tick of the user's.
  if (listed_.size() == 1) {
    QTreeWidgetItem* only = list_->topLevelItem(0)->child(0);
    if ((only->flags() & Qt::ItemIsUserCheckable) != 0) only->setCheckState(0, Qt::Checked);
  }
  if (list_->topLevelItemCount() > 0) list_->setCurrentItem(list_->topLevelItem(0)->child(0));
  list_->setFocus();
  ShowTicked();
}

void frmRunReport::AddGroup(const QString& title, const Reports& reports, const QString& advice) {
  if (reports.empty()) return;
  auto* group = new QTreeWidgetItem(list_, {title});
  group->setFirstColumnSpanned(true);
  QFont bold = list_->font();
  bold.setBold(true);
  group->setFont(0, bold);
  bool tickable = false;
  for (const LetterReport& report : reports) {
    const QString problem = QString::fromStdString(report.problem).simplified();
    auto* item = new QTreeWidgetItem(group, {NameOf(report.recipient), problem});
    item->setData(0, kReportRole, QVariant::fromValue<qulonglong>(listed_.size()));
    item->setData(0, kReasonRole, problem + "\n" + advice);
    item->setToolTip(1, problem);
    listed_.push_back(report);
    if (report.file.empty()) continue;
    tickable = true;
    item->setCheckState(0, Qt::Unchecked);
  }
  if (!tickable) return;
  group->setFlags(group->flags() | Qt::ItemIsAutoTristate | Qt::ItemIsUserCheckable);
  group->setCheckState(0, Qt::Unchecked);
}

void frmRunReport::AddUndone(const GenerationSummary& summary) {
  if (summary.merged.problems.empty()) return;
  auto* group = new QTreeWidgetItem(list_, {tr("Files of all letters")});
  group->setFirstColumnSpanned(true);
  for (const std::string& problem : summary.merged.problems) {
    const QString text = QString::fromStdString(problem).simplified();
    auto* item = new QTreeWidgetItem(group, {text});
    item->setFirstColumnSpanned(true);
    item->setToolTip(0, text);
    item->setData(0, kReasonRole,
                  text + "\n" + tr("\"%1\" makes it.").arg(MissingCaption(summary).remove('&')));
  }
}

void frmRunReport::AddMissing(const GenerationSummary& summary) {
  const std::size_t untouched = summary.untouched();
  AddGroup(tr("Missing"), summary.failed, tr("\"Make Missing Letters\" tries again."));
  if (untouched == 0) return;
  QTreeWidgetItem* group = summary.failed.empty()
                               ? new QTreeWidgetItem(list_, {tr("Missing")})
                               : list_->topLevelItem(list_->topLevelItemCount() - 1);
  auto* rest =
      new QTreeWidgetItem(group, {tr("%1 not begun").arg(untouched), tr("the run ended before")});
  rest->setData(0, kReasonRole, tr("\"Make Missing Letters\" makes them."));
}

QWidget* frmRunReport::MakeButtons(const GenerationSummary& summary, Destination destination) {
  auto* bottom = new QWidget;
  auto* column = new QVBoxLayout(bottom);
  column->setContentsMargins(0, 0, 0, 0);
  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, bool shown, auto&& action) {
    auto* button = new QPushButton(caption);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
    button->setVisible(shown);
    return button;
  };
  open_ = add(tr("&Open"), "cmdOpen", true, [this] { Choose(Choice::kOpen, Ticked()); });
  QString send = tr("Keep as It &Is");
  if (destination == Destination::kPrinter) send = tr("Print &Anyway");
  if (destination == Destination::kEmail) send = tr("Send &Anyway");
  send_ = add(send, "cmdSendHeld", !summary.held.empty(),
              [this] { Choose(Choice::kSendHeld, Ticked(Result::kHeld)); });
  print_ = add(tr("&Print"), "cmdPrint", !summary.no_address.empty(),
               [this] { Choose(Choice::kPrint, Ticked(Result::kNoAddress)); });
  const bool letters = LettersMissing(summary);
  const bool missing = letters || !summary.merged.problems.empty();
  add(MissingCaption(summary), "cmdMakeMissing", missing,
      [this] { Choose(Choice::kMakeMissing, {}); });
  row->addStretch();
  auto* leave = add(tr("&Leave"), "cmdLeave", true, [this] { reject(); });
  leave->setDefault(true);
  if (missing) {
    auto* question = new QLabel(letters ? tr("Make the missing letters now?")
                                        : tr("Make the missing files now?"));
    question->setObjectName("lblMissing");
    column->addWidget(question);
  }
  column->addLayout(row);
  return bottom;
}

frmRunReport::Reports frmRunReport::Ticked(std::optional<Result> kind) const {
  Reports ticked;
  for (QTreeWidgetItemIterator at(list_, QTreeWidgetItemIterator::Checked); *at != nullptr; ++at) {
    const QVariant place = (*at)->data(0, kReportRole);
    if (!place.isValid()) continue;
    const LetterReport& report = listed_[place.toULongLong()];
    if (!kind || report.result == *kind) ticked.push_back(report);
  }
  return ticked;
}

void frmRunReport::ShowReason() {
  const QTreeWidgetItem* item = list_->currentItem();
  reason_->setPlainText(item == nullptr ? QString() : item->data(0, kReasonRole).toString());
}

void frmRunReport::ShowTicked() {
  open_->setEnabled(!Ticked().empty());
  send_->setEnabled(!Ticked(Result::kHeld).empty());
  print_->setEnabled(!Ticked(Result::kNoAddress).empty());
}

void frmRunReport::Choose(Choice choice, Reports chosen) {
  choice_ = choice;
  chosen_ = std::move(chosen);
  accept();
}

}  // namespace tenora
