#include "ui/editor/screen/picture_handles.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPushButton>
#include <QTextBlock>
#include <QTimer>
#include <cmath>
#include <functional>
#include <vector>

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
  // Four paragraphs of three lines; a picture beside the second and those below.
  void OpenBeside(PicturePlace place) {
    std::string text;
    for (int i = 0; i < 60; ++i) text += "words ";
    Open("\\pard\\f0\\fs24 " + text + "\\par " + source_ + text + "\\par " + text + "\\par " +
         text);
    const int position = editor.document()->begin().next().position();
    QTextCursor cursor(editor.document());
    cursor.setPosition(position);
    cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
    editor.setTextCursor(cursor);
    editor.pictures().Change({4320, 1800, place});
    editor.grab();
  }
  // Where the picture, which is blue, is on the screen.
  QRect Blue() {
    editor.setFocus();
    const QImage shown = editor.viewport()->grab().toImage();
    QRect blue;
    for (int y = 0; y < shown.height(); y += 2) {
      for (int x = 0; x < shown.width(); x += 2) {
        const QColor colour = shown.pixelColor(x, y);
        if (colour.blue() > 180 && colour.red() < 60 && colour.green() < 60)
          blue |= QRect(x, y, 2, 2);
      }
    }
    return blue;
  }
  // The lines as they are after a layout of the whole letter.
  std::vector<QRectF> Lines() {
    std::vector<QRectF> lines;
    for (QTextBlock block = editor.document()->begin(); block.isValid(); block = block.next()) {
      const QPointF corner = block.layout()->position();
      for (int i = 0; i < block.layout()->lineCount(); ++i)
        lines.push_back(block.layout()->lineAt(i).rect().translated(corner));
    }
    return lines;
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
  ASSERT_EQ(editor.pictures().Selected(), 0) << "it hangs at the first line of its paragraph";
  editor.formatting().ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
  editor.grab();
  QTextCursor start(editor.document());
  const int right =
      editor.viewport()->width() - qRound(PixelsOfTwips(editor.paper().TextLeftMargin()));
  const int top = editor.cursorRect(start).top();
  const QPoint corner(right - qRound(PixelsOfTwips(1440)), top + qRound(PixelsOfTwips(720)));
  editor.moveCursor(QTextCursor::End);
  Click(corner + QPoint(20, -20));
  ASSERT_EQ(editor.pictures().Selected(), 0);
  Drag(corner, corner + QPoint(-qRound(PixelsOfTwips(1440)), 0));
  const PictureLook look = editor.pictures().LookAt(0).value_or(PictureLook{});
  EXPECT_TRUE(Near(look.width, 2880)) << look.width;
  EXPECT_TRUE(Near(look.height, 1440)) << look.height;
  EXPECT_EQ(look.place, PicturePlace::kRight);
}

TEST_F(PictureHandlesTest, LaysOutTheTextBesideAPictureAgain) {
  struct Case {
    const char* what;
    std::function<void()> change;
    bool remains = true;
  };
  PicturePlace place = PicturePlace::kLeft;
  // The lower corner beside the text, away from the margin.
  const auto drag = [&](int away, int down) {
    const QRect picture = Blue();
    const bool left = place == PicturePlace::kLeft;
    const QPoint corner = left ? picture.bottomRight() : picture.bottomLeft();
    Drag(corner, corner + QPoint(left ? away : -away, down));
  };
  const Case cases[] = {
      {"put beside the text", [] {}},
      {"smaller", [&] { drag(-60, -30); }},
      {"larger", [&] { drag(60, 30); }},
      {"smaller and back", [&] { drag(-60, -30), editor.Undo(); }},
      {"removed", [&] { QTest::keyClick(&editor, Qt::Key_Delete); }, false},
      {"removed and back", [&] { QTest::keyClick(&editor, Qt::Key_Delete), editor.Undo(); }},
      {"moved down",
       [&] {
         editor.moveCursor(QTextCursor::Start);
         for (int i = 0; i < 4; ++i) QTest::keyClick(&editor, Qt::Key_Return);
       }},
      {"a paragraph beside it removed",
       [&] {
         QTextCursor cursor(editor.document()->begin().next().next());
         cursor.select(QTextCursor::BlockUnderCursor);
         editor.setTextCursor(cursor);
         QTest::keyClick(&editor, Qt::Key_Delete);
       }},
  };
  for (const PicturePlace each : {PicturePlace::kLeft, PicturePlace::kRight}) {
    place = each;
    for (const Case& c : cases) {
      SCOPED_TRACE(c.what);
      OpenBeside(place);
      c.change();
      const std::vector<QRectF> lines = Lines();
      const QRect picture = Blue();
      editor.document()->markContentsDirty(0, editor.document()->characterCount());
      EXPECT_EQ(lines, Lines());
      EXPECT_EQ(picture, Blue());
      EXPECT_EQ(picture.isValid(), c.remains);
      if (!c.remains) continue;
      editor.moveCursor(QTextCursor::End);
      Click(picture.center());
      EXPECT_GE(editor.pictures().Selected(), 0) << "a click on it selects it";
    }
  }
}

// As on paper, where a wider one is made smaller.
TEST_F(PictureHandlesTest, KeepsAPictureInTheWidthOfTheText) {
  editor.paper().SetLook({.wraps_at_page = true, .width = 9000, .left = 1000, .right = 1000});
  OpenPicture();
  Click(At(700, 300));
  editor.pictures().Change({14000, 1400, PicturePlace::kInLine});
  EXPECT_EQ(Look(), (PictureLook{7000, 700, PicturePlace::kInLine}));
  editor.Undo();
  Click(At(700, 300));
  Drag(At(1440, 360), At(12000, 360));
  EXPECT_TRUE(Near(Look().width, 7000)) << Look().width;
  EXPECT_EQ(Look().height, kInserted.height) << "only the width was dragged";
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
    const int position = editor.pictures().Selected();
    const auto look = [&] { return editor.pictures().LookAt(position).value_or(PictureLook{}); };
    EXPECT_EQ(look(), c.look);
    // As it is saved and opened again, typed beside, copied, and undone.
    const std::string saved = Written();
    box.SetTextRTF(saved);
    editor.ShowBox();
    EXPECT_EQ(look(), c.look);
    EXPECT_EQ(Written(), saved);
    editor.selectAll();
    editor.formatting().ChangeCharacters([](richtext::CharFormat& format) { format.bold = true; });
    EXPECT_EQ(look(), c.look);
    editor.moveCursor(QTextCursor::End);
    Type("y");
    EXPECT_EQ(box.Text().substr(box.Text().size() - 5), "nexty");
  }
  QLocale::setDefault(QLocale::c());
}

}  // namespace
}  // namespace tenora
