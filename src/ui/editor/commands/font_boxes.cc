// The boxes for the font and its size.
#include <QComboBox>
#include <QLocale>
#include <cmath>

#include "ui/editor/editor_actions.h"

namespace tenora {

using richtext::CharFormat;

QWidget* EditorActions::FontBox(QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setObjectName(QStringLiteral("cboFont"));
  box->setAccessibleName(tr("Font"));
  box->setToolTip(tr("Font"));
  box->setEditable(true);
  box->setInsertPolicy(QComboBox::NoInsert);
  box->setFocusPolicy(Qt::ClickFocus);
  box->setMinimumContentsLength(18);
  box->setMaxVisibleItems(20);
  const auto fill = [this, box] {
    const QString shown = box->currentText();
    box->clear();
    box->addItems(preselected_fonts_);
    if (!preselected_fonts_.isEmpty() && !fonts_.isEmpty()) {
      box->insertSeparator(box->count());
    }
    box->addItems(fonts_);
    box->setEditText(shown);
  };
  connect(this, &EditorActions::FontsChanged, box, fill);
  fill();
  connect(box, &QComboBox::textActivated, this, [this](const QString& family) {
    if (!editor_ || family.trimmed().isEmpty()) return Refresh();
    const int font = editor_->formats().FontNumber(family.trimmed());
    editor_->ChangeCharacters([=](CharFormat& format) { format.font = font; });
    editor_->setFocus();
  });
  const auto refresh = [this, box] {
    box->setEnabled(editor_ != nullptr);
    if (!editor_ || box->hasFocus()) return;
    box->setEditText(editor_->formats().FontName(editor_->CharAtCaret().font));
  };
  connect(this, &EditorActions::StateChanged, box, refresh);
  refresh();
  return box;
}

void EditorActions::SetFonts(const QStringList& preselected, const QStringList& families) {
  preselected_fonts_ = preselected;
  fonts_.clear();
  for (const QString& family : families) {
    if (!preselected.contains(family, Qt::CaseInsensitive)) fonts_.append(family);
  }
  emit FontsChanged();
}

QWidget* EditorActions::SizeBox(QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setAccessibleName(tr("Font size"));
  box->setToolTip(tr("Font size"));
  box->setEditable(true);
  box->setInsertPolicy(QComboBox::NoInsert);
  box->setFocusPolicy(Qt::ClickFocus);
  for (const int points : {8, 9, 10, 11, 12, 14, 16, 18, 20, 24, 28, 36, 48, 72})
    box->addItem(QString::number(points));
  connect(box, &QComboBox::textActivated, this, [this](const QString& text) {
    bool ok = false;
    const double points = QLocale().toDouble(text, &ok);
    if (!editor_ || !ok || points < 1 || points > 1638) return Refresh();
    const int half_points = static_cast<int>(std::lround(points * 2));
    editor_->ChangeCharacters([=](CharFormat& format) { format.half_points = half_points; });
    editor_->setFocus();
  });
  const auto refresh = [this, box] {
    box->setEnabled(editor_ != nullptr);
    if (!editor_ || box->hasFocus()) return;
    box->setEditText(QLocale().toString(editor_->CharAtCaret().half_points / 2.0));
  };
  connect(this, &EditorActions::StateChanged, box, refresh);
  refresh();
  return box;
}

}  // namespace tenora
