#include "ui/window/main/given_files.h"

#include <gmock/gmock.h>

#include <QDropEvent>
#include <QImage>
#include <QMimeData>
#include <QUrl>
#include <iostream>

#include "application.h"
#include "platform/runtime/files.h"
#include "support/fake_platform.h"
#include "ui/window/main/frm_main.h"

namespace tenora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class GivenFilesTest : public ::testing::Test {
 protected:
  GivenFilesTest() {
    platform_.InstallSampleDatabase();
    std::filesystem::create_directories(Templates());
    window_.MDIForm_Load();
    window_.resize(1000, 700);
    window_.show();
    QCoreApplication::processEvents();
    platform_.dialogs.ForgetShown();
  }
  std::filesystem::path Templates() const { return platform_.ProgramFolder() / "Templates"; }
  std::filesystem::path Write(const std::filesystem::path& path, const std::string& text) {
    WriteWholeFile(path, text);
    return path;
  }
  std::filesystem::path Picture(const char* name) {
    QImage image(96, 48, QImage::Format_RGB32);
    image.fill(Qt::blue);
    const std::filesystem::path path = platform_.folder / name;
    EXPECT_TRUE(image.save(QString::fromStdString(path.string())));
    return path;
  }
  static void Drop(QWidget& target, QPoint place, const std::vector<std::filesystem::path>& files) {
    QMimeData data;
    QList<QUrl> urls;
    for (const auto& file : files)
      urls << QUrl::fromLocalFile(QString::fromStdString(file.string()));
    data.setUrls(urls);
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &enter);
    ASSERT_TRUE(enter.isAccepted());
    QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &drop);
    QCoreApplication::processEvents();
  }
  std::vector<std::string> Open() {
    std::vector<std::string> titles;
    for (LetterWindow* letter : window_.desk().Letters())
      titles.push_back(letter->letter().members().LetterTitle);
    return titles;
  }

  test::FakePlatform platform_;
  Session session_{platform_.Parts()};
  CommandLine line_{""};
  CommandParts parts_{line_, session_, [] { return printing::Printers::Create({}); }, std::cout,
                      std::cerr};
  frmMain window_{parts_};
};

TEST_F(GivenFilesTest, OpensImportsAndNamesWhatIsDroppedOnTheWindow) {
  const auto folder = platform_.folder / "Some folder";
  std::filesystem::create_directories(folder);
  platform_.dialogs.WillChoose(0);  // the kind of template for the document
  Drop(window_, {200, 300},
       {Write(Templates() / "One.rtf", "{\\rtf1 one}"), Picture("Logo.PNG"), folder,
        Write(platform_.folder / "Odd.xyz", "?"), Write(Templates() / "Two.RTF", "{\\rtf1 two}"),
        Write(platform_.folder / "Broken.docx", "text")});
  EXPECT_THAT(Open(), ElementsAre("One", "Two"));
  const auto& shown = platform_.dialogs.shown();
  ASSERT_GE(shown.size(), 3U);
  EXPECT_THAT(shown[0].title, HasSubstr("\"Broken.docx\""));
  EXPECT_EQ(shown[1].title, "frmMain - FilesDropped");  // why it cannot be imported
  const std::string& left = shown.back().text;
  EXPECT_THAT(left, HasSubstr("Some folder: it is a folder."));
  EXPECT_THAT(left, HasSubstr("Odd.xyz: it is not a letter"));
  EXPECT_THAT(left, HasSubstr("Logo.PNG: a picture needs an open letter"));
}

TEST_F(GivenFilesTest, PutsPicturesWhereTheyAreDroppedAndElsewhereAtTheCaret) {
  Drop(window_, {1, 1}, {Write(Templates() / "One.rtf", "{\\rtf1 first\\par second}")});
  LetterWindow* const letter = window_.letters().Active();
  ASSERT_NE(letter, nullptr);
  LetterEditor& editor = letter->editor();
  QTextCursor second(editor.document()->lastBlock());
  const QPoint place = editor.cursorRect(second).center();
  Drop(*editor.viewport(), place, {Picture("a.png"), Picture("b.jpg")});
  EXPECT_EQ(editor.toPlainText(), QString("first\n\uFFFC\uFFFCsecond"));
  EXPECT_TRUE(letter->letter().members().Changed);
  // With a letter among them, which opens.
  editor.moveCursor(QTextCursor::Start);
  Drop(*editor.viewport(), editor.cursorRect().center(),
       {Picture("a.png"), Write(Templates() / "Two.rtf", "{\\rtf1 two}")});
  EXPECT_EQ(editor.toPlainText(), QString("\uFFFCfirst\n\uFFFC\uFFFCsecond"));
  EXPECT_THAT(Open(), ElementsAre("One", "Two"));
  EXPECT_THAT(platform_.dialogs.shown(), IsEmpty());
  // On the frame around: into the letter in front.
  Drop(window_, {1, 1}, {Picture("b.jpg")});
  EXPECT_EQ(window_.letters().Active()->editor().toPlainText(), QString("\uFFFCtwo"));
  for (LetterWindow* open : window_.desk().Letters()) open->letter().members().Changed = false;
}

}  // namespace
}  // namespace tenora
