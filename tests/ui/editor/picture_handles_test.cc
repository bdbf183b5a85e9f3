#include "ui/editor/screen/picture_handles.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QTimer>
#include <cmath>
#include <functional>

#include "editor_fixture.h"
#include "platform/printing/picture_import.h"

namespace tenora {
namespace {

using richtext::PictureLook;
using richtext::PicturePlace;

constexpr PictureLook kInserted{1440, 720, PicturePlace::kInLine};

class PictureHandlesTest : public EditorTest {
 protected:
  PictureHandlesTest() {
    QImage image(192, 96, QImage::Format_RGB32);
    image.fill(Qt::blue);
    image.setDotsPerMeterX(7559);  // 192 to the inch
    image.setDotsPerMeterY(7559);
    source_ = printing::ImportImage(image)->source;
  }
  void OpenPicture(const std::string& words = "") {
    Open("\\pard\\f0\\fs24 before " + words + source_ + " after\\par next");
  }
  PictureLook Look() { return editor.pictures().LookAt(7).value_or(PictureLook{}); }
  // Relative to the picture's left top corner, in twips.
  QPoint At(int x, int y) {
    QTextCursor before(editor.document());
    before.setPosition(7);
    const QRectF caret = editor.cursorRect(before);
    const QTextLine line = editor.document()->begin().layout()->lineAt(0);
    return QPointF(caret.left() + PixelsOfTwips(x),
                   caret.top() + line.ascent() - PixelsOfTwips(kInserted.height) + PixelsOfTwips(y))
        .toPoint();
  }
  void Click(QPoint at) { QTest::mouseClick(editor.viewport(), Qt::LeftButton, {}, at); }
  void MoveTo(QPoint at, Qt::KeyboardModifiers keys) {
    QMouseEvent move(QEvent::MouseMove, at, editor.viewport()->mapToGlobal(at), Qt::NoButton,
                     Qt::LeftButton, keys);
    QApplication::sendEvent(editor.viewport(), &move);
  }
  void Drag(QPoint from, QPoint to, Qt::KeyboardModifiers keys = {}, bool escape = false) {
    QTest::mousePress(editor.viewport(), Qt::LeftButton, keys, from);
    MoveTo((from + to) / 2, keys);
    MoveTo(to, keys);
    if (escape) QTest::keyClick(&editor, Qt::Key_Escape);
    QTest::mouseRelease(editor.viewport(), Qt::LeftButton, keys, to);
  }
  static bool Near(int twips, int wanted) { return std::abs(twips - wanted) <= 30; }

  std::string source_;
};

TEST_F(PictureHandlesTest, SizesAPictureByItsHandlesInOneStep) {
  struct Case {
    QPoint handle, to;
    Qt::KeyboardModifiers keys;
    bool escape;
    int width, height;
  };
  const Case cases[] = {
      {{1440, 720}, {2160, 720}, {}, false, 2160, 1080},  // a corner keeps the ratio
      {{1440, 720}, {2160, 720}, Qt::ShiftModifier, false, 2160, 720},
      {{1440, 360}, {720, 700}, {}, false, 720, 720},  // a side changes one length
      {{720, 720}, {100, 1440}, {}, false, 1440, 1440},
      {{0, 0}, {720, 360}, {}, false, 720, 360},
      {{1440, 720}, {2160, 720}, {}, true, 1440, 720},
      {{1440, 720}, {-9000, -9000}, {}, false, 300, 150},  // never to nothing
  };
  for (const Case& c : cases) {
    OpenPicture();
    Click(At(700, 300));
    ASSERT_EQ(editor.pictures().Selected(), 7);
    const int steps = editor.document()->availableUndoSteps();
    Drag(At(c.handle.x(), c.handle.y()), At(c.to.x(), c.to.y()), c.keys, c.escape);
    EXPECT_TRUE(Near(Look().width, c.width)) << Look().width << ", not " << c.width;
    EXPECT_TRUE(Near(Look().height, c.height)) << Look().height << ", not " << c.height;
    EXPECT_EQ(editor.pictures().Selected(), 7);
    EXPECT_NE(box.TextRTF().find("\\picwgoal" + std::to_string(Look().width)), std::string::npos);
    if (c.escape) {
      EXPECT_EQ(editor.document()->availableUndoSteps(), steps);
      continue;
    }
    editor.Undo();
    EXPECT_EQ(Look(), kInserted);
    EXPECT_NE(box.TextRTF().find("\\picwgoal1440\\pichgoal720"), std::string::npos);
    editor.Redo();
    EXPECT_TRUE(Near(Look().width, c.width));
  }
}

// At the right edge of the text, which goes on beside it; its left handles move then.
TEST_F(PictureHandlesTest, SizesAFloatingPicture) {
  OpenPicture();
  Click(At(700, 300));
  editor.pictures().Change({1440, 720, PicturePlace::kRight});
  editor.formatting().ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
  editor.grab();
  QTextCursor start(editor.document());
  const int right =
      editor.viewport()->width() - qRound(PixelsOfTwips(editor.paper().TextLeftMargin()));
  const int top = editor.cursorRect(start).top();
  const QPoint corner(right - qRound(PixelsOfTwips(1440)), top + qRound(PixelsOfTwips(720)));
  editor.moveCursor(QTextCursor::End);
  Click(corner + QPoint(20, -20));
  ASSERT_EQ(editor.pictures().Selected(), 7);
  Drag(corner, corner + QPoint(-qRound(PixelsOfTwips(1440)), 0));
  EXPECT_TRUE(Near(Look().width, 2880)) << Look().width;
  EXPECT_TRUE(Near(Look().height, 1440)) << Look().height;
  EXPECT_EQ(Look().place, PicturePlace::kRight);
}

TEST_F(PictureHandlesTest, LeavesAPictureInProtectedTextAsItIs) {
  OpenPicture("\\protect ");
  Click(At(700, 300));
  Click(At(700, 300));
  ASSERT_EQ(editor.pictures().Selected(), 7) << "a second click keeps it selected";
  Drag(At(1440, 720), At(2160, 720));
  EXPECT_EQ(Look(), kInserted);
}

TEST_F(PictureHandlesTest, AsksForSizeAndPlaceOnADoubleClick) {
  struct Case {
    std::function<void(QWidget&)> fill;
    PictureLook look;
  };
  const auto type = [](QWidget& dialog, const char* name, const char* text) {
    auto* spin = dialog.findChild<QDoubleSpinBox*>(QLatin1String(name));
    spin->setFocus();
    spin->selectAll();
    QTest::keyClicks(spin, QLatin1String(text));
  };
  const auto choose = [](QWidget& dialog, PicturePlace place) {
    auto* list = dialog.findChild<QComboBox*>();
    list->setCurrentIndex(list->findData(int(place)));
  };
  const Case cases[] = {
      {[&](QWidget& dialog) { type(dialog, "spnWidth", "2"); }, {2880, 1440}},
      {[&](QWidget& dialog) { choose(dialog, PicturePlace::kRight); },
       {1440, 720, PicturePlace::kRight}},
      {[&](QWidget& dialog) {
         choose(dialog, PicturePlace::kLeft);
         QTest::keyClick(dialog.findChild<QWidget*>("chkRatio"), Qt::Key_Space);
         type(dialog, "spnHeight", "2");
       },
       {1440, 2880, PicturePlace::kLeft}},
      {[&](QWidget& dialog) {
         type(dialog, "spnHeight", "3");
         QTest::keyClick(dialog.findChild<QWidget*>("cmdOriginal"), Qt::Key_Space);
       },
       kInserted},
  };
  QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
  for (const Case& c : cases) {
    OpenPicture();
    Click(At(700, 300));
    QTimer::singleShot(0, [&] {
      QWidget* dialog = QApplication::activeModalWidget();
      ASSERT_NE(dialog, nullptr);
      c.fill(*dialog);
      QTest::keyClick(dialog, Qt::Key_Return);
    });
    QTest::mouseDClick(editor.viewport(), Qt::LeftButton, {}, At(700, 300));
    EXPECT_EQ(Look().width, c.look.width);
    EXPECT_EQ(Look().height, c.look.height);
    EXPECT_EQ(Look().place, c.look.place);
    // As it is saved and opened again, typed beside, copied, and undone.
    const std::string saved = Written();
    box.SetTextRTF(saved);
    editor.ShowBox();
    EXPECT_EQ(Look(), c.look);
    EXPECT_EQ(Written(), saved);
    editor.selectAll();
    editor.formatting().ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
    EXPECT_EQ(Look(), c.look);
    editor.moveCursor(QTextCursor::End);
    Type("y");
    EXPECT_EQ(box.Text().substr(box.Text().size() - 5), "nexty");
  }
  QLocale::setDefault(QLocale::c());
}

}  // namespace
}  // namespace tenora
