// The pictures at the edges of the text, which goes on beside them.
#pragma once

#include <QObject>
#include <QPointer>
#include <QTextDocument>
#include <QTextFrame>
#include <vector>

namespace tenora {

// Lays out again what stands beside floating pictures whenever the text changes. Qt alone lays out
// the changed paragraphs and moves those below, whose lines then keep their old lengths, and keeps
// the room of a picture that is removed.
class FloatingPictures : public QObject {
  Q_OBJECT

 public:
  // The document owns this object.
  explicit FloatingPictures(QTextDocument& document);

  // In the order of the text.
  static std::vector<QTextFrame*> In(const QTextDocument& document);
  static int PositionOf(const QTextFrame& picture) { return picture.firstPosition() - 1; }

 private:
  void Widen(int from, int added);
  bool ForgetRemoved();

  QTextDocument& document_;
  std::vector<QPointer<QTextFrame>> known_;
};

}  // namespace tenora
