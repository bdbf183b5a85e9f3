#include "ui/dialogs/frm_spell_check.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/dialogs/guard.h"

namespace tenora {

frmSpellCheck::frmSpellCheck(const std::string& bad_word, spelling::Speller& speller,
                             Dialogs& dialogs, QWidget* parent)
    : QDialog(parent),
      bad_word_(bad_word),
      speller_(speller),
      dialogs_(dialogs),
      suggestions_(new QListWidget),
      replace_(new QLineEdit) {
  setObjectName("frmSpellCheck");
  setWindowTitle(tr("Spell Check"));
  auto* word = new QLineEdit(QString::fromStdString(bad_word));
  word->setObjectName("txtBadWord");
  word->setReadOnly(true);
  replace_->setObjectName("txtReplace");
  suggestions_->setObjectName("lstSuggestions");
  for (const std::string& suggestion : speller.Suggestions(bad_word)) {
    suggestions_->addItem(QString::fromStdString(suggestion));
  }
  connect(suggestions_, &QListWidget::itemClicked, this,
          [this] { replace_->setText(Suggestion()); });
  connect(suggestions_, &QListWidget::itemActivated, this, [this] {
    replace_->setText(Suggestion());
    Change();
  });

  auto* grid = new QGridLayout(this);
  const auto add = [&](const QString& caption, QWidget* field, int row) {
    auto* label = new QLabel(caption);
    label->setBuddy(field);
    // Qt gives a list no name by its label.
    field->setAccessibleName(QString(caption).remove('&'));
    grid->addWidget(label, row, 0);
    grid->addWidget(field, row + 1, 0);
  };
  add(tr("&Not in the dictionary"), word, 0);
  add(tr("&Replace with"), replace_, 2);
  add(tr("&Suggestions"), suggestions_, 4);
  grid->setRowStretch(5, 1);
  grid->setColumnStretch(0, 1);
  auto* column = new QVBoxLayout;
  MakeButtons(column);
  grid->addLayout(column, 1, 1, 5, 1);
  auto* language = new QLabel(
      tr("Language: %1").arg(QString::fromStdString(speller.Language()).replace('_', '-')));
  language->setObjectName("lblLanguage");
  grid->addWidget(language, 6, 0, 1, 2);
  replace_->setFocus();
  resize(440, 340);
}

void frmSpellCheck::MakeButtons(QVBoxLayout* column) {
  const auto add = [&](const QString& caption, const char* name, auto&& action) {
    auto* button = new QPushButton(caption);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    column->addWidget(button);
    return button;
  };
  add(tr("&Change"), "cmdChange", [this] { Change(); })->setDefault(true);
  add(tr("&Ignore"), "cmdIgnore", [this] { Ignore(); });
  add(tr("I&gnore All"), "cmdIgnoreAll", [this] { IgnoreAll(); });
  add(tr("&Add to Dictionary"), "cmdAdd", [this] { Add(); });
  column->addStretch();
  add(tr("Stop"), "cmdStop", [this] { reject(); });
}

// The first row becomes current when the list gets the focus; the user has not selected it.
QString frmSpellCheck::Suggestion() const {
  const QList<QListWidgetItem*> selected = suggestions_->selectedItems();
  return selected.isEmpty() ? QString() : selected.first()->text().trimmed();
}

void frmSpellCheck::Change() {
  // If nothing was typed or chosen, the word is unchanged.
  if (replace_->text().isEmpty() && Suggestion().isEmpty())
    replace_->setText(QString::fromStdString(bad_word_));
  const QString typed = replace_->text().trimmed();
  choice_ = {.replacement = (typed.isEmpty() ? Suggestion() : typed).toStdString(), .stop = false};
  accept();
}

void frmSpellCheck::Ignore() {
  choice_ = {.replacement = {}, .stop = false};
  accept();
}

void frmSpellCheck::IgnoreAll() {
  speller_.IgnoreAll(bad_word_);
  Ignore();
}

void frmSpellCheck::Add() {
  // A word that cannot be saved is accepted for this run.
  Guarded(dialogs_, "frmSpellCheck - cmdAdd_Click", [&] { speller_.AddWord(bad_word_); });
  Ignore();
}

}  // namespace tenora
