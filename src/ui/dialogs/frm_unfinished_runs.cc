#include "ui/dialogs/frm_unfinished_runs.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QVBoxLayout>

#include "platform/dialogs/window_size.h"
#include "ui/dialogs/shown_time.h"

namespace tenora {
namespace {

constexpr int kTemplate = 1, kLeft = 5;  // columns
constexpr int kFirstNumber = 3;          // from here on they are counts

QString DestinationText(Destination destination) {
  switch (destination) {
    case Destination::kPrinter:
      return frmUnfinishedRuns::tr("Printer");
    case Destination::kEmail:
      return frmUnfinishedRuns::tr("E-mail");
    case Destination::kFolder:
      break;
  }
  return frmUnfinishedRuns::tr("Save only");
}

// The files of all letters that are not finished.
QString Undone(const UnfinishedRun& run) {
  QStringList files;
  for (const std::string& problem : run.summary.merged.problems) {
    const QString file = QString::fromStdString(problem);
    files << (file.endsWith(".csv", Qt::CaseInsensitive) ? frmUnfinishedRuns::tr("list")
                                                         : frmUnfinishedRuns::tr("PDF"));
  }
  return files.join(", ");
}

// "2026-11-21 09:30:00", as a log has it, in the user's own form.
QString TimeText(const Locale& locale, const std::string& logged) {
  const QDateTime time =
      QDateTime::fromString(QString::fromStdString(logged), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
  return time.isValid() ? ShownTime(locale, time) : QString::fromStdString(logged);
}

}  // namespace

frmUnfinishedRuns::frmUnfinishedRuns(const Locale& locale, const std::vector<UnfinishedRun>& runs,
                                     QWidget* parent)
    : QDialog(parent), locale_(locale), runs_(runs), list_(new QTreeWidget) {
  setObjectName("frmUnfinishedRuns");
  setWindowTitle(tr("Unfinished Runs"));
  auto* text = new QLabel(tr(
      "These runs of letters have not done all they were asked. \"Resume\" does the rest: nobody "
      "gets a letter twice. \"Forget\" leaves it undone; no letter is removed."));
  text->setWordWrap(true);

  list_->setObjectName("lstRuns");
  list_->setAccessibleName(tr("Unfinished runs"));
  list_->setRootIsDecorated(false);
  list_->setAllColumnsShowFocus(true);
  list_->setAlternatingRowColors(true);
  list_->setHeaderLabels({tr("Started"), tr("Template"), tr("Send to"), tr("Asked"), tr("Done"),
                          tr("Left"), tr("In doubt"), tr("Held back"), tr("No address")});
  for (const UnfinishedRun& run : runs_) AddRun(run);
  for (int column = 0; column < list_->columnCount(); ++column) {
    list_->resizeColumnToContents(column);
  }
  list_->header()->setStretchLastSection(false);
  list_->header()->setSectionResizeMode(kTemplate, QHeaderView::Stretch);
  connect(list_, &QTreeWidget::currentItemChanged, this, [this] { ShowChosen(); });
  connect(list_, &QTreeWidget::itemActivated, this, [this] { Choose(Choice::kLook); });

  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, Choice choice) {
    auto* button = new QPushButton(caption);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, choice] { Choose(choice); });
    row->addWidget(button);
    return button;
  };
  resume_ = add(tr("&Resume"), "cmdResume", Choice::kResume);
  add(tr("&Look"), "cmdLook", Choice::kLook);
  add(tr("&Forget…"), "cmdForget", Choice::kForget);
  row->addStretch();
  auto* later = new QPushButton(tr("La&ter"));
  later->setObjectName("cmdLater");
  later->setAutoDefault(false);
  later->setDefault(true);
  connect(later, &QPushButton::clicked, this, &QDialog::reject);
  row->addWidget(later);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text);
  layout->addWidget(list_, 1);
  layout->addLayout(row);
  resize(OpeningSize(*this, {800, 320}));
  list_->setCurrentItem(list_->topLevelItem(0));
  list_->setFocus();
}

void frmUnfinishedRuns::AddRun(const UnfinishedRun& run) {
  if (!run.problem.empty()) {
    // It names the log, whose folder need not be told.
    const QString problem = QString::fromStdString(run.problem)
                                .replace(QString::fromStdString(run.log.string()),
                                         QString::fromStdString(run.log.filename().string()));
    auto* item = new QTreeWidgetItem(list_, {problem});
    item->setToolTip(0, problem);
    item->setFirstColumnSpanned(true);
    return;
  }
  const GenerationSummary& summary = run.summary;
  QStringList texts{TimeText(locale_, run.started),
                    QString::fromStdString(run.request.template_name),
                    DestinationText(run.request.destination)};
  const QString undone = Undone(run);
  for (const std::size_t count :
       {summary.asked, summary.done, summary.failed.size() + summary.untouched(),
        summary.in_doubt.size(), summary.held.size(), summary.no_address.size()}) {
    texts << QString::number(count);
  }
  if (!undone.isEmpty()) {
    QString& left = texts[kLeft];
    left = left == "0" ? undone : left + ", " + undone;
  }
  auto* item = new QTreeWidgetItem(list_, texts);
  for (int column = kFirstNumber; column < list_->columnCount(); ++column) {
    item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
  }
}

const UnfinishedRun& frmUnfinishedRuns::chosen() const {
  return runs_[static_cast<std::size_t>(list_->indexOfTopLevelItem(list_->currentItem()))];
}

void frmUnfinishedRuns::ShowChosen() { resume_->setEnabled(chosen().problem.empty()); }

void frmUnfinishedRuns::Choose(Choice choice) {
  choice_ = choice;
  accept();
}

}  // namespace tenora
