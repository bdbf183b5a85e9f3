// The pages of the settings dialog. Each shows what is stored and stores what it shows.
#pragma once

#include <QWidget>
#include <functional>
#include <string_view>
#include <vector>

#include "rental/session.h"
#include "ui/dialogs/settings_tests.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tenora {

class SettingsPage : public QWidget {
 public:
  using QWidget::QWidget;
  virtual void Save() = 0;
};

// A button that runs a test on another thread and shows the result below.
class TestRunner : public QWidget {
  Q_OBJECT

 public:
  // `prepare` is called on this thread and returns what runs on the other one.
  TestRunner(const QString& caption, const char* button_name,
             std::function<std::function<TestResult()>()> prepare);
  void Run();

 private:
  void ShowResult(const TestResult& result);

  std::function<std::function<TestResult()>()> prepare_;
  QPushButton* button_;
  QLabel* result_;
  int latest_ = 0;  // results of earlier tests are not shown
};

class DatabasePage : public SettingsPage {
  Q_OBJECT

 public:
  explicit DatabasePage(Session& session);
  void Save() override;

 private:
  void Browse();
  QString Location() const;

  Session& session_;
  QRadioButton* own_;
  QRadioButton* networked_;
  QLineEdit* location_;
  TestRunner* test_;
};

// Outgoing mail is configured by the management package, in its database: read-only here.
class MailPage : public SettingsPage {
  Q_OBJECT

 public:
  explicit MailPage(Session& session);
  void Save() override {}
};

class PrintingPage : public SettingsPage {
  Q_OBJECT

 public:
  explicit PrintingPage(Session& session);
  void Save() override;

 private:
  // The files of generated letters, for one kind of template.
  struct FileNames {
    std::string_view kind;
    const char* setting;
    QLineEdit* pattern;
    QLabel* example;
  };

  QWidget* MakeFileNames();
  // What the pattern gives, or what is wrong with it; true when nothing is.
  bool ShowExample(const FileNames& names);
  QWidget* MakeButtons();
  void ShowReceiptOptions(bool receipts);

  Session& session_;
  QCheckBox* page_width_;
  QLineEdit* dollar_;
  QLineEdit* cents_;
  std::vector<FileNames> file_names_;
};

class SpellingPage : public SettingsPage {
  Q_OBJECT

 public:
  explicit SpellingPage(Session& session);
  void Save() override;

 private:
  Session& session_;
  QComboBox* language_;
  QCheckBox* underline_;
};

}  // namespace tenora
