#include "platform/printing/image/metafile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <vector>

#include "platform/printing/metafile_bytes.h"
#include "platform/printing/paper.h"
#include "platform/printing/pictures.h"
#include "platform/printing/qt_application.h"

namespace tenora::test {
namespace {

using Kind = richtext::Picture::Kind;
using testing::HasSubstr;
using testing::Not;

constexpr QRgb kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF, kBlack = 0xFF000000,
               kWhite = 0xFFFFFFFF, kNothing = 0;

Kind KindOf(const std::string& bytes) {
  return bytes.substr(0, 4) == std::string("\1\0\0\0", 4) ? Kind::kEmf : Kind::kWmf;
}

std::shared_ptr<const printing::Drawing> Draw(const std::string& bytes) {
  return printing::DrawingOf(KindOf(bytes), bytes);
}

std::string Floats(std::initializer_list<float> numbers) {
  std::string bytes;
  for (const float number : numbers) PutNumber(bytes, std::bit_cast<std::uint32_t>(number), 4);
  return bytes;
}

std::string Shorts(std::initializer_list<int> numbers) {
  std::string bytes;
  for (const int number : numbers) PutNumber(bytes, number, 2);
  return bytes;
}

WmfFile RedWmf() { return WmfFile().Pen(5, 0).Brush(255, 0, 0); }
EmfFile RedEmf() { return EmfFile().Brush(255, 0, 0); }

// StretchDIB to a place, with a raster operation's number.
WmfFile& Stretch(WmfFile& file, std::uint32_t operation, int left, int top, int size,
                 const std::string& dib) {
  return file.Record(0x0F43,
                     {static_cast<int>(operation & 0xFFFF), static_cast<int>(operation >> 16), 0, 2,
                      2, 0, 0, size, size, top, left},
                     dib);
}

std::string EmfBitmap(int type, std::initializer_list<std::int64_t> numbers, const std::string& dib,
                      const EmfFile& before = EmfFile()) {
  return EmfFile(before).Record(type, numbers, dib).Done();
}

std::string BitmapsSideBySide() {
  WmfFile file;
  Stretch(file, 0xCC0020, 0, 0, 50, DibOf({0xFF0000, 0xFF0000, 0xFF0000, 0xFF0000}));
  Stretch(file, 0xCC0020, 50, 50, 50, DibOf({0x0000FF, 0x0000FF, 0x00FF00, 0x00FF00}));
  return file.Done();
}

// A mask drawn with "and", the picture drawn upon it with "or".
std::string MaskedBitmap() {
  WmfFile file;
  Stretch(file, 0x8800C6, 0, 0, 100, DibOf({0x000000, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}));
  Stretch(file, 0xEE0086, 0, 0, 100, DibOf({0xFF0000, 0x000000, 0x000000, 0x000000}));
  return file.Done();
}

// A comment with the enhanced metafile that the file was made from.
std::string WithEnhancedMetafile() {
  const std::string enhanced = EmfFile().Brush(0, 0, 255).Rectangle(0, 0, 100, 100).Done();
  std::string comment;
  for (const std::size_t number : {std::size_t{0x43464D57}, std::size_t{1}, std::size_t{0x10000}}) {
    PutNumber(comment, static_cast<std::int64_t>(number), 4);
  }
  PutNumber(comment, 0, 2);
  for (const std::size_t number :
       {std::size_t{0}, std::size_t{1}, enhanced.size(), std::size_t{0}, enhanced.size()}) {
    PutNumber(comment, static_cast<std::int64_t>(number), 4);
  }
  comment += enhanced;
  return RedWmf()
      .Record(0x0626, {15, static_cast<int>(comment.size())}, comment)
      .Rectangle(0, 0, 100, 100)
      .Done();
}

std::string RasterOperations() {
  return RedWmf()
      .Rectangle(0, 0, 60, 100)
      .Record(0x0104, {7})  // exclusive or
      .Brush(255, 255, 255)
      .Rectangle(40, 0, 80, 100)
      .Done();
}

struct Probe {
  int x, y;  // of a hundred
  QRgb colour;
};

struct Case {
  const char* name;
  std::string bytes;
  std::vector<Probe> probes;
};

std::vector<Case> WmfCases() {
  return {
      {"rectangle",
       RedWmf().Rectangle(20, 20, 80, 60).Done(),
       {{50, 40, kRed}, {10, 40, kNothing}, {50, 70, kNothing}}},
      {"outline",
       WmfFile().Brush(0, 0, 0, 1).Pen(0, 20, 0, 0, 255).Rectangle(20, 20, 80, 80).Done(),
       {{20, 50, kBlue}, {50, 50, kNothing}}},
      {"y upwards",
       RedWmf()
           .Record(0x020B, {100, 0})
           .Record(0x020C, {-100, 100})
           .Rectangle(0, 0, 100, 30)
           .Done(),
       {{50, 80, kRed}, {50, 20, kNothing}}},
      {"window changed later",
       RedWmf().Rectangle(0, 0, 10, 10).Record(0x020C, {10, 10}).Rectangle(5, 5, 10, 10).Done(),
       {{5, 5, kRed}, {75, 75, kRed}, {30, 30, kNothing}}},
      {"saved state",
       RedWmf()
           .Record(0x001E, {})
           .Brush(0, 0, 255)
           .Record(0x0127, {-1})
           .Rectangle(0, 0, 100, 100)
           .Done(),
       {{50, 50, kRed}}},
      {"polygon with a hole",
       RedWmf()
           .Record(0x0538,
                   {2, 4, 4, 0, 0, 100, 0, 100, 100, 0, 100, 30, 30, 70, 30, 70, 70, 30, 70})
           .Done(),
       {{10, 10, kRed}, {50, 50, kNothing}}},
      {"ellipse and pie",
       RedWmf()
           .Record(0x0418, {50, 50, 0, 0})
           .Record(0x081A, {0, 75, 75, 100, 100, 100, 50, 50})
           .Done(),
       {{25, 25, kRed}, {3, 3, kNothing}, {90, 65, kRed}, {60, 90, kNothing}}},
      {"clipped",
       RedWmf()
           .Record(0x0416, {50, 50, 0, 0})
           .Record(0x0415, {20, 20, 0, 0})
           .Rectangle(0, 0, 100, 100)
           .Done(),
       {{10, 10, kNothing}, {40, 40, kRed}, {60, 60, kNothing}}},
      {"hatched",
       WmfFile()
           .Pen(5, 0)
           .Record(0x0201, {0x00FF, 0})
           .Brush(0, 0, 0, 2, 0)
           .Rectangle(0, 0, 100, 100)
           .Done(),
       {{50, 1, kRed}, {50, 51, kRed}}},
      {"ground of a text",
       WmfFile().Record(0x0201, {0, 255}).Record(0x0521, {1}, std::string(" \0\0\0\0\0", 6)).Done(),
       {{2, 8, kBlue}}},
      {"bitmaps side by side",
       BitmapsSideBySide(),
       {{25, 25, kRed}, {75, 60, kBlue}, {75, 90, kGreen}, {75, 25, kNothing}}},
      {"enhanced metafile in a comment", WithEnhancedMetafile(), {{50, 50, kBlue}}},
      {"masked bitmap", MaskedBitmap(), {{20, 20, kRed}, {80, 80, kNothing}}},
      {"raster operation",
       RasterOperations(),
       {{20, 50, kRed}, {50, 50, 0xFF00FFFF}, {70, 50, kBlack}, {90, 50, kNothing}}},
      {"bitmap without a source",
       RedWmf().Record(0x061D, {0x21, 0xF0, 50, 50, 0, 0}).Done(),
       {{25, 25, kRed}, {75, 25, kNothing}}},
  };
}

std::vector<Case> EmfCases() {
  const std::string red_dib = DibOf({0xFF0000, 0xFF0000, 0xFF0000, 0xFF0000});
  return {
      {"rectangle",
       RedEmf().Rectangle(20, 20, 80, 60).Done(),
       {{50, 40, kRed}, {10, 40, kNothing}}},
      {"path of lines and a curve",
       RedEmf()
           .Record(59, {})
           .Record(27, {0, 0})
           .Record(54, {100, 0})
           .Record(88, {0, 0, 0, 0, 3}, Shorts({100, 100, 0, 100, 0, 50}))
           .Record(61, {})
           .Record(60, {})
           .Record(62, {0, 0, 0, 0})
           .Done(),
       {{50, 30, kRed}, {3, 95, kNothing}}},
      {"path of two figures",
       RedEmf()
           .Record(59, {})
           .Record(27, {0, 0})
           .Record(89, {0, 0, 0, 0, 3}, Shorts({40, 0, 40, 40, 0, 40}))
           .Record(61, {})
           .Record(27, {60, 60})
           .Record(89, {0, 0, 0, 0, 3}, Shorts({100, 60, 100, 100, 60, 100}))
           .Record(61, {})
           .Record(60, {})
           .Record(62, {0, 0, 0, 0})
           .Done(),
       {{20, 20, kRed}, {80, 80, kRed}, {50, 50, kNothing}}},
      {"clipped to a path",
       RedEmf()
           .Record(59, {})
           .Record(42, {0, 0, 50, 50})
           .Record(60, {})
           .Record(67, {1})
           .Rectangle(0, 0, 100, 100)
           .Done(),
       {{25, 25, kRed}, {3, 3, kNothing}, {70, 70, kNothing}}},
      {"clip region that is left again",
       RedEmf()
           .Record(75, {48, 5, 32, 1, 1, 16, 0, 0, 50, 50, 0, 0, 50, 50})
           .Rectangle(0, 0, 100, 20)
           .Record(75, {0, 5})
           .Rectangle(0, 80, 100, 100)
           .Done(),
       {{20, 10, kRed}, {80, 10, kNothing}, {80, 90, kRed}}},
      {"world transform",
       RedEmf().Record(35, {}, Floats({0, 1, -1, 0, 100, 0})).Rectangle(0, 0, 100, 20).Done(),
       {{90, 50, kRed}, {50, 10, kNothing}}},
      {"gradient",
       EmfFile()
           .Record(118, {0, 0, 0, 0, 2, 1, 0, 0, 0, 0x0000FF00, 0, 100, 100, 0, 0xFF00, 0, 1})
           .Done(),
       {{1, 50, 0xFFFC0003}, {98, 50, 0xFF0400FB}}},
      {"stretched bitmap",
       EmfBitmap(81, {0, 0, 0, 0, 50, 50, 0, 0, 2, 2, 80, 40, 120, 16, 0, 0xCC0020, 50, 50},
                 red_dib),
       {{75, 75, kRed}, {25, 25, kNothing}}},
      {"faded bitmap",
       EmfBitmap(114, {0, 0, 0, 0, 0, 0, 100, 100, 0x800000, 0,  0, 0, 0,
                       0, 0, 0, 0, 0, 0, 108, 40,  148,      16, 2, 2},
                 red_dib),
       {{50, 50, 0x80FF0000}}},
      {"wide dashed line",
       EmfFile()
           .Record(95, {9, 0, 0, 0, 0, 0x10207, 20, 0, 0x0000FF, 0, 2, 20, 20})
           .Record(37, {9})
           .Record(27, {0, 50})
           .Record(54, {100, 50})
           .Done(),
       {{10, 50, kRed}, {30, 50, kNothing}, {50, 50, kRed}}},
      {"both kinds of records",
       RedEmf()
           .Record(70, {28, 0x2B464D45, 0x14001, 12, 0})
           .Record(70, {28, 0x2B464D45, 0x400A, 12, 0})
           .Rectangle(0, 0, 100, 100)
           .Done(),
       {{50, 50, kRed}}},
  };
}

bool Alike(QRgb one, QRgb other) {
  const auto near = [](int a, int b) { return std::abs(a - b) <= 4; };
  return near(qRed(one), qRed(other)) && near(qGreen(one), qGreen(other)) &&
         near(qBlue(one), qBlue(other)) && near(qAlpha(one), qAlpha(other));
}

void ExpectColours(const Case& one) {
  SCOPED_TRACE(one.name);
  const auto drawing = Draw(one.bytes);
  EXPECT_TRUE(drawing->complete());
  const QImage image = drawing->Rendered({100, 100}).convertToFormat(QImage::Format_ARGB32);
  for (const Probe& probe : one.probes) {
    const QRgb found = image.pixel(probe.x, probe.y);
    EXPECT_TRUE(Alike(found, probe.colour))
        << probe.x << "," << probe.y << " is " << std::hex << found << ", not " << probe.colour;
  }
}

class Metafiles : public testing::Test {
 private:
  std::shared_ptr<void> application_ = printing::HoldQtApplication();
};

TEST_F(Metafiles, OfTheOldKindAreDrawnAsTheirOrdersSay) {
  for (const Case& one : WmfCases()) ExpectColours(one);
}

TEST_F(Metafiles, OfTheEnhancedKindAreDrawnAsTheirOrdersSay) {
  for (const Case& one : EmfCases()) ExpectColours(one);
}

TEST_F(Metafiles, SayWhenSomethingOfThemIsNotDrawn) {
  using printing::Drawable;
  const EmfFile newer_only = EmfFile()
                                 .Record(70, {28, 0x2B464D45, 0x4001, 12, 0})
                                 .Record(70, {28, 0x2B464D45, 0x400A, 12, 0});
  const struct {
    const char* name;
    std::string bytes;
    Drawable expected;
  } cases[] = {
      {"whole", RedWmf().Rectangle(0, 0, 9, 9).Done(), Drawable::kWhole},
      {"nothing to draw", WmfFile().Done(), Drawable::kWhole},
      {"an order that nobody knows", RedWmf().Rectangle(0, 0, 9, 9).Record(0x0777, {1}).Done(),
       Drawable::kInPart},
      {"a flood of colour", RedWmf().Rectangle(0, 0, 9, 9).Record(0x0548, {0, 0, 0, 5, 5}).Done(),
       Drawable::kInPart},
      {"cut off", RedWmf().Rectangle(0, 0, 9, 9).Unfinished(), Drawable::kInPart},
      {"cut off before its first line", WmfFile().Unfinished(), Drawable::kNot},
      {"newer records only", newer_only.Done(), Drawable::kNot},
      {"glyph numbers of another computer",
       RedEmf()
           .Rectangle(0, 0, 9, 9)
           .Record(84, {0, 0, 0, 0, 1, 0, 0, 5, 5, 1, 76, 0x10, 0, 0, 0, 0, 0}, "AB")
           .Done(),
       Drawable::kInPart},
      {"no metafile", "lines only", Drawable::kNot},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    richtext::Picture picture;
    picture.kind = KindOf(one.bytes);
    picture.bytes = one.bytes;
    EXPECT_EQ(printing::DrawableIn(picture), one.expected);
  }
}

richtext::Picture PictureOf(const std::string& bytes) {
  richtext::Picture picture;
  picture.kind = KindOf(bytes);
  picture.width = picture.height = 2880;
  picture.bytes = bytes;
  return picture;
}

TEST_F(Metafiles, AreLinesAndTextOnPaper) {
  const ScratchFolder folder;
  const std::string bytes = RedEmf()
                                .Rectangle(0, 0, 100, 100)
                                .Record(84, {0, 0, 0, 0, 1, 0, 0, 10, 50, 4, 76, 0, 0, 0, 0, 0, 84},
                                        Shorts({'L', 'o', 'g', 'o', 12, 0, 12, 0, 12, 0, 12, 0}))
                                .Done();
  richtext::Paragraph paragraph = Line("beside ");
  richtext::Run run;
  run.object = std::make_shared<const richtext::Picture>(PictureOf(bytes));
  paragraph.runs.push_back(run);
  const Paper paper = Print(DocumentOf({paragraph}), folder);
  EXPECT_THAT(paper.Text(), HasSubstr("Logo"));
  EXPECT_NEAR(paper.Find("Logo").left - paper.Find("beside").right, 288, 100);
  EXPECT_THAT(Poppler({"pdfimages", "-list", paper.file.string()}), Not(HasSubstr("image")));
}

TEST_F(Metafiles, BecomePngPicturesOfTheirSize) {
  const auto png = printing::MetafileAsPng(PictureOf(RedWmf().Rectangle(0, 0, 50, 100).Done()), 96);
  ASSERT_TRUE(png);
  const QImage image = QImage::fromData(QByteArray::fromStdString(*png), "PNG");
  ASSERT_EQ(image.size(), QSize(192, 192));
  EXPECT_EQ(image.pixel(50, 100), kRed);
  EXPECT_EQ(qAlpha(image.pixel(150, 100)), 0);
  EXPECT_FALSE(printing::MetafileAsPng(PictureOf("lines only"), 96));
}

TEST_F(Metafiles, DamagedAnywhereAreStillBounded) {
  std::vector<std::string> wholes;
  for (const Case& one : WmfCases()) wholes.push_back(one.bytes);
  for (const Case& one : EmfCases()) wholes.push_back(one.bytes);
  for (const std::string& whole : wholes) {
    for (std::size_t at = 0; at < whole.size(); at += 5) {
      std::string flipped = whole;
      flipped[at] = static_cast<char>(flipped[at] ^ 0xFF);
      for (const std::string& bytes : {whole.substr(0, at), flipped}) {
        EXPECT_EQ(printing::DrawingOf(KindOf(whole), bytes)->Rendered({20, 20}).width(), 20);
      }
    }
  }
}

// Qt would look for room for a letter of a hundred thousand pixels.
TEST_F(Metafiles, MayStretchTheirTextsBeyondMeasure) {
  const std::string bytes =
      EmfFile()
          .Record(35, {}, Floats({5000, 0, 0, 0.01F, 0, 0}))
          .Record(84, {0, 0, 0, 0, 2, 0, 0, 0, 2000, 1, 76, 0, 0, 0, 0, 0, 0}, Shorts({'M', 0}))
          .Done();
  EXPECT_EQ(Draw(bytes)->Rendered({200, 200}).width(), 200);
}

// In pixels, a shape that reaches two thousand frames beyond the picture takes a minute.
TEST_F(Metafiles, DrawNothingThatIsFarOutsideTheirFrame) {
  const auto frame = [](std::int16_t reach) {
    return RedWmf().Rectangle(0, 0, 100, 100).Rectangle(0, -reach, 50, reach).Done();
  };
  EXPECT_TRUE(Draw(frame(5'000))->complete());
  const auto drawing = Draw(frame(32'000));
  EXPECT_FALSE(drawing->complete());
  EXPECT_EQ(drawing->Rendered({10, 10}).pixel(5, 5), kRed);
}

TEST_F(Metafiles, StopDrawingBeforeTheyHoldUpALetter) {
  WmfFile file = RedWmf();
  for (int i = 0; i < 5000; ++i) file.Rectangle(0, 0, 100, 100);
  const auto drawing = Draw(file.Done());
  EXPECT_FALSE(drawing->complete());
  EXPECT_EQ(drawing->Rendered({10, 10}).pixel(5, 5), kRed);
}

}  // namespace
}  // namespace tenora::test
