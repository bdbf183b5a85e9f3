#include "ui/editor/text/paragraph_mark.h"

#include <QTextBlock>
#include <QTextDocument>
#include <utility>

namespace tenora {
namespace {

class FirstMarkCommand : public QAbstractUndoItem {
 public:
  FirstMarkCommand(QTextDocument* document, QTextCharFormat before, QTextCharFormat after)
      : document_(document), before_(std::move(before)), after_(std::move(after)) {}
  void undo() override { QTextCursor(document_).setBlockCharFormat(before_); }
  void redo() override { QTextCursor(document_).setBlockCharFormat(after_); }

 private:
  QTextDocument* document_;
  QTextCharFormat before_, after_;
};

}  // namespace

void SetParagraphMark(QTextCursor* cursor, const QTextCharFormat& mark) {
  if (cursor->block().position() == 0) {
    QTextDocument* document = cursor->document();
    document->appendUndoItem(new FirstMarkCommand(document, cursor->blockCharFormat(), mark));
  }
  cursor->setBlockCharFormat(mark);
}

}  // namespace tenora
