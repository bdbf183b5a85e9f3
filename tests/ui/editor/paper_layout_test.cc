#include "ui/editor/screen/paper_layout.h"

#include <QTextFrame>
#include <cmath>

#include "editor_fixture.h"

namespace tenora {
namespace {

class PaperLayoutTest : public PlainControlTest {
 protected:
  PaperLayoutTest() {
    QObject::connect(&paper, &PaperLayout::SideMarginsChanged,
                     [this](const QMargins& given) { margins = given; });
    control.resize(2000, 600);
  }

  UndoHistory history{letter};
  PaperLayout paper{letter, history};
  QMargins margins;
};

TEST_F(PaperLayoutTest, WrapsAtThePaperAndCentresIt) {
  Open("\\pard\\f0\\fs24 ab");
  for (const double zoom : {0.5, 1.0, 2.0}) {
    paper.SetZoom(zoom);
    paper.SetLook({.wraps_at_page = true, .width = 7200, .left = 720, .right = 1440});
    const int width = static_cast<int>(std::lround(PixelsOfTwips(7200) * zoom));
    EXPECT_EQ(control.lineWrapMode(), QTextEdit::FixedPixelWidth);
    EXPECT_EQ(control.lineWrapColumnOrWidth(), width);
    EXPECT_EQ(margins.left() + margins.right(), control.contentsRect().width() - width);
    EXPECT_LE(std::abs(margins.left() - margins.right()), 1);
    EXPECT_EQ(control.document()->rootFrame()->frameFormat().leftMargin(), PixelsOfTwips(720));
    EXPECT_EQ(paper.TableWidth(), 7200 - 720 - 1440);
  }
  paper.SetLook({.wraps_at_page = false});
  EXPECT_EQ(control.lineWrapMode(), QTextEdit::WidgetWidth);
  EXPECT_EQ(margins, QMargins());
  EXPECT_FALSE(control.document()->isUndoAvailable());
}

TEST_F(PaperLayoutTest, KeepsWhatCanBeRedoneWhileZooming) {
  Open("\\pard\\fi300\\f0\\fs24 ab");
  const double indent = control.document()->begin().blockFormat().textIndent();
  Insert(0, "x");
  history.Undo();
  paper.SetZoom(2);
  EXPECT_TRUE(control.document()->isRedoAvailable());
  history.Redo();
  EXPECT_EQ(box.Text(), "xab");
  QCoreApplication::processEvents();
  EXPECT_EQ(control.document()->begin().blockFormat().textIndent(), 2 * indent);
}

}  // namespace
}  // namespace tenora
