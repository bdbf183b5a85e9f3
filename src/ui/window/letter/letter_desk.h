// The area of the open letters, as tabs or as windows; shows a welcome page when there are none.
#pragma once

#include <QMdiArea>
#include <QStackedWidget>
#include <filesystem>
#include <vector>

#include "ui/window/letter/letter_window.h"

namespace tenora {

class LetterDesk : public QStackedWidget {
  Q_OBJECT

 public:
  explicit LetterDesk(QWidget* parent = nullptr);
  ~LetterDesk() override;

  // The letter in front, or null.
  LetterWindow* Active() const;
  std::vector<LetterWindow*> Letters() const;
  // The open letter of this file, or null.
  LetterWindow* OfFile(const std::filesystem::path& path) const;
  // Takes ownership of the window and brings it to the front.
  void Add(LetterWindow* window);
  void BringToFront(LetterWindow* window);

  bool Tabbed() const { return area_->viewMode() == QMdiArea::TabbedView; }
  void ShowAsTabs(bool tabs);
  void Tile();
  void Cascade();
  void Next() { area_->activateNextSubWindow(); }
  void Previous() { area_->activatePreviousSubWindow(); }
  // False when the user cancelled at a changed letter: all are open then.
  bool CloseAll();

 signals:
  void Added(tenora::LetterWindow* window);
  // Another letter is in front, or the caption of the one in front has changed.
  void ActiveChanged();

 private:
  void ShowWelcomeWhereEmpty();
  void ShowTabTexts();

  QMdiArea* area_;
  QWidget* welcome_;
};

}  // namespace tenora
