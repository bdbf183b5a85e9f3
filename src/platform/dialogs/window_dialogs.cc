#include "platform/dialogs/window_dialogs.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QGridLayout>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>

#include "platform/dialogs/file_filter.h"
#include "platform/dialogs/input_box.h"
#include "platform/dialogs/list_box.h"
#include "platform/dialogs/print_box.h"

namespace tenora {
namespace {

// The system's texts part their lines with "\r\n".
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
  }
  return QMessageBox::Ok;
}

Answer AnswerOf(int button, Buttons buttons) {
  if (button == QMessageBox::Ok) return Answer::kOk;
  if (button == QMessageBox::Yes) return Answer::kYes;
  if (button == QMessageBox::No) return Answer::kNo;
  return buttons == Buttons::kOk ? Answer::kOk : Answer::kCancel;
}

// Who leaves a question by Escape or by its frame has not said no: Qt would press No for them.
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

// A short text makes a narrow box, and its title, which names the procedure, would be cut.
void MakeRoomForTitle(QMessageBox& box) {
  constexpr int kFrameButtons = 160, kWidest = 640;  // pixels
  auto* grid = qobject_cast<QGridLayout*>(box.layout());
  if (grid == nullptr) return;
  const int width = box.fontMetrics().horizontalAdvance(box.windowTitle()) + kFrameButtons;
  grid->addItem(new QSpacerItem(std::min(width, kWidest), 0), grid->rowCount(), 0, 1,
                grid->columnCount());
}

// A box that comes up during long work wants an ordinary pointer in the place of the wait cursor.
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

}  // namespace

Answer WindowDialogs::Show(const MessageBox& box) {
  const OrdinaryPointer pointer;
  MessageWindow window(IconOf(box.icon), QString::fromStdString(box.title), Shown(box.text),
                       ButtonsOf(box.buttons), QApplication::activeWindow());
  // Texts carry names and values from files: what looks like markup in them is text.
  window.setTextFormat(Qt::PlainText);
  window.setTextInteractionFlags(Qt::TextSelectableByMouse);
  window.setDefaultButton(ButtonOf(box.default_answer));
  MakeRoomForTitle(window);
  return AnswerOf(window.exec(), box.buttons);
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

std::optional<std::size_t> WindowDialogs::Choose(const std::string& title,
                                                 const std::vector<std::string>& items,
                                                 std::size_t default_item) {
  const OrdinaryPointer pointer;
  QStringList texts;
  for (const std::string& item : items) texts << QString::fromStdString(item);
  ListBox window(QString::fromStdString(title), texts, static_cast<int>(default_item),
                 QApplication::activeWindow());
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
  const auto path = PathOf(QFileDialog::getOpenFileName(
      QApplication::activeWindow(), QString::fromStdString(title),
      QString::fromStdString(last_folder_.string()), QtFilter(filter)));
  if (path) last_folder_ = path->parent_path();
  return path;
}

std::optional<std::filesystem::path> WindowDialogs::ChooseFileToSave(
    const std::string& title, const std::string& filter, const std::filesystem::path& suggestion) {
  const OrdinaryPointer pointer;
  const std::filesystem::path start =
      suggestion.is_absolute() ? suggestion : last_folder_ / suggestion;
  const auto path = PathOf(
      QFileDialog::getSaveFileName(QApplication::activeWindow(), QString::fromStdString(title),
                                   QString::fromStdString(start.string()), QtFilter(filter)));
  if (path) last_folder_ = path->parent_path();
  return path;
}

}  // namespace tenora
