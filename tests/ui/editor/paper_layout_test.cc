#include "ui/editor/screen/paper_layout.h"

#include <QScrollBar>
#include <QTextBlock>
#include <QTextFrame>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

#include "editor_fixture.h"
#include "platform/printing/document_length.h"
#include "platform/printing/preview_pages.h"

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

// Where lines begin on paper of one line's height, or pages on a higher one.
std::vector<int> StartsOnPaper(const richtext::Document& letter, int text_width, int height) {
  const auto printers = printing::Printers::Create({});
  printers->SetCurrent(printing::kPdfPrinterName);
  printing::PreviewPages pages(printers->Current());
  printing::FormatRange range;
  range.document = &letter;
  range.page_rect = {0, 0, text_width, height};
  range.print_rect = range.page_rect;
  while (range.range.from < printing::DocumentLength(letter)) {
    range.range.from = pages.Current().Format(range);
  }
  return pages.PageStarts();
}

std::vector<int> StartsOnScreen(const QTextDocument& document) {
  std::vector<int> starts;
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    for (int i = 0; i < block.layout()->lineCount(); ++i)
      starts.push_back(block.position() + block.layout()->lineAt(i).textStart());
  }
  return starts;
}

TEST_F(EditorTest, BreaksLinesAndPagesWhereTheyBreakOnPaper) {
  const int text_width = 9638, page_height = 8000;
  std::string words;
  for (int i = 0; i < 30; ++i) {
    words += "We have looked at account no. " + std::to_string(i * 7919) +
             " again, and the rent of $" + std::to_string(i * 31) +
             ".50 for 25 Kauri Street is due on Friday the 1st; will you kindly see to it, or let "
             "us know before the end of this month how much of it you can pay and when?\\par ";
  }
  std::size_t lines = 0, differing = 0;
  for (const char* format :
       {"\\f0\\fs16", "\\f0\\fs19", "\\f0\\fs20", "\\f1\\fs22", "\\f1\\fs24", "\\f1\\b\\fs28"}) {
    Open(std::string("\\pard") + format + " " + words);
    const std::vector<int> on_paper = StartsOnPaper(box.Document(), text_width, 20);
    const int next_page = StartsOnPaper(box.Document(), text_width, page_height).front();
    for (const double zoom : {0.75, 1.0, 1.25, 2.0}) {
      editor.paper().SetLook(
          {.sheet = true, .width = text_width + 2000, .left = 1000, .right = 1000});
      editor.paper().SetZoom(zoom);
      QCoreApplication::processEvents();
      const std::vector<int> on_screen = StartsOnScreen(*editor.document());
      lines += on_paper.size();
      differing += static_cast<std::size_t>(std::ranges::count_if(on_paper, [&](int start) {
        return std::ranges::find(on_screen, start) == on_screen.end();
      }));
      // The line that is the next page's first on paper is the first that does not end above this
      // one's end here.
      QTextCursor cursor(editor.document());
      const QTextLayout& layout = *cursor.block().layout();
      const double pitch = layout.lineAt(1).y() - layout.lineAt(0).y();
      const double top = editor.cursorRect(cursor).top();
      cursor.setPosition(next_page);
      const double next = editor.cursorRect(cursor).top() - top;
      const double end = PixelsOfTwips(page_height) * zoom;
      EXPECT_LE(next, end + 1) << format << " " << zoom;
      EXPECT_GE(next + pitch, end - 1) << format << " " << zoom;
    }
  }
  EXPECT_LE(differing, lines / 100) << "of " << lines;
}

// A picture of a blue pixel, drawn so large; twips.
std::string PictureSource(int width, int height) {
  return "{\\pict\\pngblip\\picwgoal" + std::to_string(width) + "\\pichgoal" +
         std::to_string(height) +
         " 89504e470d0a1a0a0000000d49484452000000010000000108020000009077"
         "53de0000000c49444154789c6360600000000400017dac7a160000000049454e44ae426082}";
}

TEST_F(EditorTest, ShowsAPictureAsWideAsTheTextWithoutAScrollBar) {
  Open("\\pard\\f0\\fs24 " + PictureSource(9638, 1500) + "\\par text");
  editor.resize(1200, 500);
  for (const double zoom : {0.9, 1.0, 1.1, 1.37}) {
    editor.paper().SetLook({.sheet = true});
    editor.paper().SetZoom(zoom);
    QCoreApplication::processEvents();
    EXPECT_EQ(editor.horizontalScrollBar()->maximum(), 0) << zoom;
  }
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
