#include "ui/window/help/frm_guide.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QDesktopServices>
#include <QImage>
#include <QScrollBar>
#include <QTextBlock>
#include <QToolBar>
#include <QVBoxLayout>
#include <system_error>

#include "platform/dialogs/window_size.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr int kPageMargin = 24;  // pixels

// The anchor of a heading: lower case, blanks as hyphens, punctuation removed.
QString AnchorOf(const QString& heading) {
  QString anchor;
  for (const QChar c : heading.trimmed().toLower()) {
    if (c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-')) anchor += c;
    if (c.isSpace()) anchor += QLatin1Char('-');
  }
  return anchor;
}

bool IsPage(const QUrl& url) {
  return url.isLocalFile() && url.path().endsWith(QLatin1String(".md"), Qt::CaseInsensitive);
}

}  // namespace

fs::path GuideFolder(const fs::path& program_folder) {
  for (const char* place : {"../share/doc/tenora/docs", "../../docs"}) {
    const fs::path folder = (program_folder / place).lexically_normal();
    std::error_code error;
    if (fs::is_directory(folder, error)) return folder;
  }
  return {};
}

GuideBrowser::GuideBrowser(QWidget* parent) : QTextBrowser(parent) {
  setObjectName(QStringLiteral("txtGuide"));
  setAccessibleName(tr("Guide"));
  setFrameShape(QFrame::NoFrame);
  setOpenLinks(false);
  document()->setDocumentMargin(kPageMargin);
  connect(this, &QTextBrowser::anchorClicked, this, &GuideBrowser::Follow);
}

void GuideBrowser::Follow(const QUrl& link) {
  const QUrl target = source().resolved(link);
  if (!IsPage(target)) {
    QDesktopServices::openUrl(target);
    return;
  }
  const QUrl page = target.adjusted(QUrl::RemoveFragment);
  if (page != source().adjusted(QUrl::RemoveFragment)) {
    setSource(page, QTextDocument::MarkdownResource);
  }
  if (target.hasFragment()) ShowHeading(target.fragment(QUrl::FullyDecoded));
}

void GuideBrowser::ShowHeading(const QString& anchor) {
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
    if (block.blockFormat().headingLevel() == 0 || AnchorOf(block.text()) != anchor) continue;
    setTextCursor(QTextCursor(block));
    const int top = static_cast<int>(document()->documentLayout()->blockBoundingRect(block).top());
    verticalScrollBar()->setValue(top - kPageMargin / 2);
    return;
  }
}

// Scales pictures down to the width of the page.
QVariant GuideBrowser::loadResource(int type, const QUrl& name) {
  if (type != QTextDocument::ImageResource) return QTextBrowser::loadResource(type, name);
  const QUrl url = source().resolved(name);
  if (!url.isLocalFile()) return {};  // no network access
  QImage image(url.toLocalFile());
  const int room = viewport()->width() - 2 * kPageMargin;
  if (image.width() > room && room > 0) {
    image = image.scaledToWidth(room, Qt::SmoothTransformation);
  }
  return image;
}

frmGuide::frmGuide(const fs::path& page, QWidget* parent)
    : QWidget(parent, Qt::Window), browser_(new GuideBrowser(this)) {
  setObjectName(QStringLiteral("frmGuide"));
  setAttribute(Qt::WA_DeleteOnClose);
  auto* bar = new QToolBar(this);
  const auto add = [&](const QString& text, const QKeySequence& keys, const auto& go) {
    QAction* action = bar->addAction(text, this, go);
    action->setShortcut(keys);
    return action;
  };
  QAction* back = add(tr("← Back"), QKeySequence::Back, [this] { browser_->backward(); });
  QAction* forward = add(tr("Forward →"), QKeySequence::Forward, [this] { browser_->forward(); });
  back->setEnabled(false);
  forward->setEnabled(false);
  connect(browser_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::sourceChanged, this, [this] {
    const QString title = browser_->document()->begin().text();
    setWindowTitle(title.isEmpty() ? tr("Guide") : title);
  });
  auto* close = new QAction(this);
  close->setShortcuts({QKeySequence::Close, QKeySequence(Qt::Key_Escape)});
  connect(close, &QAction::triggered, this, &QWidget::close);
  addAction(close);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(bar);
  layout->addWidget(browser_);
  resize(OpeningSize(*this, {900, 720}));
  // Force a layout, so that pictures can be scaled to the page's width.
  layout->activate();
  ShowPage(page);
}

void frmGuide::ShowPage(const fs::path& page) {
  browser_->Follow(QUrl::fromLocalFile(QString::fromStdString(page.string())));
}

}  // namespace tenora
