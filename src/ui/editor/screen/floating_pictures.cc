#include "ui/editor/screen/floating_pictures.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>

#include "ui/editor/screen/inline_objects.h"

namespace tenora {
namespace {

void AddFloating(const QTextFrame& frame, std::vector<QTextFrame*>* floating) {
  for (QTextFrame* child : frame.childFrames()) {
    if (child->frameFormat().position() != QTextFrameFormat::InFlow)
      floating->push_back(child);
    else
      AddFloating(*child, floating);
  }
}

// As it was laid out last; one that is new is at 0.
double TopOf(const QTextBlock& block) { return block.layout()->position().y(); }
double HeightOf(const QTextBlock& block) { return block.layout()->boundingRect().height(); }

}  // namespace

FloatingPictures::FloatingPictures(QTextDocument& document)
    : QObject(&document), document_(document) {
  // Before Qt lays out what has changed.
  connect(&document, &QTextDocument::contentsChange, this,
          [this](int from, int, int added) { Widen(from, added); });
}

std::vector<QTextFrame*> FloatingPictures::In(const QTextDocument& document) {
  std::vector<QTextFrame*> floating;
  AddFloating(*document.rootFrame(), &floating);
  std::ranges::sort(floating, {}, [](const QTextFrame* frame) { return PositionOf(*frame); });
  return floating;
}

// True where a picture has been removed since the last call.
bool FloatingPictures::ForgetRemoved() {
  bool any = false;
  for (const QPointer<QTextFrame>& frame : known_) {
    if (frame == nullptr || frame->parentFrame() != nullptr) continue;
    // Undo may bring the frame back, so it exists still, and keeps its place in Qt's layout.
    frame->setLayoutData(nullptr);
    any = true;
  }
  return any;
}

void FloatingPictures::Widen(int from, int added) {
  const bool removed = ForgetRemoved();
  const std::vector<QTextFrame*> floating = In(document_);
  known_.assign(floating.begin(), floating.end());
  if (floating.empty() && !removed) return;

  const double tallest = InlineObjects::MostHeight(document_);
  const double top = TopOf(document_.findBlock(from));
  int last = std::min(from + added, document_.characterCount() - 1);
  bool beside = removed;
  double lowest = 0;  // the pictures end there at the latest
  double height = removed ? tallest : 0;
  for (const QTextFrame* picture : floating) {
    const int position = PositionOf(*picture);
    const QTextBlock block = document_.findBlock(position);
    if (picture->parentFrame() == document_.rootFrame()) {
      lowest = std::max(lowest, TopOf(block) + HeightOf(block)) + tallest;
      height += tallest;
    }
    beside = beside || position >= from || lowest > top;
    last = std::max(last, position);
  }
  if (!beside) return;
  QTextBlock end = document_.findBlock(last);
  // What may come up beside a picture counts too.
  for (double laid_out = 0; end.next().isValid() && (laid_out < height || TopOf(end) < lowest);) {
    end = end.next();
    laid_out += HeightOf(end);
  }
  const int start = document_.findBlock(from).position();
  document_.markContentsDirty(start, end.position() + end.length() - start);
}

}  // namespace tenora
