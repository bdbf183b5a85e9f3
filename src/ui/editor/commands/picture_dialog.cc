#include "ui/editor/commands/picture_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <cmath>

#include "platform/richtext/document.h"
#include "ui/editor/commands/editor_dialogs.h"

namespace tenora {
namespace {

using richtext::PictureLook;
using richtext::PicturePlace;

constexpr int kLeastLength = 57;  // twips: a millimetre

QString Tr(const char* text) { return QCoreApplication::translate("EditorDialogs", text); }

class PictureDialog : public QDialog {
 public:
  PictureDialog(QWidget* parent, const PictureLook& now, const PictureLook& own)
      : QDialog(parent), own_(own) {
    setObjectName(QStringLiteral("dlgPicture"));
    setWindowTitle(Tr("Picture"));
    width_ = LengthBox("spnWidth");
    height_ = LengthBox("spnHeight");
    ratio_ = new QCheckBox(Tr("&Keep the ratio of width and height"), this);
    ratio_->setObjectName(QStringLiteral("chkRatio"));
    ratio_->setChecked(true);
    auto* original = new QPushButton(Tr("&Original Size"), this);
    original->setObjectName(QStringLiteral("cmdOriginal"));
    original->setAutoDefault(false);
    place_ = new QComboBox(this);
    place_->setObjectName(QStringLiteral("cboPlace"));
    const auto offer = [&](const QString& text, PicturePlace place) {
      place_->addItem(text, static_cast<int>(place));
    };
    offer(Tr("In the line, as a letter is"), PicturePlace::kInLine);
    offer(Tr("At the left, text beside it"), PicturePlace::kLeft);
    offer(Tr("At the right, text beside it"), PicturePlace::kRight);
    if (now.place == PicturePlace::kAsSet)
      offer(Tr("Where the word processor has put it"), PicturePlace::kAsSet);
    place_->setCurrentIndex(place_->findData(static_cast<int>(now.place)));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* form = new QFormLayout(this);
    form->addRow(Tr("&Width:"), width_);
    form->addRow(Tr("&Height:"), height_);
    form->addRow(QString(), ratio_);
    form->addRow(QString(), original);
    form->addRow(Tr("&Place:"), place_);
    form->addRow(buttons);
    SetLengths(now.width, now.height);
    connect(width_, &QDoubleSpinBox::valueChanged, this,
            [this] { Follow(*width_, height_, true); });
    connect(height_, &QDoubleSpinBox::valueChanged, this,
            [this] { Follow(*height_, width_, false); });
    connect(original, &QPushButton::clicked, this, [this] { SetLengths(own_.width, own_.height); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  }

  PictureLook Look() const {
    PictureLook look;
    look.width = LengthOf(*width_, width_twips_);
    look.height = LengthOf(*height_, height_twips_);
    look.place = static_cast<PicturePlace>(place_->currentData().toInt());
    return look;
  }

 private:
  QDoubleSpinBox* LengthBox(const char* name) {
    auto* box = new QDoubleSpinBox(this);
    box->setObjectName(QLatin1String(name));
    box->setDecimals(2);
    box->setSingleStep(0.1);
    box->setRange(kLeastLength / unit_.twips, richtext::kLargestPage / unit_.twips);
    box->setSuffix(unit_.suffix);
    return box;
  }

  // What is shown is rounded: a length that nobody has changed stays as it was.
  int LengthOf(const QDoubleSpinBox& box, double twips) const {
    const bool same = std::abs(box.value() - twips / unit_.twips) < 0.006;
    return static_cast<int>(std::lround(same ? twips : box.value() * unit_.twips));
  }

  void SetLengths(double width, double height) {
    const QSignalBlocker quiet_width(width_), quiet_height(height_);
    width_twips_ = width;
    height_twips_ = height;
    width_->setValue(width / unit_.twips);
    height_->setValue(height / unit_.twips);
  }

  void Follow(const QDoubleSpinBox& changed, QDoubleSpinBox* other, bool width) {
    double& own = width ? width_twips_ : height_twips_;
    double& others = width ? height_twips_ : width_twips_;
    const double before = own;
    own = changed.value() * unit_.twips;
    if (!ratio_->isChecked() || before <= 0) return;
    others *= own / before;
    const QSignalBlocker quiet(other);
    other->setValue(others / unit_.twips);
  }

  LengthUnit unit_ = LocaleUnit();
  PictureLook own_;
  double width_twips_ = 0, height_twips_ = 0;
  QDoubleSpinBox *width_, *height_;
  QCheckBox* ratio_;
  QComboBox* place_;
};

}  // namespace

std::optional<PictureLook> AskPictureLook(QWidget* parent, const PictureLook& now,
                                          const PictureLook& own) {
  PictureDialog dialog(parent, now, own);
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return dialog.Look();
}

}  // namespace tenora
