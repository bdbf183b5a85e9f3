// The program's own documents in a window: pages of Markdown with pictures and links between them.
#pragma once

#include <QTextBrowser>
#include <QWidget>
#include <filesystem>

namespace tenora {

// The folder of the documents beside the program: where an installation puts them, else that of the
// source tree around a build. Empty where neither is there.
std::filesystem::path GuideFolder(const std::filesystem::path& program_folder);

class GuideBrowser : public QTextBrowser {
  Q_OBJECT

 public:
  explicit GuideBrowser(QWidget* parent = nullptr);

  // A page, or its heading where the link names one; what is not a page of ours goes to the
  // desktop.
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
