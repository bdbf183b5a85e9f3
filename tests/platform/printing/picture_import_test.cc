#include "platform/printing/picture_import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <cmath>

#include "platform/printing/file_label.h"
#include "platform/printing/qt_application.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::printing {
namespace {

using Kind = richtext::Picture::Kind;
using testing::HasSubstr;
using testing::StartsWith;

QImage Image(int width, int height, double dots_per_inch) {
  QImage image(width, height, QImage::Format_RGB32);
  image.fill(Qt::darkGreen);
  if (dots_per_inch > 0) {
    const int dots_per_metre = static_cast<int>(std::lround(dots_per_inch / 0.0254));
    image.setDotsPerMeterX(dots_per_metre);
    image.setDotsPerMeterY(dots_per_metre);
  }
  return image;
}

std::string File(const QImage& image, const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format));
  return bytes.toStdString();
}

void Put(std::string& bytes, std::uint32_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// Two inches by one.
std::string PlaceableWmf() {
  std::string file;
  Put(file, 0x9AC6CDD7, 4);
  for (const int value : {0, 0, 0, 2000, 1000, 1000})
    Put(file, static_cast<std::uint32_t>(value), 2);
  file.append(6, '\0');
  return file + "WMF";
}

// Without a size of its own; the drawing is twice as wide as high.
std::string PlainWmf() {
  std::string file;
  for (const std::uint32_t value : {1U, 9U}) Put(file, value, 2);
  file.append(14, '\0');
  Put(file, 5, 4);
  for (const std::uint32_t value : {0x020CU, 50U, 100U}) Put(file, value, 2);
  return file;
}

std::string Emf() {
  std::string file;
  Put(file, 1, 4);
  file.append(20, '\0');
  for (const std::uint32_t edge : {0U, 0U, 5080U, 2540U}) Put(file, edge, 4);
  file += " EMF";
  return file.append(60, '\0');
}

TEST(PictureImport, TakesTheSizeOnPaperFromThePictureItself) {
  const auto application = HoldQtApplication();
  const struct {
    const char* what;
    std::string file;
    Kind kind;
    int width, height;  // twips
  } cases[] = {
      {"PNG, 300 dpi", File(Image(900, 300, 300), "PNG"), Kind::kPng, 4320, 1440},
      {"JPEG, 300 dpi", File(Image(900, 300, 300), "JPEG"), Kind::kJpeg, 4320, 1440},
      {"BMP, 150 dpi", File(Image(300, 150, 150), "BMP"), Kind::kPng, 2880, 1440},
      {"bitmap without file header", File(Image(300, 150, 150), "BMP").substr(14), Kind::kPng, 2880,
       1440},
      {"screen resolution", File(Image(300, 96, 0), "PNG"), Kind::kPng, 4500, 1440},
      {"resolution out of reason", File(Image(300, 96, 5), "PNG"), Kind::kPng, 4500, 1440},
      {"wider than a page's text", File(Image(3000, 300, 96), "PNG"), Kind::kPng, 9072, 907},
      {"more pixels than paper shows", File(Image(6000, 600, 1200), "PNG"), Kind::kPng, 7200, 720},
      {"metafile with a size", PlaceableWmf(), Kind::kWmf, 2880, 1440},
      {"metafile without one", PlainWmf(), Kind::kWmf, 4320, 2160},
      {"enhanced metafile", Emf(), Kind::kEmf, 2880, 1440},
  };
  const test::ScratchFolder folder;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    WriteWholeFile(folder / "picture", c.file);
    const auto pasted = ImportPicture(c.file);
    ASSERT_TRUE(pasted);
    for (const richtext::Picture& picture : {*pasted, ImportPictureFile(folder / "picture")}) {
      EXPECT_EQ(picture.kind, c.kind);
      EXPECT_NEAR(picture.width, c.width, 1);
      EXPECT_NEAR(picture.height, c.height, 1);
      EXPECT_THAT(picture.source, StartsWith("{\\pict\\"));
      EXPECT_THAT(picture.source, HasSubstr("\\picwgoal" + std::to_string(picture.width) +
                                            "\\pichgoal" + std::to_string(picture.height) + " "));
    }
    if (c.kind != Kind::kPng) continue;
    const QImage decoded = QImage::fromData(QByteArray::fromStdString(pasted->bytes));
    EXPECT_LE(decoded.width(), 4000);
    // A program that hands over the decoded picture gives it the same size.
    const auto copied = ImportImage(
        Image(decoded.width(), decoded.height(), 1440.0 * decoded.width() / pasted->width));
    ASSERT_TRUE(copied);
    EXPECT_NEAR(copied->width, pasted->width, 2);
  }
}

TEST(PictureImport, KeepsTheBytesOfFilesThatRichTextHolds) {
  const auto application = HoldQtApplication();
  for (const char* format : {"PNG", "JPEG"}) {
    const std::string file = File(Image(20, 10, 300), format);
    EXPECT_EQ(ImportPicture(file)->bytes, file);
  }
  EXPECT_EQ(ImportPicture(PlaceableWmf())->bytes, "WMF");
}

TEST(PictureImport, RefusesWhatIsNoPicture) {
  const auto application = HoldQtApplication();
  const std::string png = File(Image(20, 10, 300), "PNG");
  const test::ScratchFolder folder;
  for (const std::string& bytes : {std::string(), std::string("no picture"), png.substr(0, 20),
                                   std::string("\xD7\xCD\xC6\x9A"), Emf().substr(0, 40)}) {
    EXPECT_FALSE(ImportPicture(bytes));
    WriteWholeFile(folder / "none.png", bytes);
    EXPECT_THAT(test::ErrorOf([&] { ImportPictureFile(folder / "none.png"); }),
                AllOf(HasSubstr("481"), HasSubstr("none.png")));
  }
  EXPECT_FALSE(ImportImage(QImage()));
}

TEST(FileLabel, IsAPictureOfAScreenIconsSize) {
  const richtext::Picture label = FileLabel("a rather long name of a workbook, 2026-11.xls");
  EXPECT_EQ(label.kind, Kind::kPng);
  EXPECT_NEAR(label.width, 130 * 15, 1);
  EXPECT_THAT(label.source, StartsWith("{\\pict\\pngblip"));
}

}  // namespace
}  // namespace tenora::printing
