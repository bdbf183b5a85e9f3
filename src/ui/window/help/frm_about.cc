#include "ui/window/help/frm_about.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

#include "platform/dialogs/dialogs.h"
#include "platform/runtime/version.h"
#include "ui/window/appearance/icons.h"

namespace tenora {

frmAbout::frmAbout(const std::filesystem::path& data_folder, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmAbout"));
  setWindowTitle(tr("About"));
  auto* picture = new QLabel(this);
  picture->setPixmap(LineIcon("tenora").pixmap(QSize(56, 56), devicePixelRatioF()));
  auto* title = new QLabel(QString::fromLatin1(kApplicationTitle), this);
  QFont large = title->font();
  large.setPointSizeF(large.pointSizeF() * 1.3);
  large.setBold(true);
  title->setFont(large);
  auto* version = new QLabel(QString::fromLatin1(kVersionCaption), this);
  version->setObjectName(QStringLiteral("lblVersion"));
  auto* folder = new QLabel(tr("Templates and letters are stored in %1")
                                .arg(QString::fromStdString(data_folder.string())),
                            this);
  folder->setTextFormat(Qt::PlainText);
  folder->setWordWrap(true);
  folder->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* texts = new QVBoxLayout;
  texts->setSpacing(8);
  texts->addWidget(title);
  texts->addWidget(version);
  texts->addWidget(folder);
  texts->addStretch();
  texts->addWidget(buttons);
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(24, 20, 20, 16);
  layout->setSpacing(20);
  layout->addWidget(picture, 0, Qt::AlignTop);
  layout->addLayout(texts, 1);
  setMinimumWidth(460);
}

}  // namespace tenora
