#include "ui/dialogs/settings_pages.h"

#include <QAccessible>
#include <QAccessibleEvent>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QThreadPool>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdint>

#include "letters/letter_names.h"
#include "letters/template_library.h"
#include "merge/condition.h"
#include "output/email_sender.h"
#include "output/spelling_choice.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/files.h"
#include "ui/dialogs/frm_printer.h"
#include "ui/dialogs/frm_receipt.h"

namespace tenora {
namespace {

constexpr const char* kPlace = "Settings";
constexpr const char* kMail = "Mail";
constexpr const char* kCheque = "Cheque";
constexpr const char* kDatabaseName = "property.mdb";

QString Shown(const std::string& text) { return QString::fromStdString(text); }

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(name);
  return widget;
}

QLabel* Remark(const QString& text) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

QString LanguageName(const std::string& code) {
  const QLocale locale(Shown(code));
  if (locale.language() == QLocale::C) return Shown(code);
  return QLocale::languageToString(locale.language()) + " (" +
         QLocale::territoryToString(locale.territory()) + ")";
}

}  // namespace

TestRunner::TestRunner(const QString& caption, const char* button_name,
                       std::function<std::function<TestResult()>()> prepare)
    : prepare_(std::move(prepare)),
      button_(Named(new QPushButton(caption), button_name)),
      result_(Remark("")) {
  result_->setObjectName(QString(button_name).replace("cmd", "lbl"));
  button_->setAutoDefault(false);
  result_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(button_, 0, Qt::AlignLeft);
  layout->addWidget(result_);
  connect(button_, &QPushButton::clicked, this, &TestRunner::Run);
}

void TestRunner::Run() {
  const int number = ++latest_;
  result_->setText(tr("Testing…"));
  // The dialog may be closed before a slow server answers.
  const QPointer<TestRunner> self(this);
  QThreadPool::globalInstance()->start([self, number, test = prepare_()] {
    const TestResult result = test();
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [self, number, result] {
          if (self && self->latest_ == number) self->ShowResult(result);
        },
        Qt::QueuedConnection);
  });
}

void TestRunner::ShowResult(const TestResult& result) {
  result_->setText((result.good ? QString::fromUtf8("✔ ") : QString::fromUtf8("✘ ")) +
                   Shown(result.text));
  QAccessibleEvent told(result_, QAccessible::Alert);
  QAccessible::updateAccessibility(&told);
}

DatabasePage::DatabasePage(Session& session)
    : session_(session),
      own_(Named(new QRadioButton(tr("In the program &folder")), "optOwn")),
      networked_(Named(new QRadioButton(tr("At this &location")), "optNetworked")),
      location_(Named(new QLineEdit, "txtDatabaseLocation")) {
  const std::string own = (session.platform.program_folder / kDatabaseName).string();
  Settings& settings = session.settings;
  location_->setText(Shown(settings.GetSettingText(kPlace, "DatabaseLocation", own)));
  location_->setAccessibleName(tr("Location of the database"));
  const bool networked = settings.GetSettingText(kPlace, "Networkable", "0") != "0";
  (networked ? networked_ : own_)->setChecked(true);
  auto* browse = Named(new QPushButton(tr("&Browse…")), "cmdBrowse");
  browse->setAutoDefault(false);
  test_ = new TestRunner(tr("&Test"), "cmdTestDatabase", [this] {
    return [location = Location().toStdString()] { return TestDatabase(location); };
  });
  auto* row = new QHBoxLayout;
  row->addSpacing(20);
  row->addWidget(location_, 1);
  row->addWidget(browse);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(own_);
  auto* own_path = Remark(Shown(own));
  own_path->setIndent(20);
  layout->addWidget(own_path);
  layout->addWidget(networked_);
  layout->addLayout(row);
  auto* branch = Remark(
      tr("A file's path, or a branch on a database server: service=NAME branch=NAME. The service "
         "and its password are PostgreSQL's, in ~/.pg_service.conf and ~/.pgpass."));
  branch->setIndent(20);
  layout->addWidget(branch);
  layout->addSpacing(6);
  layout->addWidget(test_);
  layout->addStretch();
  layout->addWidget(
      Remark(tr("Templates and letters are stored in the same folder as the database, for a branch "
                "in the program folder. A change counts from the next start.")));
  const auto enable = [this, browse] {
    location_->setEnabled(networked_->isChecked());
    browse->setEnabled(networked_->isChecked());
  };
  enable();
  connect(networked_, &QRadioButton::toggled, this, enable);
  connect(location_, &QLineEdit::editingFinished, this, [this] {
    if (location_->isModified()) test_->Run();
    location_->setModified(false);
  });
  connect(browse, &QPushButton::clicked, this, &DatabasePage::Browse);
}

QString DatabasePage::Location() const {
  return networked_->isChecked()
             ? location_->text().trimmed()
             : Shown((session_.platform.program_folder / kDatabaseName).string());
}

void DatabasePage::Browse() {
  const auto path =
      session_.platform.dialogs.ChooseFileToOpen("Database", "Access database|*.mdb;*.accdb");
  if (!path) return;
  location_->setText(Shown(path->string()));
  test_->Run();
}

void DatabasePage::Save() {
  Settings& settings = session_.settings;
  settings.SaveSettingText(kPlace, "Networkable", networked_->isChecked() ? "1" : "0");
  if (networked_->isChecked())
    settings.SaveSettingText(kPlace, "DatabaseLocation", Location().toStdString());
}

MailPage::MailPage(Session& session) {
  const Options& options = session.options;
  // The 16-bit option stores ports above 32767 as negative numbers.
  const auto port = static_cast<std::uint16_t>(options.SmtpPort);
  auto* form = new QFormLayout;
  const auto add = [&](const QString& caption, const QString& value, const char* name) {
    auto* field = Named(Remark(value), name);
    field->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    field->setAccessibleName(caption + ": " + value);
    form->addRow(caption, field);
  };
  add(tr("Letters are sent"),
      options.SmtpSend ? tr("at once, by the server below")
                       : tr("by the desktop's mail program, after a look"),
      "lblSmtpSend");
  add(tr("Server"), Shown(options.SmtpAddress), "lblSmtpAddress");
  add(tr("Port"), QString::number(port), "lblSmtpPort");
  add(tr("Security"),
      !options.SmtpSSL ? tr("none")
      : port == 465    ? tr("encrypted from the start")
                       : tr("encrypted by STARTTLS"),
      "lblSmtpSSL");
  add(tr("Login"), Shown(options.SmtpUsername), "lblSmtpUsername");
  const bool withheld = MailPasswordIsWithheld(session);
  add(tr("Password"),
      withheld                       ? tr("only for logins with the role worker")
      : options.SmtpPassword.empty() ? tr("none")
                                     : tr("stored, not shown"),
      "lblSmtpPassword");
  add(tr("Sender"), Shown(options.SmtpSender), "lblSmtpSender");
  mail::Server server;
  server.host = options.SmtpAddress;
  server.port = port;
  server.ssl = options.SmtpSSL;
  server.user = options.SmtpUsername;
  server.password = options.SmtpPassword;
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(
      Remark(tr("All programs of the package share these. Change them in the "
                "management package's own options.")));
  layout->addSpacing(6);
  layout->addLayout(form);
  layout->addWidget(new TestRunner(tr("&Test Connection"), "cmdTestMail", [server, withheld] {
    return [server, withheld] {
      return withheld ? TestResult{false,
                                   "This login may not read the mail password on the database "
                                   "server: it sends no e-mail."}
                      : TestMailServer(server);
    };
  }));
  layout->addStretch();
}

PrintingPage::PrintingPage(Session& session)
    : session_(session),
      page_width_(Named(new QCheckBox(tr("&Wrap letters at the printer's page width")),
                        "chkPrinterPageWidth")),
      dollar_(Named(new QLineEdit, "txtDollar")),
      cents_(Named(new QLineEdit, "txtCents")) {
  Settings& settings = session.settings;
  page_width_->setChecked(settings.GetSettingText(kMail, "PrinterPageWidth", "0") != "0");
  dollar_->setText(Shown(settings.GetSettingText(kCheque, "Dollar", "Dollars")));
  cents_->setText(Shown(settings.GetSettingText(kCheque, "Cents", "Cents")));
  auto* words = new QGroupBox(tr("Currency words on cheques"));
  auto* form = new QFormLayout(words);
  form->addRow(tr("Main &unit"), dollar_);
  form->addRow(tr("&Fraction"), cents_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(page_width_);
  layout->addWidget(words);
  layout->addWidget(MakeFileNames());
  layout->addWidget(MakeButtons());
  layout->addStretch();
}

QWidget* PrintingPage::MakeFileNames() {
  auto* group = new QGroupBox(tr("Files of generated letters"));
  auto* form = new QFormLayout(group);
  const auto add = [&](const QString& caption, std::string_view kind, const char* setting) {
    const std::string stored = StoredNamePattern(session_.settings, kind);
    const FileNames names{kind, setting,
                          Named(new QLineEdit(Shown(stored)),
                                kind == kTemplates ? "txtTenantFileNames" : "txtOwnerFileNames"),
                          Remark({})};
    names.pattern->setPlaceholderText("{Template}");
    names.example->setTextFormat(Qt::PlainText);
    form->addRow(caption, names.pattern);
    form->addRow({}, names.example);
    connect(names.pattern, &QLineEdit::textChanged, this, [this, names] { ShowExample(names); });
    ShowExample(names);
    file_names_.push_back(names);
  };
  add(tr("For &tenants"), kTemplates, kTenantFileNames);
  add(tr("F&or owners"), kOwnerTemplates, kOwnerFileNames);
  return group;
}

bool PrintingPage::ShowExample(const FileNames& names) {
  QString shown;
  bool sound = true;
  try {
    const LetterNames pattern(names.pattern->text().toStdString(), names.kind);
    shown = tr("For example %1").arg(Shown(pattern.Example(session_.platform.clock.Today())));
  } catch (const ConditionError& error) {
    sound = false;
    shown = Shown(error.what()) + tr(". It is not kept like this.");
    names.pattern->setToolTip(Shown(error.possible()));
  }
  if (sound) names.pattern->setToolTip({});
  names.example->setText(shown);
  names.pattern->setAccessibleDescription(shown);
  return sound;
}

QWidget* PrintingPage::MakeButtons() {
  auto* buttons = new QGroupBox(tr("More"));
  auto* row = new QHBoxLayout(buttons);
  const auto add = [&](const QString& caption, const char* name, auto&& action) {
    auto* button = Named(new QPushButton(caption), name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
  };
  add(tr("Page Ma&rgins…"), "cmdMargins",
      [this] { frmPrinter(session_.settings, session_.platform.dialogs, this).exec(); });
  add(tr("R&eceipts…"), "cmdReceipts", [this] { ShowReceiptOptions(true); });
  add(tr("&Inspection Letters…"), "cmdInspectionLetters", [this] { ShowReceiptOptions(false); });
  row->addStretch();
  return buttons;
}

void PrintingPage::ShowReceiptOptions(bool receipts) {
  using Kind = frmReceipt::DocumentKind;
  const TemplateLibrary library(session_.database.DataFolder());
  frmReceipt(receipts ? Kind::kReceipt : Kind::kInspectionLetter, session_.settings,
             session_.platform.dialogs, library.Names(kTemplates), kApplicationTitle, this)
      .exec();
}

void PrintingPage::Save() {
  Settings& settings = session_.settings;
  settings.SaveSettingText(kMail, "PrinterPageWidth", page_width_->isChecked() ? "1" : "0");
  settings.SaveSettingText(kCheque, "Dollar", dollar_->text().toStdString());
  settings.SaveSettingText(kCheque, "Cents", cents_->text().toStdString());
  for (const FileNames& names : file_names_) {
    if (!ShowExample(names)) continue;
    settings.SaveSettingText(kMail, names.setting, names.pattern->text().toStdString());
  }
}

SpellingPage::SpellingPage(Session& session)
    : session_(session),
      language_(Named(new QComboBox, "cboLanguage")),
      underline_(
          Named(new QCheckBox(tr("&Underline misspelt words while writing")), "chkUnderline")) {
  const std::vector<std::string> installed = spelling::InstalledLanguages();
  const std::string automatic = spelling::NearestLanguage(spelling::LocaleLanguage(), installed);
  language_->addItem(automatic.empty() ? tr("No dictionary is installed")
                                       : tr("Automatic: %1").arg(LanguageName(automatic)),
                     QString());
  for (const std::string& language : installed)
    language_->addItem(LanguageName(language), Shown(language));
  const int chosen = language_->findData(Shown(ChosenLanguage(session.settings)));
  language_->setCurrentIndex(std::max(chosen, 0));
  underline_->setChecked(UnderlinesMisspelt(session.settings));
  auto* form = new QFormLayout;
  form->addRow(tr("&Language"), language_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(underline_);
  layout->addSpacing(6);
  layout->addWidget(Remark(tr("Words you add to the dictionary are kept, one a line, in\n%1")
                               .arg(Shown(SpellingOptions(session).user_words.string()))));
  layout->addStretch();
}

void SpellingPage::Save() {
  ChooseLanguage(session_.settings, language_->currentData().toString().toStdString());
  UnderlineMisspelt(session_.settings, underline_->isChecked());
}

}  // namespace tenora
