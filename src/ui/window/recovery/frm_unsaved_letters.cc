#include "ui/window/recovery/frm_unsaved_letters.h"

#include <QCloseEvent>
#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>
#include <string>
#include <utility>

#include "letters/template_library.h"
#include "platform/dialogs/window_size.h"
#include "platform/runtime/error.h"
#include "ui/dialogs/shown_time.h"
#include "ui/window/letter/insert_list.h"
#include "ui/window/letter/showable_letter.h"

namespace tenora {
namespace {

enum Column { kLetter, kPerson, kKept, kFile };

constexpr double kZoom = 0.7;  // two letters side by side
constexpr int kListRows = 4;   // at once
constexpr QSize kUsualSize(900, 620);

QString Shown(const std::string& text) { return QString::fromStdString(text); }

// The recipient of a letter; templates have none.
QString PersonOf(const UnsavedLetter& letter) {
  const bool has_one = letter.kind == kTenantLetter || letter.kind == kOwnerLetter;
  return has_one ? Shown(letter.recipient) : frmUnsavedLetters::tr("(template)");
}

QString TitleOf(const UnsavedLetter& letter) {
  return letter.title.empty() ? frmUnsavedLetters::tr("(no name yet)") : Shown(letter.title);
}

QString FileStateOf(const UnsavedLetter& letter) {
  if (letter.path.empty()) return frmUnsavedLetters::tr("never saved");
  const std::optional<FileStamp> now = StampOf(letter.path);
  if (!now) return frmUnsavedLetters::tr("no longer there");
  if (letter.saved && *now != *letter.saved) return frmUnsavedLetters::tr("changed since");
  return frmUnsavedLetters::tr("as it was");
}

}  // namespace

frmUnsavedLetters::frmUnsavedLetters(const Locale& locale, const CustomFieldCodes& custom_fields,
                                     const std::vector<UnsavedStore::Left>& letters,
                                     Actions actions, QWidget* parent)
    : QDialog(parent),
      locale_(locale),
      custom_fields_(custom_fields),
      letters_(letters),
      actions_(std::move(actions)),
      list_(new QTreeWidget) {
  setObjectName("frmUnsavedLetters");
  setWindowTitle(tr("Unsaved Letters"));
  auto* text = new QLabel(
      tr("Tenora ended before these letters were saved. \"Recover\" opens a letter as it was "
         "typed; its file changes when you save it. \"Discard\" leaves the file as it is."));
  text->setWordWrap(true);
  auto* versions = new QSplitter;
  versions->setChildrenCollapsible(false);
  versions->addWidget(MakeVersion(kept_, "rtfKept", tr("Unsaved letter")));
  versions->addWidget(MakeVersion(saved_, "rtfSaved", tr("Saved file")));

  auto* buttons = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, auto&& pressed) {
    auto* button = new QPushButton(caption);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, pressed);
    buttons->addWidget(button);
    return button;
  };
  add(tr("&Recover"), "cmdRecover", [this] { Settle(actions_.recover); })->setDefault(true);
  add(tr("&Discard…"), "cmdDiscard", [this] { Settle(actions_.discard); });
  buttons->addStretch();
  add(tr("&Later"), "cmdLater", [this] { reject(); });

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text);
  layout->addWidget(MakeList());
  layout->addWidget(versions, 1);
  layout->addLayout(buttons);
  resize(OpeningSize(*this, kUsualSize));
  list_->setCurrentItem(list_->topLevelItem(0));
  list_->setFocus();
}

frmUnsavedLetters::~frmUnsavedLetters() {
  for (Version* version : {&kept_, &saved_}) delete version->view;  // before the letter it shows
}

QWidget* frmUnsavedLetters::MakeList() {
  list_->setObjectName("lstLetters");
  list_->setAccessibleName(tr("Unsaved letters"));
  list_->setRootIsDecorated(false);
  list_->setAllColumnsShowFocus(true);
  list_->setHeaderLabels({tr("Letter"), tr("Person"), tr("Last change"), tr("Saved file")});
  for (std::size_t i = 0; i < letters_.size(); ++i) {
    const UnsavedLetter& letter = letters_[i].letter;
    auto* item = new QTreeWidgetItem(list_, {TitleOf(letter), PersonOf(letter),
                                             ShownTime(locale_, letter.kept), FileStateOf(letter)});
    item->setData(0, Qt::UserRole, static_cast<qulonglong>(i));
    item->setToolTip(kFile, Shown(letter.path));
  }
  for (const int column : {kPerson, kKept, kFile}) list_->resizeColumnToContents(column);
  list_->header()->setStretchLastSection(false);
  list_->header()->setSectionResizeMode(kLetter, QHeaderView::Stretch);
  const int row = list_->sizeHintForRow(0);
  list_->setFixedHeight(list_->header()->sizeHint().height() + kListRows * row +
                        2 * list_->frameWidth());
  connect(list_, &QTreeWidget::currentItemChanged, this, [this] { ShowChosen(); });
  return list_;
}

QWidget* frmUnsavedLetters::MakeVersion(Version& version, const char* name,
                                        const QString& accessible_name) {
  auto* side = new QWidget;
  version.caption = new QLabel;
  version.caption->setTextFormat(Qt::PlainText);
  version.caption->setWordWrap(true);
  version.caption->setObjectName(QString(name).replace("rtf", "lbl"));
  version.view = new LetterView(version.box);
  version.view->ShowRuler(false);
  LetterEditor& editor = version.view->editor();
  editor.setObjectName(name);
  editor.setAccessibleName(accessible_name);
  version.view->MakeReadOnly();
  editor.paper().SetZoom(kZoom);
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(version.caption);
  layout->addWidget(version.view, 1);
  return side;
}

const UnsavedStore::Left& frmUnsavedLetters::Chosen() const {
  return letters_[list_->currentItem()->data(0, Qt::UserRole).toULongLong()];
}

void frmUnsavedLetters::ShowChosen() {
  if (list_->currentItem() == nullptr) return;
  const UnsavedLetter& letter = Chosen().letter;
  for (Version* version : {&kept_, &saved_}) {
    version->view->editor().SetCodes(CodesFor(ListFor(letter.kind), custom_fields_));
  }
  ShowKept(letter);
  ShowSaved(letter);
}

void frmUnsavedLetters::ShowKept(const UnsavedLetter& letter) {
  kept_.caption->setText(tr("Unsaved, %1").arg(ShownTime(locale_, letter.kept)));
  try {
    RichTextBox read;
    read.SetTextRTF(letter.text);
    RequireShowable(read, letter.title);
    kept_.box.SetText("");  // another letter, not a change of the one shown before
    kept_.box.SetTextRTF(letter.text);
  } catch (const RuntimeError& error) {
    kept_.box.SetText(error.description());
  }
  kept_.view->editor().ShowBox();
}

void frmUnsavedLetters::ShowSaved(const UnsavedLetter& letter) {
  saved_.box.SetText("");
  if (letter.path.empty()) {
    saved_.caption->setText(tr("This letter was never saved."));
  } else {
    try {
      RichTextBox read;
      read.LoadFile(letter.path);
      RequireShowable(read, letter.path);
      saved_.caption->setText(
          tr("Saved, %1").arg(ShownTime(locale_, QFileInfo(Shown(letter.path)).lastModified())));
      saved_.box.SetTextRTF(read.TextRTF());
    } catch (const RuntimeError& error) {
      saved_.caption->setText(
          tr("The saved file cannot be read: %1").arg(Shown(std::string(error.description()))));
    }
  }
  saved_.view->editor().ShowBox();
}

void frmUnsavedLetters::Settle(const std::function<bool(const UnsavedStore::Left& left)>& action) {
  if (!action(Chosen())) return;
  delete list_->currentItem();
  if (list_->topLevelItemCount() == 0) accept();
}

}  // namespace tenora
