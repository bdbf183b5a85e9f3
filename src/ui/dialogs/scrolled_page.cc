#include "ui/dialogs/scrolled_page.h"

#include <QStyle>

namespace tenora {

ScrolledPage::ScrolledPage(QWidget* page) {
  setWidget(page);
  setWidgetResizable(true);
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setMinimumWidth(page->minimumSizeHint().width() +
                  style()->pixelMetric(QStyle::PM_ScrollBarExtent));
  // Tab scrolls to each control of the page; the page itself is not a stop.
  setFocusPolicy(Qt::NoFocus);
  viewport()->setAutoFillBackground(false);
  page->setAutoFillBackground(false);
}

}  // namespace tenora
