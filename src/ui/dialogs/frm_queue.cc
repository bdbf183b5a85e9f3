#include "ui/dialogs/frm_queue.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/dialogs/window_size.h"
#include "ui/dialogs/shown_time.h"

namespace tenora {
namespace {

constexpr int kKeyRole = Qt::UserRole;  // of an item: whose it is, among those beside it

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(name);
  return widget;
}

QString Text(const std::string& text) { return QString::fromStdString(text).simplified(); }

QString Count(std::int64_t number) { return QLocale().toString(static_cast<qlonglong>(number)); }

QString StateText(const std::string& state) {
  if (state == "open") return frmQueue::tr("Open");
  if (state == "paused") return frmQueue::tr("Paused");
  if (state == "cancelled") return frmQueue::tr("Cancelled");
  if (state == "ended") return frmQueue::tr("Ended");
  return Text(state);
}

QString DestinationText(const std::string& destination) {
  if (destination == "printer") return frmQueue::tr("Printer");
  if (destination == "email") return frmQueue::tr("E-mail");
  return frmQueue::tr("Save only");
}

QString StandingText(const std::string& standing) {
  if (standing == "failed") return frmQueue::tr("Failed");
  if (standing == "later") return frmQueue::tr("Tried again");
  if (standing == "held") return frmQueue::tr("Held back");
  if (standing == "in doubt") return frmQueue::tr("In doubt");
  if (standing == "no address") return frmQueue::tr("No address");
  return Text(standing);
}

// "40 s", "12 min", "3 h 05 min".
QString SpanText(std::int64_t seconds) {
  constexpr std::int64_t kMinute = 60, kHour = 3600;
  if (seconds < 2 * kMinute) return frmQueue::tr("%1 s").arg(seconds);
  if (seconds < 2 * kHour) return frmQueue::tr("%1 min").arg((seconds + kMinute / 2) / kMinute);
  return frmQueue::tr("%1 h %2 min")
      .arg(seconds / kHour)
      .arg(seconds % kHour / kMinute, 2, 10, QLatin1Char('0'));
}

// What a row of the runs has after its name, state and destination. What there is none of is left
// empty, so that what is left to a person is seen. `open`: workers may begin letters of it.
QStringList CountTexts(bool open, const QueueCounts& counts) {
  QStringList texts{Count(counts.letters), Count(counts.done)};
  std::int64_t a_minute = 0;
  const bool moves = open && counts.Left() > 0;
  if (moves) a_minute = std::llround(counts.per_second * 60);
  for (const std::int64_t count : {counts.in_hand, counts.ready + counts.later, counts.held,
                                   counts.no_address, counts.failed, counts.in_doubt, a_minute}) {
    texts << (count == 0 ? QString() : Count(count));
  }
  const std::optional<std::int64_t> seconds = counts.SecondsLeft();
  return texts << (moves && seconds ? SpanText(*seconds) : QString());
}

// Whether "Resume" finds something to do.
bool CanResume(const QueuedRun& run) {
  if (run.state == "cancelled") return false;
  const QueueCounts all = run.Total();
  const bool waiting = std::ranges::any_of(
      run.parts, [](const QueuedPart& part) { return !part.paused_until.empty(); });
  return run.state == "paused" || waiting || all.later + all.failed + all.held + all.no_address > 0;
}

// Whether workers may begin a letter of the run: not while all its branches with some wait.
bool Moves(const QueuedRun& run) {
  return run.state == "open" && std::ranges::any_of(run.parts, [](const QueuedPart& part) {
           return part.paused_until.empty() && part.counts.Left() > 0;
         });
}

// Brings the items below `parent`, or of the tree, into the order of the rows, a row at a time.
// Items that stay keep their selection and whether they are open.
class Rows {
 public:
  Rows(QTreeWidget& tree, QTreeWidgetItem* parent)
      : parent_(parent == nullptr ? tree.invisibleRootItem() : parent) {}

  QTreeWidgetItem* Next(const QString& key, const QStringList& texts) {
    QTreeWidgetItem* item = nullptr;
    for (int at = next_; at < parent_->childCount() && item == nullptr; ++at) {
      if (parent_->child(at)->data(0, kKeyRole) != key) continue;
      item = parent_->child(at);
      if (at == next_) continue;
      // Its own rows and whether they are shown go with it.
      const bool open = item->isExpanded();
      parent_->insertChild(next_, parent_->takeChild(at));
      item->setExpanded(open);
    }
    is_new_ = item == nullptr;
    if (is_new_) {
      item = new QTreeWidgetItem;
      item->setData(0, kKeyRole, key);
      parent_->insertChild(next_, item);
    }
    ++next_;
    for (int column = 0; column < texts.size(); ++column) {
      if (item->text(column) != texts[column]) item->setText(column, texts[column]);
    }
    return item;
  }
  bool IsNew() const { return is_new_; }
  // No rows follow.
  void End() {
    while (parent_->childCount() > next_) delete parent_->takeChild(next_);
  }

 private:
  QTreeWidgetItem* parent_;
  int next_ = 0;
  bool is_new_ = false;
};

void AlignNumbers(QTreeWidgetItem& item, int first, int last) {
  for (int column = first; column <= last; ++column) {
    item.setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
  }
}

QTreeWidget* MakeTree(const char* name, const QString& spoken, const QStringList& columns) {
  auto* tree = Named(new QTreeWidget, name);
  tree->setAccessibleName(spoken);
  tree->setHeaderLabels(columns);
  tree->setAllColumnsShowFocus(true);
  tree->setAlternatingRowColors(true);
  tree->setUniformRowHeights(true);
  tree->header()->setStretchLastSection(true);
  return tree;
}

constexpr int kRunState = 1, kRunFirstNumber = 3, kRunLast = 12;  // columns of the runs
constexpr int kWorkerLast = 6;

}  // namespace

frmQueue::frmQueue(Dialogs& dialogs, const Locale& locale, const std::string& service,
                   const std::filesystem::path& data_folder, QWidget* parent)
    : QDialog(parent),
      dialogs_(dialogs),
      locale_(locale),
      runs_(MakeTree("lstRuns", tr("Runs"),
                     {tr("Run"), tr("State"), tr("Send to"), tr("Letters"), tr("Done"),
                      tr("In hand"), tr("To do"), tr("Held back"), tr("No address"), tr("Failed"),
                      tr("In doubt"), tr("A minute"), tr("Time left")})),
      letters_(MakeTree("lstLetters", tr("Letters left"),
                        {tr("Recipient"), tr("Branch"), tr("Standing"), tr("Why")})),
      workers_(MakeTree("lstWorkers", tr("Workers"),
                        {tr("Worker"), tr("Host"), tr("Process"), tr("Version"), tr("Branch"),
                         tr("In hand"), tr("Last sign")})),
      tabs_(Named(new QTabWidget, "tabQueue")),
      state_(Named(new QLabel, "lblState")),
      watch_(service, data_folder) {
  setObjectName("frmQueue");
  setWindowTitle(tr("Queue of Letters - %1").arg(QString::fromStdString(service)));
  state_->setTextFormat(Qt::PlainText);
  state_->setWordWrap(true);
  tabs_->addTab(MakeLetters(), {});
  tabs_->addTab(MakeWorkers(), {});
  auto* parts = Named(new QSplitter(Qt::Vertical), "spltParts");
  parts->addWidget(MakeRuns());
  parts->addWidget(tabs_);
  parts->setChildrenCollapsible(false);
  parts->setStretchFactor(0, 3);
  parts->setStretchFactor(1, 2);
  auto* close = Named(new QPushButton(tr("C&lose")), "cmdClose");
  close->setAutoDefault(false);
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  auto* row = new QHBoxLayout;
  row->addWidget(state_, 1);
  row->addWidget(close);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(parts, 1);
  layout->addLayout(row);
  connect(&watch_, &QueueWatch::Seen, this, &frmQueue::Show);
  connect(&watch_, &QueueWatch::Lost, this, [this](const QString& problem) {
    problem_ = problem;
    ShowState();
  });
  connect(&watch_, &QueueWatch::Done, this, [this](const QString& told) { told_ = told; });
  connect(&watch_, &QueueWatch::Refused, this, [this](const QString& problem) {
    told_.clear();
    dialogs_.Say(problem.toStdString(), windowTitle().toStdString());
  });
  ShowLetters();
  ShowWorkers();
  ShowPossible();
  ShowState();
  runs_->setFocus();
  resize(OpeningSize(*this, {1100, 600}));
  watch_.Start();
}

QWidget* frmQueue::MakeRuns() {
  for (int column = 0; column <= kRunLast; ++column) {
    runs_->setColumnWidth(column, runs_->header()->sectionSizeHint(column) + 8);
  }
  runs_->setColumnWidth(0, 190);
  runs_->setColumnWidth(kRunState, 140);
  AlignNumbers(*runs_->headerItem(), kRunFirstNumber, kRunLast);
  connect(runs_, &QTreeWidget::currentItemChanged, this, [this] {
    const QueuedRun* run = ChosenRun();
    watch_.LookAt(run == nullptr ? std::nullopt : std::optional(run->id));
    ShowPossible();
    ShowState();
  });
  auto* side = new QWidget;
  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, auto action) {
    auto* button = Named(new QPushButton(caption), name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
    return button;
  };
  pause_ = add(tr("&Pause"), "cmdPause", &frmQueue::Pause);
  resume_ = add(tr("&Resume…"), "cmdResume", &frmQueue::Resume);
  cancel_ = add(tr("&Cancel Run…"), "cmdCancelRun", &frmQueue::Cancel);
  row->addStretch();
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins({});
  column->addWidget(runs_, 1);
  column->addLayout(row);
  return side;
}

QWidget* frmQueue::MakeLetters() {
  letters_->setRootIsDecorated(false);
  letters_->setColumnWidth(0, 220);
  connect(letters_, &QTreeWidget::currentItemChanged, this, &frmQueue::ShowPossible);
  connect(letters_, &QTreeWidget::itemActivated, this, [this] { open_->click(); });
  auto* page = new QWidget;
  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, auto action) {
    auto* button = Named(new QPushButton(caption), name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
    return button;
  };
  open_ = add(tr("&Open"), "cmdOpen", [this] {
    if (const QueueView::Letter* letter = ChosenLetter()) emit OpenAsked(letter->file);
  });
  arrived_ = add(tr("It &Arrived"), "cmdArrived", [this] { ClearDoubt(true); });
  send_again_ = add(tr("&Send Again…"), "cmdSendAgain", [this] { ClearDoubt(false); });
  row->addStretch();
  auto* column = new QVBoxLayout(page);
  column->addWidget(letters_, 1);
  column->addLayout(row);
  return page;
}

QWidget* frmQueue::MakeWorkers() {
  workers_->setRootIsDecorated(false);
  workers_->setColumnWidth(1, 200);
  workers_->setColumnWidth(4, 200);
  AlignNumbers(*workers_->headerItem(), kWorkerLast - 1, kWorkerLast);
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->addWidget(workers_);
  return page;
}

void frmQueue::Show(const std::shared_ptr<const QueueView>& view) {
  problem_.clear();
  view_ = view;
  ShowRuns();
  ShowLetters();
  ShowWorkers();
  ShowPossible();
  ShowState();
}

void frmQueue::ShowRuns() {
  Rows runs(*runs_, nullptr);
  for (const QueuedRun& run : view_->runs) {
    const QueueCounts all = run.Total();
    const QString name = QStringLiteral("%1   %2").arg(run.id).arg(Text(run.template_name));
    QTreeWidgetItem* item =
        runs.Next(QString::number(run.id),
                  QStringList{name, StateText(run.state), DestinationText(run.destination)} +
                      CountTexts(Moves(run), all));
    if (runs.IsNew()) {
      AlignNumbers(*item, kRunFirstNumber, kRunLast);
      const QDateTime asked = QDateTime::fromString(QString::fromStdString(run.asked),
                                                    QStringLiteral("yyyy-MM-dd HH:mm:ss"));
      item->setToolTip(0, tr("Asked by %1, %2").arg(Text(run.asked_by), ShownTime(locale_, asked)));
    }
    const bool is_new = runs.IsNew();
    Rows parts(*runs_, item);
    for (const QueuedPart& part : run.parts) {
      const QString waits =
          part.paused_until.empty() ? QString() : tr("Waits until %1").arg(Text(part.paused_until));
      QTreeWidgetItem* row = parts.Next(
          Text(part.branch), QStringList{QString::fromStdString(part.branch), waits, QString()} +
                                 CountTexts(run.state == "open" && waits.isEmpty(), part.counts));
      row->setToolTip(kRunState, Text(part.reason));
      if (parts.IsNew()) AlignNumbers(*row, kRunFirstNumber, kRunLast);
    }
    parts.End();
    if (is_new) item->setExpanded(run.state == "open" || run.state == "paused");
  }
  runs.End();
  if (runs_->currentItem() == nullptr) runs_->setCurrentItem(runs_->topLevelItem(0));
}

void frmQueue::ShowLetters() {
  const bool whole = view_ != nullptr && view_->run.has_value();
  Rows rows(*letters_, nullptr);
  if (whole) {
    for (const auto& [letter, file] : view_->letters) {
      QString name = Text(letter.name);
      if (!letter.code.empty()) name += " (" + Text(letter.code) + ")";
      const QString key = QStringLiteral("%1 %2 %3")
                              .arg(*view_->run)
                              .arg(letter.number)
                              .arg(QString::fromStdString(letter.branch));
      QTreeWidgetItem* item = rows.Next(
          key, {name, Text(letter.branch), StandingText(letter.standing), Text(letter.detail)});
      item->setToolTip(3, Text(letter.detail));
    }
  }
  rows.End();
  if (letters_->currentItem() == nullptr) letters_->setCurrentItem(letters_->topLevelItem(0));
  QString title = tr("Le&tters Left");
  if (whole) {
    const QString count = Count(static_cast<std::int64_t>(view_->letters.size()));
    title = tr("Le&tters Left of Run %1 (%2)")
                .arg(*view_->run)
                .arg(view_->more_letters ? tr("more than %1").arg(count) : count);
  }
  tabs_->setTabText(0, title);
}

void frmQueue::ShowWorkers() {
  Rows rows(*workers_, nullptr);
  if (view_ != nullptr) {
    for (const PresentWorker& worker : view_->workers) {
      const QString id = QString::number(worker.id);
      QTreeWidgetItem* item =
          rows.Next(id, {id, Text(worker.host), QString::number(worker.pid), Text(worker.version),
                         Text(worker.branch), Count(worker.letters_in_hand),
                         tr("%1 ago").arg(SpanText(worker.seconds_since_seen))});
      if (rows.IsNew()) AlignNumbers(*item, kWorkerLast - 1, kWorkerLast);
    }
  }
  rows.End();
  tabs_->setTabText(
      1, tr("&Workers (%1)").arg(view_ == nullptr ? 0 : static_cast<int>(view_->workers.size())));
}

void frmQueue::ShowState() {
  QString text = told_;
  if (!problem_.isEmpty()) {
    text = view_ == nullptr
               ? tr("The queue cannot be seen: %1").arg(problem_)
               : tr("What is shown is old, since the queue cannot be seen: %1").arg(problem_);
  } else if (view_ == nullptr) {
    text = tr("Asking the server…");
  } else if (text.isEmpty() && view_->runs.empty()) {
    text = tr("There is no run in the queue.");
  } else if (text.isEmpty() && view_->workers.empty()) {
    text = tr("No worker is there: nothing is made of what is to do.");
  } else if (const QTreeWidgetItem* current = runs_->currentItem();
             text.isEmpty() && current != nullptr) {
    // Why a branch's letters wait.
    text = current->toolTip(kRunState);
  }
  state_->setText(text);
}

const QueuedRun* frmQueue::ChosenRun() const {
  const QTreeWidgetItem* item = runs_->currentItem();
  if (item == nullptr || view_ == nullptr) return nullptr;
  if (item->parent() != nullptr) item = item->parent();
  const auto run = std::ranges::find(view_->runs, item->data(0, kKeyRole).toInt(), &QueuedRun::id);
  return run == view_->runs.end() ? nullptr : &*run;
}

const QueueView::Letter* frmQueue::ChosenLetter() const {
  const int at = letters_->indexOfTopLevelItem(letters_->currentItem());
  const bool there = view_ != nullptr && at >= 0 && at < static_cast<int>(view_->letters.size());
  return there ? &view_->letters[static_cast<std::size_t>(at)] : nullptr;
}

void frmQueue::ShowPossible() {
  const QueuedRun* run = ChosenRun();
  const bool goes_on = run != nullptr && (run->state == "open" || run->state == "paused");
  pause_->setEnabled(run != nullptr && run->state == "open");
  resume_->setEnabled(run != nullptr && CanResume(*run));
  cancel_->setEnabled(goes_on);
  const QueueView::Letter* letter = ChosenLetter();
  const bool in_doubt = letter != nullptr && letter->letter.standing == "in doubt";
  open_->setEnabled(letter != nullptr && !letter->file.empty());
  arrived_->setEnabled(in_doubt);
  send_again_->setEnabled(in_doubt);
}

bool frmQueue::Confirmed(const std::string& question) {
  return dialogs_.Show({.text = question,
                        .title = "Queue of Letters",
                        .buttons = Buttons::kYesNo,
                        .icon = Icon::kQuestion,
                        .default_answer = Answer::kNo}) == Answer::kYes;
}

void frmQueue::Pause() {
  const QueuedRun* run = ChosenRun();
  if (run == nullptr) return;
  watch_.Do([id = run->id](LetterQueue& queue) {
    return queue.Pause(id)
               ? tr("Run %1 is paused: the letters in hand are finished, no other is begun.")
                     .arg(id)
               : tr("Run %1 was not open any more.").arg(id);
  });
}

void frmQueue::Resume() {
  const QueuedRun* run = ChosenRun();
  if (run == nullptr) return;
  const int id = run->id;
  const QueueCounts all = run->Total();
  bool send_held = false;
  if (all.held > 0) {
    const Answer answer = dialogs_.Show(
        {.text = "Resume run " + std::to_string(id) +
                 "?\r\n\r\nWhat failed, had no address or is held back is looked at again. A held "
                 "letter goes out only where nothing is wrong in it any more, unless you send the "
                 "held ones as they are (" +
                 std::to_string(all.held) + ").",
         .title = "Queue of Letters",
         .buttons = Buttons::kOkCancel,
         .icon = Icon::kQuestion,
         .other_button = "Send Held as They Are"});
    if (answer != Answer::kOk && answer != Answer::kOther) return;
    send_held = answer == Answer::kOther;
  }
  watch_.Do([id, send_held](LetterQueue& queue) {
    const int again = queue.Resume(id, send_held);
    return again == 0 ? tr("Run %1 goes on.").arg(id)
                      : tr("Run %1 goes on; letters looked at again: %2.").arg(id).arg(again);
  });
}

void frmQueue::Cancel() {
  const QueuedRun* run = ChosenRun();
  if (run == nullptr) return;
  const int id = run->id;
  const bool sure = Confirmed(
      "Cancel run " + std::to_string(id) +
      " for good?\r\n\r\nLetters that workers have in hand are finished; no other is made, ever.");
  if (!sure) return;
  watch_.Do([id](LetterQueue& queue) {
    return queue.Cancel(id) ? tr("Run %1 is cancelled.").arg(id)
                            : tr("Run %1 was cancelled already.").arg(id);
  });
}

void frmQueue::ClearDoubt(bool arrived) {
  const QueueView::Letter* chosen = ChosenLetter();
  if (chosen == nullptr || !view_->run) return;
  const OpenLetter letter = chosen->letter;
  const int id = *view_->run;
  const bool sure =
      arrived || Confirmed("Send the letter to " + letter.name +
                           " again?\r\n\r\nIf it did arrive, it arrives twice. Ask the recipient, "
                           "or look in the mail server's log or at the printer first.");
  if (!sure) return;
  watch_.Do([id, letter, arrived](LetterQueue& queue) {
    const QString name = Text(letter.name);
    if (!queue.ClearDoubt(id, letter.branch, letter.number, arrived)) {
      return tr("The letter to %1 is not in doubt any more.").arg(name);
    }
    return arrived ? tr("The letter to %1 counts as done.").arg(name)
                   : tr("The letter to %1 is sent again.").arg(name);
  });
}

}  // namespace tenora
