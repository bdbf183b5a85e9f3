#include "platform/printing/pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include "platform/printing/metafile_bytes.h"
#include "platform/printing/paper.h"
#include "platform/printing/picture_file.h"

namespace tenora::test {
namespace {

using richtext::Picture;
using Kind = Picture::Kind;
using testing::HasSubstr;

QImage Checkers() {
  QImage image(6, 4, QImage::Format_RGB32);
  image.fill(Qt::white);
  image.setPixelColor(2, 1, Qt::red);
  return image;
}

std::string Encoded(const char* format) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  Checkers().save(&buffer, format);
  return bytes.toStdString();
}

std::string Dib() { return Encoded("BMP").substr(14); }

// A metafile of one order that draws the bitmap.
std::string Wmf() {
  return WmfFile().Record(0x0F43, {0x20, 0xCC, 0, 4, 6, 0, 0, 100, 100, 0, 0}, Dib()).Done();
}

Picture PictureOf(Kind kind, std::string bytes) {
  Picture picture;
  picture.kind = kind;
  picture.width = 3000;
  picture.height = 2000;
  picture.bytes = std::move(bytes);
  return picture;
}

TEST(Pictures, DecodeEveryKindThatHoldsABitmap) {
  const Picture pictures[] = {
      PictureOf(Kind::kPng, Encoded("PNG")),
      PictureOf(Kind::kDib, Dib()),
      PictureOf(Kind::kJpeg, Encoded("JPEG")),
  };
  printing::Pictures decoder;
  for (const Picture& picture : pictures) {
    SCOPED_TRACE(static_cast<int>(picture.kind));
    const printing::PlacedPicture placed = decoder.Place(picture, 10000, 10000);
    ASSERT_EQ(placed.image.size(), QSize(6, 4));
    EXPECT_EQ(placed.width, 3000);
    if (picture.kind == Kind::kJpeg) continue;
    EXPECT_EQ(placed.image.pixelColor(2, 1), QColor(Qt::red));
    EXPECT_EQ(placed.image.pixelColor(1, 2), QColor(Qt::white));
  }
}

TEST(Pictures, SurviveDamageByAFrameOfTheirSize) {
  const std::string wholes[] = {Encoded("PNG"), Dib(), Wmf()};
  const Kind kinds[] = {Kind::kPng, Kind::kDib, Kind::kWmf};
  for (std::size_t i = 0; i < std::size(wholes); ++i) {
    for (std::size_t at = 0; at < wholes[i].size(); at += 3) {
      std::string flipped = wholes[i];
      flipped[at] = static_cast<char>(flipped[at] ^ 0xFF);
      for (const std::string& bytes : {wholes[i].substr(0, at), flipped}) {
        printing::Pictures decoder;
        const Picture picture = PictureOf(kinds[i], bytes);
        EXPECT_EQ(decoder.Place(picture, 10000, 10000).height, 2000);
      }
    }
  }
}

TEST(Pictures, AreMadeSmallerToFitButNeverDistorted) {
  printing::Pictures decoder;
  const Picture wide = PictureOf(Kind::kPng, Encoded("PNG"));
  const printing::PlacedPicture placed = decoder.Place(wide, 1500, 10000);
  EXPECT_EQ(placed.width, 1500);
  EXPECT_EQ(placed.height, 1000);
  Picture unsized = wide;
  unsized.width = unsized.height = 0;
  EXPECT_EQ(decoder.Place(unsized, 10000, 10000).width, 6 * 15);
}

// Leaves nothing of the checkers but the red pixel of the third column and the second row.
constexpr Picture::Crop kToRedPixel{2 / 6.0, 1 / 4.0, 3 / 6.0, 2 / 4.0};

TEST(Pictures, ShowOnlyWhatIsNotCutOff) {
  const auto drawn = [](const Picture::Crop& crop) {
    Picture picture = PictureOf(Kind::kPng, Encoded("PNG"));
    picture.crop = crop;
    printing::Pictures decoder;
    QImage paper(60, 60, QImage::Format_RGB32);
    paper.fill(Qt::blue);
    QPainter painter(&paper);
    printing::DrawPicture(painter, QRectF(10, 10, 40, 40), decoder.Place(picture, 10000, 10000));
    return paper;
  };
  const QImage cropped = drawn(kToRedPixel);
  for (const QPoint inside : {QPoint(13, 13), QPoint(46, 46)})
    EXPECT_EQ(cropped.pixelColor(inside), QColor(Qt::red));
  for (const QPoint outside : {QPoint(7, 30), QPoint(53, 30), QPoint(30, 7), QPoint(30, 53)})
    EXPECT_EQ(cropped.pixelColor(outside), QColor(Qt::blue));
  // Negative cropping leaves its half of the area empty.
  const QImage padded = drawn({-1, 0, 0, 0});
  EXPECT_EQ(padded.pixelColor(20, 30), QColor(Qt::blue));
  EXPECT_EQ(padded.pixelColor(48, 46), QColor(Qt::white));
}

TEST(Pictures, BecomeFilesOfWhatIsNotCutOff) {
  const Picture::Crop padding{0, -1, 0, 0};
  const struct {
    Kind kind;
    std::string bytes;
    Picture::Crop crop;
    const char* content_type;
    QSize pixels;
    QPoint at;
    QColor colour;
  } kCases[] = {
      {Kind::kPng, Encoded("PNG"), kToRedPixel, "image/png", {1, 1}, {0, 0}, Qt::red},
      {Kind::kDib, Dib(), kToRedPixel, "image/png", {1, 1}, {0, 0}, Qt::red},
      {Kind::kWmf, Wmf(), kToRedPixel, "image/png", {400, 267}, {200, 133}, Qt::red},
      {Kind::kJpeg, Encoded("JPEG"), {0, 0, 0.5, 0}, "image/jpeg", {3, 4}, {0, 0}, Qt::white},
      {Kind::kJpeg, Encoded("JPEG"), padding, "image/png", {6, 8}, {0, 0}, Qt::transparent},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(static_cast<int>(c.kind));
    Picture picture = PictureOf(c.kind, c.bytes);
    picture.crop = c.crop;
    const auto file = printing::ShowableFile(picture);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->content_type, c.content_type);
    const QImage image = QImage::fromData(QByteArray::fromStdString(file->bytes));
    EXPECT_EQ(image.size(), c.pixels);
    const QColor colour = image.pixelColor(c.at);
    EXPECT_EQ(colour.alpha(), c.colour.alpha());
    // JPEG and metafiles mix neighbouring pixels a little.
    if (c.colour.alpha() > 0) {
      EXPECT_NEAR(colour.green(), c.colour.green(), 30);
    }
  }
}

richtext::Paragraph WithPicture(const Picture& picture) {
  richtext::Paragraph paragraph = Line("before ");
  richtext::Run run;
  run.object = std::make_shared<const Picture>(picture);
  paragraph.runs.push_back(run);
  paragraph.runs.push_back(Text(" behind"));
  return paragraph;
}

TEST(Pictures, TakeTheirRoomInTheLine) {
  const ScratchFolder folder;
  const richtext::Document document =
      DocumentOf({WithPicture(PictureOf(Kind::kPng, Encoded("PNG"))), Line("below")});
  const Paper paper = Print(document, folder);
  EXPECT_EQ(paper.ends, std::vector<int>{7 + 1 + 7 + 1 + 6});
  EXPECT_NEAR(paper.Find("behind").left - paper.Find("before").right, 3000, 150);
  EXPECT_GT(paper.Find("before").top, kInch + 1700);
  EXPECT_GT(paper.Find("below").top, kInch + 2000);
  EXPECT_THAT(Poppler({"pdfimages", "-list", paper.file.string()}), HasSubstr(" 6     4 "));
}

TEST(Pictures, AreNoFurtherApartWhereTheTextIsSpaced) {
  const ScratchFolder folder;
  const auto step = [&](int spacing) {
    richtext::Paragraph paragraph = WithPicture(PictureOf(Kind::kPng, Encoded("PNG")));
    paragraph.format.line_spacing = spacing;
    paragraph.format.line_spacing_multiple = true;
    const Paper paper = Print(DocumentOf({paragraph, Line("below")}), folder);
    return paper.Find("below").top - paper.Find("before").top;
  };
  EXPECT_NEAR(step(480), step(240), 10);
}

TEST(Pictures, NameTheirKindWhereTheyCannotBeDrawn) {
  const ScratchFolder folder;
  const Paper paper = Print(DocumentOf({WithPicture(PictureOf(Kind::kWmf, "lines only"))}), folder);
  EXPECT_THAT(paper.Text(), HasSubstr("WMF picture"));
}

TEST(Pictures, OfManyPixelsAreReadAtTheSizeThatPaperShows) {
  QByteArray photograph;
  QBuffer buffer(&photograph);
  buffer.open(QIODevice::WriteOnly);
  QImage(8000, 6000, QImage::Format_Grayscale8).save(&buffer, "JPEG");
  printing::Pictures decoder;
  const Picture picture = PictureOf(Kind::kJpeg, photograph.toStdString());
  const QImage image = decoder.Place(picture, 10000, 10000).image;
  EXPECT_NEAR(image.width() * image.height(), 20e6, 1e5);
  EXPECT_NEAR(double(image.width()) / image.height(), 8.0 / 6, 0.01);
}

TEST(Pictures, OfEmbeddedObjectsStandForThem) {
  const ScratchFolder folder;
  auto object = std::make_shared<richtext::Verbatim>();
  object->shown_text = "shown in its place";
  richtext::Paragraph paragraph = Line("see ");
  richtext::Run run;
  run.object = std::shared_ptr<const richtext::Verbatim>(object);
  paragraph.runs.push_back(run);
  paragraph.runs.push_back(Text("beside"));
  const Paper paper = Print(DocumentOf({paragraph}), folder);
  EXPECT_THAT(paper.Text(), HasSubstr("see shown in its place\nbeside"));
  EXPECT_EQ(paper.ends, std::vector<int>{4 + 1 + 6 + 1});
}

TEST(Pictures, ThatAreDamagedLeaveNoRemarksOnTheTerminal) {
  const ScratchFolder folder;
  const std::string png = Encoded("PNG");
  std::string altered = png;
  altered[png.find("IDAT") + 10] ^= 1;
  testing::internal::CaptureStderr();
  Print(DocumentOf({WithPicture(PictureOf(Kind::kJpeg, "\xFF\xD8\xFF\xE0")),
                    WithPicture(PictureOf(Kind::kPng, png.substr(0, png.size() - 14))),
                    WithPicture(PictureOf(Kind::kPng, altered))}),
        folder);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace tenora::test
