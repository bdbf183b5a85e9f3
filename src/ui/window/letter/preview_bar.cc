#include "ui/window/letter/preview_bar.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLocale>
#include <QPainter>
#include <QVBoxLayout>

#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

constexpr int kIconSize = 18;   // pixels
constexpr double kTint = 0.25;  // of the highlight, in the bar's ground while letters are shown

QColor Tinted(const QPalette& palette) {
  const QColor ground = palette.color(QPalette::Window), tint = palette.color(QPalette::Highlight);
  const auto mixed = [](int a, int b) { return qRound(a * (1 - kTint) + b * kTint); };
  return QColor(mixed(ground.red(), tint.red()), mixed(ground.green(), tint.green()),
                mixed(ground.blue(), tint.blue()));
}

QToolButton* MakeButton(const char* name, const char* icon) {
  auto* button = new QToolButton;
  button->setObjectName(QLatin1String(name));
  button->setIcon(LineIcon(icon));
  button->setIconSize(QSize(kIconSize, kIconSize));
  button->setAutoRaise(true);
  return button;
}

}  // namespace

PreviewBar::PreviewBar(QWidget* parent)
    : QWidget(parent),
      switch_(MakeButton("cmdPreview", "merged")),
      place_(new QLabel),
      choice_(new QWidget),
      search_(new QLineEdit),
      closed_(new QCheckBox),
      answers_(new QPushButton(tr("Answers…"))) {
  setObjectName(QStringLiteral("previewBar"));
  switch_->setText(tr("Preview"));
  switch_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  switch_->setCheckable(true);
  switch_->setToolTip(tr("Show the letters that this template makes, or its codes (F9)"));
  switch_->setAccessibleName(tr("Preview of the letters"));
  connect(switch_, &QToolButton::clicked, this, &PreviewBar::SwitchAsked);
  place_->setObjectName(QStringLiteral("lblPreviewed"));
  place_->setTextFormat(Qt::PlainText);
  place_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

  auto* first_line = new QHBoxLayout;
  first_line->setSpacing(2);
  first_line->addWidget(switch_);
  const struct {
    const char *name, *icon;
    QString tip, spoken;
    Step step;
  } steps[] = {
      {"cmdFirst", "first", tr("First (Alt+Home)"), tr("First recipient"), Step::kFirst},
      {"cmdPrevious", "before", tr("Previous (Alt+Page Up)"), tr("Previous recipient"),
       Step::kPrevious},
      {"cmdNext", "next", tr("Next (Alt+Page Down)"), tr("Next recipient"), Step::kNext},
      {"cmdLast", "last", tr("Last (Alt+End)"), tr("Last recipient"), Step::kLast},
  };
  for (const auto& each : steps) {
    QToolButton* button = MakeButton(each.name, each.icon);
    button->setToolTip(each.tip);
    button->setAccessibleName(each.spoken);
    connect(button, &QToolButton::clicked, this,
            [this, step = each.step] { emit StepAsked(step); });
    first_line->addWidget(button);
    steps_.push_back(button);
  }
  first_line->addSpacing(6);
  first_line->addWidget(place_, 1);

  search_->setObjectName(QStringLiteral("txtRecipientSearch"));
  search_->setPlaceholderText(tr("Search names and properties"));
  search_->setAccessibleName(tr("Search recipients"));
  search_->setClearButtonEnabled(true);
  search_->installEventFilter(this);
  connect(search_, &QLineEdit::textChanged, this, &PreviewBar::ListChanged);
  closed_->setObjectName(QStringLiteral("chkClosedToo"));
  connect(closed_, &QCheckBox::toggled, this, &PreviewBar::ListChanged);
  answers_->setObjectName(QStringLiteral("cmdAnswers"));
  answers_->setToolTip(tr("The answers to the template's questions, for this preview"));
  answers_->setAutoDefault(false);
  connect(answers_, &QPushButton::clicked, this, &PreviewBar::AnswersAsked);
  auto* second_line = new QHBoxLayout(choice_);
  second_line->setContentsMargins(0, 0, 0, 0);
  second_line->addWidget(search_, 1);
  second_line->addWidget(closed_);
  second_line->addWidget(answers_);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(6, 3, 6, 3);
  column->setSpacing(3);
  column->addLayout(first_line);
  column->addWidget(choice_);
  ShowCodes();
}

void PreviewBar::ShowCodes() {
  letters_ = false;
  switch_->setChecked(false);
  for (QToolButton* step : steps_) step->hide();
  choice_->hide();
  search_->clear();
  place_->clear();
  text_.clear();
  update();
}

void PreviewBar::ShowLetters(Recipients recipients, bool has_questions) {
  letters_ = true;
  switch_->setChecked(true);
  for (QToolButton* step : steps_) step->show();
  closed_->setText(recipients == Recipients::kOwners ? tr("Closed owners")
                                                     : tr("Closed tenancies"));
  closed_->setToolTip(tr("After the open ones"));
  answers_->setVisible(has_questions);
  choice_->show();
  update();
}

void PreviewBar::ShowPlace(int number, int count, const QString& name) {
  const QLocale locale;
  ShowText(count == 0
               ? tr("Nobody is found")
               : tr("%1 of %2: %3").arg(locale.toString(number), locale.toString(count), name));
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    const bool back = i < 2;
    steps_[i]->setEnabled(back ? number > 1 : number < count);
  }
}

void PreviewBar::ShowProblem(const QString& problem) { ShowText(problem); }

void PreviewBar::ShowText(const QString& text) {
  if (text_ == text) return;
  text_ = text;
  place_->setToolTip(text);
  place_->setAccessibleName(text);
  Elide();
  QAccessibleEvent told(place_, QAccessible::Alert);
  QAccessible::updateAccessibility(&told);
}

void PreviewBar::Elide() {
  place_->setText(place_->fontMetrics().elidedText(text_, Qt::ElideRight, place_->width()));
}

void PreviewBar::paintEvent(QPaintEvent* event) {
  if (letters_) QPainter(this).fillRect(rect(), Tinted(palette()));
  QWidget::paintEvent(event);
}

void PreviewBar::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  layout()->activate();
  Elide();
}

// In the search field, the keys of a list choose among those found.
bool PreviewBar::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(object, event);
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      emit StepAsked(Step::kNext);
      return true;
    case Qt::Key_Up:
      emit StepAsked(Step::kPrevious);
      return true;
    default:
      return false;
  }
}

}  // namespace tenora
