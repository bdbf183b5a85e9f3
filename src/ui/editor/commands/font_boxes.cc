#include "ui/editor/commands/font_boxes.h"

#include <QLineEdit>
#include <QLocale>
#include <cmath>

namespace tenora {
namespace {

constexpr double kLargestSize = 1638;  // points

void SetUp(QComboBox* box, const QString& name) {
  box->setAccessibleName(name);
  box->setToolTip(name);
  box->setEditable(true);
  // Screen readers are told of the field, which has the keyboard, by itself.
  box->lineEdit()->setAccessibleName(name);
  box->setInsertPolicy(QComboBox::NoInsert);
  box->setFocusPolicy(Qt::ClickFocus);
}

}  // namespace

FontNameBox::FontNameBox(QWidget* parent) : QComboBox(parent) {
  SetUp(this, tr("Font"));
  setObjectName(QStringLiteral("cboFont"));
  setMinimumContentsLength(18);
  setMaxVisibleItems(20);
  connect(this, &QComboBox::textActivated, this,
          [this](const QString& family) { emit Chosen(family.trimmed()); });
}

void FontNameBox::SetFonts(const QStringList& preselected, const QStringList& families) {
  const QString shown = currentText();
  QStringList others;
  for (const QString& family : families) {
    if (!preselected.contains(family, Qt::CaseInsensitive)) others.append(family);
  }
  clear();
  addItems(preselected);
  if (!preselected.isEmpty() && !others.isEmpty()) insertSeparator(count());
  addItems(others);
  setEditText(shown);
}

FontSizeBox::FontSizeBox(QWidget* parent) : QComboBox(parent) {
  SetUp(this, tr("Font size"));
  for (const int points : {8, 9, 10, 11, 12, 14, 16, 18, 20, 24, 28, 36, 48, 72})
    addItem(QString::number(points));
  // Half points too; the list has none.
  setMinimumContentsLength(5);
  connect(this, &QComboBox::textActivated, this, [this](const QString& text) {
    bool valid = false;
    const double points = QLocale().toDouble(text, &valid);
    valid = valid && points >= 1 && points <= kLargestSize;
    emit Chosen(valid ? static_cast<int>(std::lround(points * 2)) : 0);
  });
}

void FontSizeBox::ShowSize(int half_points) { setEditText(QLocale().toString(half_points / 2.0)); }

}  // namespace tenora
