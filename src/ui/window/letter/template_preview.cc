#include "ui/window/letter/template_preview.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStatusTipEvent>
#include <algorithm>
#include <utility>

#include "letters/template_library.h"
#include "rental/detached_session.h"
#include "ui/dialogs/frm_answers.h"
#include "ui/window/letter/showable_letter.h"

namespace tenora {
namespace {

constexpr int kFindingsWidth = 260;  // pixels
// Narrower, the findings are below the letter, which would be cut off.
constexpr int kWide = 1080;

}  // namespace

TemplatePreview::TemplatePreview(Session& session, PreviewBar& bar, QWidget* parent)
    : QSplitter(parent), session_(session), bar_(bar), letter_(session, host_) {
  setObjectName(QStringLiteral("templatePreview"));
  view_ = new LetterView(letter_.rtfLetter, this);
  view_->MakeReadOnly();
  editor().setObjectName(QStringLiteral("rtfPreview"));
  editor().setAccessibleName(tr("Preview of the letter"));
  editor().installEventFilter(this);
  pages_ = std::make_unique<PageFinder>(editor(), letter_.rtfLetter);
  findings_ = new QListWidget(this);
  findings_->setObjectName(QStringLiteral("lstPreviewFindings"));
  findings_->setAccessibleName(tr("Findings in the letter"));
  findings_->setWordWrap(true);
  findings_->setAlternatingRowColors(true);
  findings_->setFrameShape(QFrame::NoFrame);
  findings_->setMinimumHeight(2 * findings_->fontMetrics().lineSpacing());
  findings_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  connect(findings_, &QListWidget::itemActivated, this,
          [this](const QListWidgetItem* item) { Select(*item); });
  addWidget(view_);
  addWidget(findings_);
  setStretchFactor(0, 1);
  setOrientation(Qt::Vertical);
  setSizes({kWide, findings_height_});
  connect(this, &QSplitter::splitterMoved, this, [this] {
    if (!low_ && orientation() == Qt::Vertical) findings_height_ = findings_->height();
  });
  connect(&bar_, &PreviewBar::StepAsked, this, &TemplatePreview::Step);
  connect(&bar_, &PreviewBar::ListChanged, this, &TemplatePreview::List);
  connect(&bar_, &PreviewBar::AnswersAsked, this, &TemplatePreview::AskAnswers);
}

TemplatePreview::~TemplatePreview() {
  pages_.reset();
  delete view_;  // before the letter it shows
}

void TemplatePreview::Begin(const frmLetter& letter_template) {
  const LetterMembers& members = letter_template.members();
  const bool owners = members.Kind == kOwnerTemplates;
  kind_ = members.Kind;
  title_ = letter_.members().LetterTitle = members.LetterTitle;
  template_source_ = letter_template.rtfLetter.TextRTF();
  letter_.members().Kind = owners ? kOwnerLetter : kTenantLetter;
  letter_.members().SearchText = members.SearchText;
  Prepare(letter_template.rtfLetter);
  bar_.ShowLetters(owners ? PreviewBar::Recipients::kOwners : PreviewBar::Recipients::kTenancies,
                   !preview_->Questions().empty());
  AskWhatIsNew();
  Refresh();
}

void TemplatePreview::End() {
  preview_.reset();
  recipient_.reset();
  rows_.clear();
}

void TemplatePreview::Prepare(const RichTextBox& text) {
  beside_ = session_.Beside();
  preview_ = std::make_unique<LetterPreview>(session_, kind_, title_);
  preview_->SetTemplate(text);
  preview_->SetAnswers(answers_);
}

void TemplatePreview::Refresh() {
  if (preview_ == nullptr) return;
  if (beside_ != session_.Beside()) {
    RichTextBox text;
    text.SetTextRTF(template_source_);
    Prepare(text);
  }
  // Whoever has it is about to refresh it.
  if (auto taken = beside_->TryTake(); !reading_ && taken && beside_->IsFresh()) {
    taken.unlock();
    return TakeData();
  }
  if (rows_.empty()) {
    problem_.clear();
    ShowLetter();
    bar_.ShowProblem(tr("Reading the recipients…"));
  }
  if (std::exchange(reading_, true)) return;
  reader_ = std::jthread([this, beside = beside_] {
    {
      const auto taken = beside->Take();
      beside->Refresh();
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
          reader_.join();
          reading_ = false;
          TakeData();
        },
        Qt::QueuedConnection);
  });
}

void TemplatePreview::TakeData() {
  if (preview_ == nullptr) return;
  problem_ = preview_->Load();
  List();
}

void TemplatePreview::List() {
  if (preview_ == nullptr || reading_) return;
  rows_ = preview_->Recipients(
      {.closed = bar_.WithClosed(), .search = bar_.SearchText().toStdString()});
  const auto same = std::ranges::find(rows_, key_, &RecipientRow::key);
  at_ = same == rows_.end() ? 0 : static_cast<std::size_t>(same - rows_.begin());
  ShowLetter();
}

void TemplatePreview::Step(PreviewBar::Step step) {
  if (rows_.empty()) return;
  const std::size_t before = at_, last = rows_.size() - 1;
  switch (step) {
    case PreviewBar::Step::kFirst:
      at_ = 0;
      break;
    case PreviewBar::Step::kPrevious:
      if (at_ > 0) --at_;
      break;
    case PreviewBar::Step::kNext:
      if (at_ < last) ++at_;
      break;
    case PreviewBar::Step::kLast:
      at_ = last;
      break;
  }
  if (at_ != before) ShowLetter();
}

void TemplatePreview::resizeEvent(QResizeEvent* event) {
  const Qt::Orientation fitting = width() < kWide ? Qt::Vertical : Qt::Horizontal;
  if (orientation() != fitting) {
    setOrientation(fitting);
    setSizes({kWide, fitting == Qt::Vertical ? findings_height_ : kFindingsWidth});
    KeepFindingsLow();
  }
  QSplitter::resizeEvent(event);
}

void TemplatePreview::KeepFindingsLow() {
  const bool low = nothing_wrong_ && orientation() == Qt::Vertical;
  if (low == low_) return;
  low_ = low;
  const int line = findings_->fontMetrics().lineSpacing();
  if (low) {
    const int low_height = std::max(findings_->sizeHintForRow(0), line);
    findings_->setFixedHeight(low_height);
    setSizes({kWide, low_height});
    return;
  }
  findings_->setMinimumHeight(2 * line);  // it scrolls
  findings_->setMaximumHeight(QWIDGETSIZE_MAX);
  // Not most of a low window.
  if (orientation() == Qt::Vertical) setSizes({kWide, std::min(findings_height_, height() / 3)});
}

void TemplatePreview::AskWhatIsNew() {
  const auto& questions = preview_->Questions();
  const bool all_asked = std::ranges::all_of(
      questions, [&](const std::string& question) { return asked_.contains(question); });
  asked_.insert(questions.begin(), questions.end());
  preview_->SetAnswers(answers_);
  if (all_asked) return;
  frmAnswers ask(questions, answers_, frmAnswers::Purpose::kPreview, window());
  if (ask.exec() != QDialog::Accepted) return;
  answers_ = ask.Answers();
  preview_->SetAnswers(answers_);
}

void TemplatePreview::AskAnswers() {
  if (preview_ == nullptr) return;
  frmAnswers ask(preview_->Questions(), answers_, frmAnswers::Purpose::kPreview, window());
  if (ask.exec() != QDialog::Accepted) return;
  answers_ = ask.Answers();
  preview_->SetAnswers(answers_);
  ShowLetter();
}

void TemplatePreview::ShowLetter() {
  PreviewedLetter shown{template_source_, problem_, {}};
  recipient_.reset();
  if (at_ < rows_.size()) {
    const RecipientRow& row = rows_[at_];
    recipient_ = row.recipient;
    key_ = row.key;
    shown = preview_->Show(row.recipient);
    letter_.members().LetterTitle = title_ + " – preview of " + row.recipient.name;
    letter_.members().RecipientName = row.recipient.name;
    letter_.members().TenantCode = row.recipient.code;
    bar_.ShowPlace(static_cast<int>(at_) + 1, static_cast<int>(rows_.size()),
                   QString::fromStdString(row.text));
  } else {
    bar_.ShowPlace(0, 0, {});
  }
  if (!shown.problem.empty()) bar_.ShowProblem(QString::fromStdString(shown.problem));
  ShowText(shown.source);
  ShowFindings(shown);
  emit LetterShown();
}

void TemplatePreview::ShowText(const std::string& source) {
  const int scrolled = editor().verticalScrollBar()->value();
  RichTextBox& box = letter_.rtfLetter;
  box.SetText("");  // another letter, not a change of the one shown before
  box.SetTextRTF(source);
  editor().ShowBox();
  // The same place of the next person's letter, once the editor has gone to the top of it.
  QMetaObject::invokeMethod(
      this, [this, scrolled] { editor().verticalScrollBar()->setValue(scrolled); },
      Qt::QueuedConnection);
}

void TemplatePreview::ShowFindings(const PreviewedLetter& shown) {
  findings_->clear();
  const auto add = [this](const QString& text, const std::string& place) {
    auto* item = new QListWidgetItem(text, findings_);
    item->setData(Qt::UserRole, QString::fromStdString(place));
    item->setToolTip(text);
  };
  if (!shown.problem.empty()) add(QString::fromStdString(shown.problem), {});
  for (const LetterFinding& finding : shown.findings) {
    const std::string text = (finding.code.empty() ? "" : finding.code + ": ") + finding.sentence;
    const QString told = QString::fromStdString(text);
    add(finding.weight == FindingWeight::kHold ? tr("Would be held back: %1").arg(told) : told,
        finding.shown);
  }
  nothing_wrong_ = findings_->count() == 0;
  if (nothing_wrong_ && recipient_) add(tr("Nothing is wrong with this letter."), {});
  KeepFindingsLow();
}

void TemplatePreview::Select(const QListWidgetItem& finding) {
  const std::string place = finding.data(Qt::UserRole).toString().toStdString();
  if (place.empty() || letter_.rtfLetter.Find(place, 0) < 0) return;
  editor().ShowBox();
  editor().setFocus();
}

// Whoever types is told why nothing happens.
bool TemplatePreview::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const QString text = static_cast<QKeyEvent*>(event)->text();
    if (!text.isEmpty() && text.at(0).isPrint()) {
      QStatusTipEvent tip(tr("A preview: Escape goes back to the codes"));
      QApplication::sendEvent(&editor(), &tip);
    }
  }
  return QSplitter::eventFilter(object, event);
}

}  // namespace tenora
