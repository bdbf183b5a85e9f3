#include "ui/window/letter/lint_panel.h"

#include <QMainWindow>
#include <algorithm>
#include <iterator>

#include "letters/paper_lint.h"
#include "ui/window/letter/insert_list.h"

namespace tenora {
namespace {

constexpr int kHeight = 130;  // pixels

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
  Show(letter, findings);
  if (auto* window = qobject_cast<QMainWindow*>(parentWidget())) {
    window->resizeDocks({this}, {kHeight}, Qt::Vertical);
  }
}

void LintPanel::Show(LetterWindow& letter, const std::vector<TemplateFinding>& findings) {
  list_->clear();  // before the findings that its rows refer to are replaced
  letter_ = &letter;
  findings_ = findings;
  for (const TemplateFinding& finding : findings_) {
    list_->addItem(QString::fromStdString(finding.Text()));
  }
  if (findings_.empty()) {
    const bool codes = letter.letter().rtfLetter.TextRTF().find("<<") != std::string::npos;
    list_->addItem(codes ? tr("Nothing was found: every code will be filled.")
                         : tr("There is no merge code in this letter: everyone gets the same text. "
                              "The Insert menu puts codes at the caret."));
  }
  show();
}

void LintPanel::Select(int row) {
  if (!letter_ || row < 0 || static_cast<std::size_t>(row) >= findings_.size()) return;
  const TemplateFinding& finding = findings_[static_cast<std::size_t>(row)];
  if (finding.position < 0) return;
  letter_->letter().rtfLetter.Select(finding.position, finding.length);
  letter_->ShowLetter();
}

}  // namespace tenora
