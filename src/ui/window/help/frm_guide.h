// The program's own documents in a window: pages of Markdown with pictures and links between them.
#pragma once

#include <QTextBrowser>
#include <QWidget>
#include <filesystem>

namespace tenora {

// The folder of the documents: the installed one, else that of the source tree around a build.
// Empty if neither exists.
std::filesystem::path GuideFolder(const std::filesystem::path& program_folder);

class GuideBrowser : public QTextBrowser {
  Q_OBJECT

 public:
  explicit GuideBrowser(QWidget* parent = nullptr);

  // Shows a page, scrolled to the heading if the link names one; any other link opens in the
  // desktop's browser.
  void Follow(const QUrl& link);
  QVariant loadResource(int type, const QUrl& name) override;

 private:
  void ShowHeading(const QString& anchor);
};

class frmGuide : public QWidget {
  Q_OBJECT

 public:
  explicit frmGuide(const std::filesystem::path& page, QWidget* parent = nullptr);

  void ShowPage(const std::filesystem::path& page);

 private:
  GuideBrowser* browser_;
};

}  // namespace tenora
