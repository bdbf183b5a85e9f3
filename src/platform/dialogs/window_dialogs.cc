#include "platform/dialogs/window_dialogs.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/dialogs/answer_field.h"
#include "platform/dialogs/file_filter.h"
#include "platform/dialogs/letter_question_box.h"
#include "platform/dialogs/print_box.h"
#include "platform/dialogs/window_size.h"

namespace tenora {
namespace {

// The system's texts separate lines by "\r\n".
QString Shown(const std::string& text) {
  return QString::fromStdString(text).replace("\r\n", "\n").replace('\r', '\n');
}

QMessageBox::Icon IconOf(Icon icon) {
  switch (icon) {
    case Icon::kNone:
      return QMessageBox::NoIcon;
    case Icon::kQuestion:
      return QMessageBox::Question;
    case Icon::kInformation:
      return QMessageBox::Information;
    case Icon::kExclamation:
      return QMessageBox::Warning;
    case Icon::kCritical:
      return QMessageBox::Critical;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButtons ButtonsOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::kOk:
      return QMessageBox::Ok;
    case Buttons::kOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::kYesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case Buttons::kYesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

QMessageBox::StandardButton ButtonOf(Answer answer) {
  switch (answer) {
    case Answer::kOk:
      return QMessageBox::Ok;
    case Answer::kCancel:
      return QMessageBox::Cancel;
    case Answer::kYes:
      return QMessageBox::Yes;
    case Answer::kNo:
      return QMessageBox::No;
    case Answer::kOther:
      break;
  }
  return QMessageBox::Ok;
}

Answer AnswerOf(int button, Buttons buttons) {
  if (button == QMessageBox::Ok) return Answer::kOk;
  if (button == QMessageBox::Yes) return Answer::kYes;
  if (button == QMessageBox::No) return Answer::kNo;
  return buttons == Buttons::kOk ? Answer::kOk : Answer::kCancel;
}

// Escape and closing the window are not an answer: Qt would press No.
class MessageWindow : public QMessageBox {
 public:
  using QMessageBox::QMessageBox;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->matches(QKeySequence::Cancel)) return done(Cancel);
    QMessageBox::keyPressEvent(event);
  }
  void closeEvent(QCloseEvent* event) override {
    event->accept();
    done(Cancel);
  }
};

// A short text makes a narrow box that would cut off its title, which names the procedure.
void WidenForTitle(QMessageBox& box) {
  constexpr int kFrameButtons = 160, kWidest = 640;  // pixels
  auto* grid = qobject_cast<QGridLayout*>(box.layout());
  if (grid == nullptr) return;
  const int width = box.fontMetrics().horizontalAdvance(box.windowTitle()) + kFrameButtons;
  grid->addItem(new QSpacerItem(std::min(width, kWidest), 0), grid->rowCount(), 0, 1,
                grid->columnCount());
}

// Restores the ordinary pointer while a box is shown during long work.
class OrdinaryPointer {
 public:
  OrdinaryPointer() {
    if (waiting_) QApplication::setOverrideCursor(Qt::ArrowCursor);
  }
  OrdinaryPointer(const OrdinaryPointer&) = delete;
  OrdinaryPointer& operator=(const OrdinaryPointer&) = delete;
  ~OrdinaryPointer() {
    if (waiting_) QApplication::restoreOverrideCursor();
  }

 private:
  const bool waiting_ = QApplication::overrideCursor() != nullptr;
};

// Asks for one line of text.
class InputBox : public QDialog {
 public:
  InputBox(const QString& prompt, const QString& title, const QString& default_answer,
           QWidget* parent)
      : QDialog(parent) {
    constexpr int kLeastWidth = 420;
    setWindowTitle(title);
    setMinimumWidth(kLeastWidth);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    answer_ = AddAnswerField(prompt, default_answer, layout);
    layout->addStretch();
    layout->addWidget(buttons);
  }
  QString Answer() const { return answer_->text(); }

 private:
  QLineEdit* answer_ = nullptr;
};

// Asks for one item of a list, which may be empty; nothing can be chosen then.
class ListBox : public QDialog {
 public:
  ListBox(const QString& title, const QStringList& items, int default_item, QWidget* parent)
      : QDialog(parent), list_(new QListWidget) {
    constexpr QSize kUsualSize(420, 300);
    setWindowTitle(title);
    list_->setObjectName("lstItems");
    list_->setAccessibleName(title);
    // The title again, as a label: a window manager may cut off or hide a long title.
    auto* question = new QLabel(title);
    question->setTextFormat(Qt::PlainText);
    question->setWordWrap(true);
    list_->addItems(items);
    if (default_item >= 0) list_->setCurrentRow(default_item);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    auto* ok = buttons->button(QDialogButtonBox::Ok);
    ok->setEnabled(ChosenRow() >= 0);
    connect(list_, &QListWidget::itemSelectionChanged, ok,
            [this, ok] { ok->setEnabled(ChosenRow() >= 0); });
    connect(list_, &QListWidget::itemActivated, this, [this] {
      if (ChosenRow() >= 0) accept();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(question);
    layout->addWidget(list_);
    layout->addWidget(buttons);
    resize(kUsualSize);
  }
  // -1 when none. A list that gets the focus makes its first row the current one, unselected.
  int ChosenRow() const {
    const QList<QListWidgetItem*> chosen = list_->selectedItems();
    return chosen.isEmpty() ? -1 : list_->row(chosen.front());
  }

 private:
  QListWidget* list_;
};

QString QtFilter(const std::string& filter) {
  QStringList kinds;
  for (const FileFilter& kind : ParseFileFilter(filter)) {
    QStringList patterns;
    for (const std::string& pattern : kind.patterns) patterns << QString::fromStdString(pattern);
    kinds << QString::fromStdString(kind.name) + " (" + patterns.join(' ') + ")";
  }
  kinds << QFileDialog::tr("All files") + " (*)";
  return kinds.join(";;");
}

std::optional<std::filesystem::path> PathOf(const QString& chosen) {
  if (chosen.isEmpty()) return std::nullopt;
  return std::filesystem::path(QFile::encodeName(chosen).toStdString());
}

// No larger than the screen; Qt's own opens at its usual size.
std::optional<std::filesystem::path> ChosenIn(QFileDialog& dialog) {
  if (dialog.layout() != nullptr) dialog.resize(OpeningSize(dialog, dialog.size()));
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return PathOf(dialog.selectedFiles().value(0));
}

}  // namespace

Answer WindowDialogs::Show(const MessageBox& box) {
  const OrdinaryPointer pointer;
  MessageWindow window(IconOf(box.icon), QString::fromStdString(box.title), Shown(box.text),
                       ButtonsOf(box.buttons), QApplication::activeWindow());
  // Texts contain names and values from files: show them as plain text, not as markup.
  window.setTextFormat(Qt::PlainText);
  window.setTextInteractionFlags(Qt::TextSelectableByMouse);
  window.setDefaultButton(ButtonOf(box.default_answer));
  const QAbstractButton* other = nullptr;
  if (!box.other_button.empty()) {
    other = window.addButton(QString::fromStdString(box.other_button), QMessageBox::ActionRole);
  }
  WidenForTitle(window);
  const int pressed = window.exec();
  if (other != nullptr && window.clickedButton() == other) return Answer::kOther;
  return AnswerOf(pressed, box.buttons);
}

std::optional<std::string> WindowDialogs::AskText(const std::string& prompt,
                                                  const std::string& title,
                                                  const std::string& default_answer) {
  const OrdinaryPointer pointer;
  InputBox window(Shown(prompt), QString::fromStdString(title),
                  QString::fromStdString(default_answer), QApplication::activeWindow());
  if (window.exec() != QDialog::Accepted) return std::nullopt;
  return window.Answer().toStdString();
}

LetterAnswer WindowDialogs::AskForLetter(const LetterQuestion& question) {
  const OrdinaryPointer pointer;
  LetterQuestionBox window(question, QApplication::activeWindow());
  window.exec();
  return window.Given();
}

std::optional<std::size_t> WindowDialogs::Choose(const std::string& title,
                                                 const std::vector<std::string>& items,
                                                 std::size_t default_item) {
  const OrdinaryPointer pointer;
  QStringList texts;
  for (const std::string& item : items) texts << QString::fromStdString(item);
  const int shown = default_item < items.size() ? static_cast<int>(default_item) : -1;
  ListBox window(QString::fromStdString(title), texts, shown, QApplication::activeWindow());
  if (window.exec() != QDialog::Accepted || window.ChosenRow() < 0) return std::nullopt;
  return static_cast<std::size_t>(window.ChosenRow());
}

std::optional<PrintChoice> WindowDialogs::ChoosePrinter(const std::vector<OfferedPrinter>& printers,
                                                        const PrintChoice& shown) {
  const OrdinaryPointer pointer;
  PrintBox window(printers, shown, QApplication::activeWindow());
  if (window.exec() != QDialog::Accepted) return std::nullopt;
  return window.Choice();
}

std::optional<std::filesystem::path> WindowDialogs::ChooseFileToOpen(const std::string& title,
                                                                     const std::string& filter) {
  const OrdinaryPointer pointer;
  QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(title),
                     QString::fromStdString(last_folder_.string()), QtFilter(filter));
  dialog.setFileMode(QFileDialog::ExistingFile);
  const auto path = ChosenIn(dialog);
  if (path) last_folder_ = path->parent_path();
  return path;
}

std::optional<std::filesystem::path> WindowDialogs::ChooseFileToSave(
    const std::string& title, const std::string& filter, const std::filesystem::path& suggestion) {
  const OrdinaryPointer pointer;
  const std::filesystem::path start =
      suggestion.is_absolute() ? suggestion : last_folder_ / suggestion;
  QFileDialog dialog(QApplication::activeWindow(), QString::fromStdString(title),
                     QString::fromStdString(start.parent_path().string()), QtFilter(filter));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.selectFile(QString::fromStdString(start.filename().string()));
  const auto path = ChosenIn(dialog);
  if (path) last_folder_ = path->parent_path();
  return path;
}

}  // namespace tenora
