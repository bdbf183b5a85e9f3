#include "ui/editor/screen/paper_layout.h"

#include <QScrollBar>
#include <QTextBlock>
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

// Pixels between the top of the upper desk and the bottom of the lower one.
int ScrolledHeight(LetterEditor& editor) {
  return editor.verticalScrollBar()->maximum() + editor.viewport()->height();
}

TEST_F(EditorTest, ShowsWholeSheetsDownToTheLastPagesEnd) {
  Open("\\pard\\f0\\fs24 one\\par two\\par three");
  bool changed = false;
  box.OnChange([&] { changed = true; });
  PaperLook look{.sheet = true, .width = 7200, .height = 14400, .top = 1440, .bottom = 720};
  editor.paper().SetLook(look);
  for (const double zoom : {1.0, 1.5, 1.25}) {
    editor.paper().SetZoom(zoom);
    editor.ShowPageStarts({});
    QCoreApplication::processEvents();
    const double twip = PixelsOfTwips(1) * zoom;
    EXPECT_NEAR(ScrolledHeight(editor), (14400 + 2 * kDesk) * twip, 3) << zoom;
    // "three" begins the second page, which ends a page's height less its upper margin below.
    editor.ShowPageStarts({8});
    QTextCursor three(editor.document()->lastBlock());
    const double top = editor.cursorRect(three).top() + editor.verticalScrollBar()->value();
    EXPECT_NEAR(ScrolledHeight(editor), top + (14400 - 1440 + kDesk) * twip, 3) << zoom;
  }
  EXPECT_FALSE(changed);
  // Typing at the end of a page does not scroll the sheet away.
  editor.verticalScrollBar()->setValue(editor.verticalScrollBar()->maximum());
  const int scrolled = editor.verticalScrollBar()->value();
  QTextCursor(editor.document()->lastBlock()).insertText("new\n");
  QCoreApplication::processEvents();
  EXPECT_GE(editor.verticalScrollBar()->value(), scrolled);
  look.sheet = false;
  editor.paper().SetLook(look);
  QCoreApplication::processEvents();
  EXPECT_LT(ScrolledHeight(editor), 700) << "text alone ends with its last line";
}

TEST_F(EditorTest, GoesUpToTheSheetsEdgeWithTheCaret) {
  std::string lines;
  for (int i = 0; i < 200; ++i) lines += "line\\par ";
  Open("\\pard\\f0\\fs24 " + lines);
  editor.paper().SetLook({.sheet = true, .top = 1440});
  editor.moveCursor(QTextCursor::End);
  QCoreApplication::processEvents();
  EXPECT_GT(editor.verticalScrollBar()->value(), 0);
  QTest::keyClick(&editor, Qt::Key_Home, Qt::ControlModifier);
  QCoreApplication::processEvents();
  EXPECT_EQ(editor.verticalScrollBar()->value(), 0);
}

}  // namespace
}  // namespace tenora
