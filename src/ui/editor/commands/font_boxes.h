// The boxes of a tool bar that show the font at the caret and its size, and let them be chosen.
#pragma once

#include <QComboBox>
#include <QStringList>

namespace tenora {

class FontNameBox : public QComboBox {
  Q_OBJECT

 public:
  explicit FontNameBox(QWidget* parent);

  // Lists the preselected fonts first, then a separator and the other families.
  void SetFonts(const QStringList& preselected, const QStringList& families);

 signals:
  // Empty when no name was typed.
  void Chosen(const QString& family);
};

class FontSizeBox : public QComboBox {
  Q_OBJECT

 public:
  explicit FontSizeBox(QWidget* parent);

  void ShowSize(int half_points);

 signals:
  // 0 when no size was typed, or one that no font can have.
  void Chosen(int half_points);
};

}  // namespace tenora
