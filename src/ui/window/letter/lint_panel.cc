#include "ui/window/letter/lint_panel.h"

#include <QMainWindow>
#include <algorithm>
#include <iterator>
#include <utility>

#include "letters/paper_lint.h"
#include "ui/window/letter/insert_list.h"

namespace tenora {
namespace {

constexpr int kHeight = 130;  // pixels, but no more of a window than
constexpr int kShare = 5;

}  // namespace

LintPanel::LintPanel(QWidget* parent) : QDockWidget(tr("Template Check"), parent) {
  setObjectName(QStringLiteral("dckTemplateCheck"));
  setAllowedAreas(Qt::BottomDockWidgetArea | Qt::TopDockWidgetArea);
  list_ = new QListWidget(this);
  list_->setObjectName(QStringLiteral("lstFindings"));
  list_->setAccessibleName(tr("Findings"));
  list_->setFrameShape(QFrame::NoFrame);
  list_->setWordWrap(true);
  list_->setAlternatingRowColors(true);
  list_->setMinimumHeight(2 * list_->fontMetrics().lineSpacing());  // it scrolls
  setWidget(list_);
  connect(list_, &QListWidget::currentRowChanged, this, &LintPanel::Select);
  connect(list_, &QListWidget::itemActivated, this, [this] { Select(list_->currentRow()); });
}

void LintPanel::Check(LetterWindow& letter, Date today, const CustomFieldCodes& custom_fields) {
  const TemplateKind kind = ListFor(letter.letter().members().Kind);
  const RichTextBox& text = letter.letter().rtfLetter;
  std::vector<TemplateFinding> findings = LintTemplate(text, kind, today, &custom_fields);
  std::ranges::move(LintPaper(text), std::back_inserter(findings));
  const bool has_codes = text.TextRTF().find("<<") != std::string::npos;
  if (!checked_.contains(&letter)) {
    connect(&letter, &QObject::destroyed, this, [this, gone = &letter] { checked_.erase(gone); });
  }
  checked_[&letter] = {std::move(findings), has_codes};
  letter_ = &letter;
  Show();
  show();
  if (auto* window = qobject_cast<QMainWindow*>(parentWidget())) {
    window->resizeDocks({this}, {std::min(kHeight, window->height() / kShare)}, Qt::Vertical);
  }
}

void LintPanel::SetLetter(LetterWindow* letter) {
  if (letter == nullptr) {
    hide();
    list_->clear();
  }
  if (letter == letter_.data()) {
    if (letter != nullptr) ShowName();
    return;
  }
  letter_ = letter;
  if (letter != nullptr) Show();
}

void LintPanel::ShowName() { setWindowTitle(tr("Template Check: %1").arg(letter_->ShownName())); }

void LintPanel::Show() {
  ShowName();
  const auto checked = checked_.find(letter_.data());
  list_->clear();
  if (checked == checked_.end()) {
    list_->addItem(tr("This letter has not been checked yet: press F8."));
    return;
  }
  for (const TemplateFinding& finding : checked->second.findings) {
    list_->addItem(QString::fromStdString(finding.Text()));
  }
  if (list_->count() > 0) return;
  list_->addItem(checked->second.has_codes
                     ? tr("Nothing was found: every code will be filled.")
                     : tr("There is no merge code in this letter: everyone gets the same text. "
                          "The Insert menu puts codes at the caret."));
}

void LintPanel::Select(int row) {
  const auto checked = checked_.find(letter_.data());
  if (!letter_ || checked == checked_.end() || row < 0) return;
  const std::vector<TemplateFinding>& findings = checked->second.findings;
  if (static_cast<std::size_t>(row) >= findings.size()) return;
  const TemplateFinding& finding = findings[static_cast<std::size_t>(row)];
  if (finding.position < 0) return;
  letter_->ShowPreview(false);
  letter_->letter().rtfLetter.Select(finding.position, finding.length);
  letter_->ShowLetter();
}

}  // namespace tenora
