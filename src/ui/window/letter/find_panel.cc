#include "ui/window/letter/find_panel.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>
#include <initializer_list>

#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

constexpr int kLongestText = 1000;  // characters
constexpr int kHintLength = 60;

using Found = LetterSearch::Found;
using Replaced = LetterSearch::Replaced;

QLineEdit* MakeField(const char* name) {
  auto* field = new QLineEdit;
  field->setObjectName(QLatin1String(name));
  field->setMaxLength(kLongestText);
  return field;
}

QCheckBox* MakeChoice(const char* name, const QString& text) {
  auto* box = new QCheckBox(text);
  box->setObjectName(QLatin1String(name));
  return box;
}

QPushButton* MakeButton(const char* name, const QString& text) {
  auto* button = new QPushButton(text);
  button->setObjectName(QLatin1String(name));
  return button;
}

QString ToldOf(const LetterSearch::Count& count) {
  QString told = count.replaced == 0   ? FindPanel::tr("None was replaced")
                 : count.replaced == 1 ? FindPanel::tr("1 was replaced")
                                       : FindPanel::tr("%1 were replaced").arg(count.replaced);
  if (count.in_code == 1) {
    told += FindPanel::tr("; 1 inside a merge code was left as it is");
  } else if (count.in_code > 1) {
    told += FindPanel::tr("; %1 inside merge codes were left as they are").arg(count.in_code);
  }
  told += QLatin1Char('.');
  if (count.kept > 0) told += FindPanel::tr(" %1 in protected text stayed.").arg(count.kept);
  return told;
}

}  // namespace

FindPanel::FindPanel(Dialogs& dialogs, QWidget* parent)
    : QFrame(parent),
      dialogs_(dialogs),
      text_(MakeField("txtFind")),
      with_(MakeField("txtReplaceWith")),
      match_case_(MakeChoice("chkMatchCase", tr("&Match case"))),
      whole_words_(MakeChoice("chkWholeWords", tr("Whole wor&ds"))),
      in_selection_(MakeChoice("chkInSelection", tr("In &selection"))),
      next_(MakeButton("cmdFindNext", tr("Find Ne&xt"))),
      previous_(MakeButton("cmdFindPrevious", tr("Find &Previous"))),
      replace_(MakeButton("cmdReplace", tr("&Replace"))),
      replace_all_(MakeButton("cmdReplaceAll", tr("Replace &All"))),
      message_(new QLabel) {
  setObjectName(QStringLiteral("frmReplace"));
  setAccessibleName(tr("Find and replace"));
  Build();
  connect(next_, &QPushButton::clicked, this, [this] { Find(Direction::kForward); });
  connect(previous_, &QPushButton::clicked, this, [this] { Find(Direction::kBackward); });
  connect(replace_, &QPushButton::clicked, this, &FindPanel::Replace);
  connect(replace_all_, &QPushButton::clicked, this, &FindPanel::ReplaceAll);
  connect(in_selection_, &QCheckBox::toggled, this, &FindPanel::Limit);
  connect(text_, &QLineEdit::textChanged, this, &FindPanel::ShowWhatApplies);
  for (QWidget* each :
       std::initializer_list<QWidget*>{text_, with_, next_, previous_, replace_, replace_all_,
                                       match_case_, whole_words_, in_selection_}) {
    each->installEventFilter(this);
  }
  ShowWhatApplies();
  hide();
}

void FindPanel::Build() {
  auto* close = new QToolButton;
  close->setObjectName(QStringLiteral("cmdCloseFind"));
  close->setIcon(LineIcon("close"));
  close->setAutoRaise(true);
  close->setToolTip(tr("Close (Esc)"));
  close->setAccessibleName(tr("Close find and replace"));
  connect(close, &QToolButton::clicked, this, &FindPanel::Leave);
  message_->setObjectName(QStringLiteral("lblFindResult"));
  message_->setTextFormat(Qt::PlainText);
  message_->setWordWrap(true);

  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(8, 6, 8, 6);
  const auto add = [&](int row, const QString& caption, QLineEdit* field) {
    auto* label = new QLabel(caption);
    label->setBuddy(field);
    grid->addWidget(label, row, 0);
    grid->addWidget(field, row, 1);
  };
  add(0, tr("Fi&nd:"), text_);
  add(1, tr("Rep&lace with:"), with_);
  grid->addWidget(next_, 0, 2);
  grid->addWidget(previous_, 0, 3);
  grid->addWidget(close, 0, 4);
  grid->addWidget(replace_, 1, 2);
  grid->addWidget(replace_all_, 1, 3);
  auto* choices = new QHBoxLayout;
  for (QCheckBox* box : {match_case_, whole_words_, in_selection_}) choices->addWidget(box);
  choices->addSpacing(12);
  choices->addWidget(message_, 1);
  grid->addLayout(choices, 2, 1, 1, 4);
  grid->setColumnStretch(1, 1);
  // From field to field first, as it is typed.
  setTabOrder(text_, with_);
  QWidget* before = with_;
  for (QWidget* each :
       std::initializer_list<QWidget*>{next_, previous_, replace_, replace_all_, match_case_,
                                       whole_words_, in_selection_, close}) {
    setTabOrder(before, each);
    before = each;
  }
}

void FindPanel::SetLetter(LetterWindow* letter) {
  disconnect(text_change_);
  if (letter != nullptr) {
    text_change_ =
        connect(&letter->shown_editor(), &QTextEdit::textChanged, this, &FindPanel::ForgetMessage);
  }
  if (letter == letter_) return ShowWhatApplies();
  in_selection_->setChecked(false);
  letter_ = letter;
  Tell({});
  ShowWhatApplies();
  if (letter == nullptr) hide();
}

void FindPanel::Open() {
  if (!letter_) return;
  const QTextCursor cursor = letter_->shown_editor().textCursor();
  // A selection that is being searched stays so until something else is selected.
  if (!in_selection_->isChecked() || cursor.hasSelection()) BeginWith(cursor.selectedText());
  Tell({});
  show();
  text_->setFocus(Qt::ShortcutFocusReason);
  text_->selectAll();
  emit Opened();
}

void FindPanel::BeginWith(const QString& selected) {
  const bool lines = selected.contains(QChar::ParagraphSeparator);
  if (!selected.isEmpty() && !lines) {
    text_->setText(selected);
  } else if (!letter_->shown_letter().members().SearchText.empty()) {
    text_->setText(QString::fromStdString(letter_->shown_letter().members().SearchText));
  }
  in_selection_->setChecked(false);
  if (lines) in_selection_->setChecked(true);
}

void FindPanel::Leave() {
  in_selection_->setChecked(false);
  // First: a panel hidden with the keyboard hands it to another letter, which comes to the front.
  if (letter_) letter_->shown_editor().setFocus();
  hide();
}

void FindPanel::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) return Leave();
  QFrame::keyPressEvent(event);
}

// Enter does what the line is for, as in a dialog, and after a choice finds by it; on a button it
// presses that.
bool FindPanel::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) return QFrame::eventFilter(object, event);
  const auto& key = *static_cast<QKeyEvent*>(event);
  if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) return false;
  const bool back = (key.modifiers() & Qt::ShiftModifier) != 0;
  if (object == text_ || qobject_cast<QCheckBox*>(object) != nullptr) {
    Find(back ? Direction::kBackward : Direction::kForward);
  } else if (object == with_) {
    Replace();
  } else {
    static_cast<QPushButton*>(object)->click();
  }
  return true;
}

LetterSearch::Wanted FindPanel::Wanted() const {
  return {text_->text(), match_case_->isChecked(), whole_words_->isChecked()};
}

void FindPanel::FindPrevious() {
  if (!letter_) return;
  if (isVisible()) return Find(Direction::kBackward);
  const QString text = QString::fromStdString(letter_->shown_letter().members().SearchText);
  if (text.isEmpty()) return;
  letter_->shown_editor().setFocus();
  if (letter_->shown_editor().search().Find({text}, Direction::kBackward, false) != Found::kNo)
    return;
  dialogs_.Show({.text = "There is no earlier occurrence.", .icon = Icon::kInformation});
}

void FindPanel::Find(Direction direction) {
  if (!letter_ || text_->text().isEmpty()) return;
  // What F3 goes on with once the panel is closed.
  letter_->shown_letter().members().SearchText = text_->text().toStdString();
  switch (letter_->shown_editor().search().Find(Wanted(), direction, true)) {
    case Found::kNo:
      return ShowNotFound();
    case Found::kYes:
      return Tell({});
    case Found::kPastTheEnd:
      return Tell(direction == Direction::kForward
                      ? tr("The end was reached; this is the first one.")
                      : tr("The beginning was reached; this is the last one."));
  }
}

void FindPanel::Replace() {
  if (!replace_->isEnabled()) return;
  const Replaced replaced = letter_->shown_editor().search().Replace(Wanted(), with_->text());
  Find(Direction::kForward);
  const QString found = message_->text();
  if (replaced == Replaced::kYes && found.isEmpty()) Tell(tr("Replaced; this is the next one."));
  if (replaced == Replaced::kInCode) {
    Tell(tr("The one inside a merge code was left as it is.") +
         (found.isEmpty() ? QString() : QLatin1Char(' ') + found));
  }
}

void FindPanel::ReplaceAll() {
  if (!letter_ || text_->text().isEmpty()) return;
  letter_->shown_letter().members().SearchText = text_->text().toStdString();
  const LetterSearch::Count count =
      letter_->shown_editor().search().ReplaceAll(Wanted(), with_->text());
  if (count.replaced + count.kept + count.in_code == 0) return ShowNotFound();
  Tell(ToldOf(count));
}

void FindPanel::Limit(bool limit) {
  Tell({});
  if (!letter_) return;
  if (!limit) return letter_->shown_editor().search().Unlimit();
  if (letter_->shown_editor().search().LimitToSelection()) return;
  in_selection_->setChecked(false);
  Tell(tr("Nothing is selected in the letter."));
}

void FindPanel::ShowNotFound() {
  const QString text = text_->text().left(kHintLength);
  Tell(in_selection_->isChecked() ? tr("\"%1\" is not in the selected text.").arg(text)
                                  : tr("\"%1\" is not in this letter.").arg(text));
}

void FindPanel::Tell(const QString& message) {
  message_->setText(message);
  told_revision_ = letter_ ? letter_->shown_editor().document()->revision() : 0;
  if (message.isEmpty()) return;
  message_->setAccessibleName(message);
  QAccessibleEvent told(message_, QAccessible::Alert);
  QAccessible::updateAccessibility(&told);
}

// After an undo or typing it may no longer be true. What marks words and codes changes no text.
void FindPanel::ForgetMessage() {
  if (letter_ && letter_->shown_editor().document()->revision() != told_revision_) Tell({});
}

void FindPanel::ShowWhatApplies() {
  const bool has_text = !text_->text().isEmpty();
  const bool may_write = letter_ && !letter_->shown_editor().isReadOnly();
  for (QPushButton* button : {next_, previous_}) button->setEnabled(has_text);
  for (QPushButton* button : {replace_, replace_all_}) button->setEnabled(has_text && may_write);
}

}  // namespace tenora
