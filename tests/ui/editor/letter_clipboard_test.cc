#include "ui/editor/clipboard/letter_clipboard.h"

#include <QBuffer>
#include <QImage>
#include <QMimeData>
#include <QUrl>
#include <functional>
#include <memory>

#include "editor_fixture.h"
#include "support/test_files.h"
#include "ui/editor/commands/format_commands.h"

namespace tenora {
namespace {

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

class LetterClipboardTest : public PlainControlTest {
 protected:
  void Paste(const QMimeData& data) {
    letter.InsertBlocks(BlocksOf(data, letter.formats(), formatting.CharAtCaret()));
  }

  FormatCommands formatting{letter};
};

TEST_F(LetterClipboardTest, PastesTheRichestFormAndCopiesAllForms) {
  struct Case {
    const char* type;
    const char* data;
    const char* text;
    const char* source;
  };
  std::string nested;
  for (int i = 0; i < 40; ++i) nested += "<table><tr><td>";
  const Case cases[] = {
      {"text/rtf", "{\\rtf1{\\fonttbl{\\f3 Verdana;}}\\f3\\b bold}", "bold!", "\\b"},
      {"text/rtf", "{\\rtf1 {{{{\\trowd\\cellx9999999999 \\bin99999 x", nullptr, ""},
      {"text/html", "<p>one <i>two</i></p><img src='file:///etc/hostname'>", nullptr, "\\i two"},
      {"text/html", "<table><tr><td>c1<td>c2</table>", nullptr, "\\cell"},
      {"text/html", "<h1>Big</h1><ol><li>one</ol>", nullptr, "\\pndec"},
      {"text/html", "<table border=1><tr><td>c1</table>", nullptr, "\\clbrdrr"},
      {"text/html", nested.c_str(), nullptr, "\\itap6"},
      {"text/plain", "x\\y{z}", "x\\y{z}!", "\\\\y\\{z\\}"},
  };
  for (const Case& c : cases) {
    Open("\\pard\\f0\\fs24 !");
    QMimeData data;
    data.setData(c.type, c.data);
    Paste(data);
    if (c.text != nullptr) {
      EXPECT_EQ(box.Text(), c.text);
    }
    EXPECT_NE(box.TextRTF().find(c.source), std::string::npos) << box.TextRTF();
    control.selectAll();
    const std::unique_ptr<QMimeData> copy(CopySelection(control.textCursor(), letter.formats()));
    const std::string all = box.TextRTF();
    Open("\\pard ");
    Paste(*copy);
    EXPECT_NE(box.TextRTF().find(c.source), std::string::npos) << c.type << box.TextRTF();
    EXPECT_TRUE(copy->hasHtml() && copy->hasText());
  }
}

TEST_F(LetterClipboardTest, PastesAPictureAtItsOwnResolutionFromEverySource) {
  constexpr int kDotsPerMetre = 11811;  // 300 to the inch
  QImage logo(900, 300, QImage::Format_RGB32);
  logo.fill(Qt::darkGreen);
  logo.setDotsPerMeterX(kDotsPerMetre);
  logo.setDotsPerMeterY(kDotsPerMetre);
  QByteArray png;
  QBuffer buffer(&png);
  logo.save(&buffer, "PNG");
  const test::ScratchFolder folder;
  const QString file = QString::fromStdString((folder / "logo.png").string());
  ASSERT_TRUE(logo.save(file));

  const std::function<void(QMimeData&)> sources[] = {
      [&](QMimeData& data) { data.setImageData(logo); },
      // As browsers copy a picture: a page that names it, and the picture.
      [&](QMimeData& data) {
        data.setHtml("<img src='https://example.com/logo.png'>");
        data.setImageData(logo);
      },
      [&](QMimeData& data) {
        data.setHtml("<img src='data:image/png;base64," + png.toBase64() + "'>");
      },
  };
  for (const auto& offer : sources) {
    Open("\\pard\\f0\\fs24 !");
    QMimeData data;
    offer(data);
    Paste(data);
    EXPECT_NE(box.TextRTF().find("\\picwgoal4320\\pichgoal1440 "), std::string::npos)
        << data.formats().join(' ').toStdString() << box.TextRTF().substr(0, 500);
  }
  Open("\\pard\\f0\\fs24 !");
  QStringList others;
  letter.InsertBlocks(BlocksOfPictures({file, file}, formatting.CharAtCaret(), &others));
  EXPECT_EQ(CountOf(box.TextRTF(), "\\picwgoal4320\\pichgoal1440 "), 2);
  EXPECT_TRUE(others.isEmpty());
}

}  // namespace
}  // namespace tenora
