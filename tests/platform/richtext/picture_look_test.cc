#include "platform/richtext/picture_look.h"

#include <gtest/gtest.h>

#include "richtext_support.h"

namespace tenora::richtext {
namespace {

// Four pixels by two at 96 to the inch.
constexpr const char* kPng =
    "89504e470d0a1a0a0000000d4948445200000004000000020802000000000000000000000049444154";

richtext::Run FirstRun(const std::string& source) {
  return std::get<Paragraph>(ReadRtf(source).blocks.at(0)).runs.at(0);
}

richtext::Run RunOf(const std::string& words, const char* data = kPng) {
  return FirstRun(Letter("{\\pict" + words + " " + data + "}"));
}

std::string SourceOf(const richtext::Run& run) {
  if (const auto* picture = std::get_if<std::shared_ptr<const Picture>>(&run.object))
    return (*picture)->source;
  return std::get<std::shared_ptr<const Verbatim>>(run.object)->source;
}

TEST(PictureLook, ResizesEveryKindOfPictureAndKeepsWhatIsCutOff) {
  struct Case {
    const char* words;
    PictureLook look;     // as read
    const char* resized;  // to 3000 by 1500
  };
  const Case cases[] = {
      {"\\pngblip\\picw4\\pich2\\picwgoal300\\pichgoal150",
       {300, 150},
       "\\picwgoal3000\\pichgoal1500 8950"},
      {"\\pngblip\\picwgoal600\\pichgoal100\\picscalex50\\picscaley200",
       {300, 200},
       "\\picwgoal3000\\pichgoal1500 8950"},
      {"\\pngblip", {60, 30}, "\\picwgoal3000\\pichgoal1500 8950"},
      {"\\pngblip\\picwgoal500\\pichgoal150\\piccropl100\\piccropr100\\piccropt0",
       {300, 150},
       "\\picwgoal5000\\pichgoal1500\\piccropl1000\\piccropr1000 8950"},
      // Added room keeps its share too; cropping that would leave nothing does not come back.
      {"\\pngblip\\picwgoal300\\pichgoal150\\piccropl400\\piccropt-150",
       {300, 300},
       "\\picwgoal3000\\pichgoal750\\piccropt-750 8950"},
      {"{\\*\\picprop{\\sp{\\sn picw1}{\\sv "
       "1}}}\\wmetafile8\\picw2540\\pich1270\\picwgoal300\\pichgoal150",
       {300, 150},
       "\\picw2540\\pich1270\\picwgoal3000\\pichgoal1500 8950"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.words);
    const richtext::Run run = RunOf(c.words);
    ASSERT_EQ(LookOf(run), c.look);
    const richtext::Run resized = WithLook(run, {3000, 1500}, 9000);
    EXPECT_NE(SourceOf(resized).find(c.resized), std::string::npos) << SourceOf(resized);
    EXPECT_EQ(LookOf(resized), (PictureLook{3000, 1500}));
    // And back, without drift.
    EXPECT_EQ(LookOf(WithLook(resized, c.look, 9000)), c.look);
  }
}

TEST(PictureLook, MovesAPictureIntoAShapeAndBack) {
  const richtext::Run in_line = RunOf("\\pngblip\\picwgoal300\\pichgoal150");
  for (const PicturePlace place : {PicturePlace::kLeft, PicturePlace::kRight}) {
    const PictureLook wanted{600, 400, place};
    const richtext::Run shape = WithLook(in_line, wanted, 9000);
    EXPECT_EQ(LookOf(shape), wanted);
    // As saved and loaded.
    const richtext::Run loaded = FirstRun(Canonical(Letter(SourceOf(shape))));
    EXPECT_EQ(SourceOf(loaded), SourceOf(shape));
    EXPECT_EQ(LookOf(loaded), wanted);
    const auto& read = std::get<std::shared_ptr<const Verbatim>>(loaded.object);
    EXPECT_EQ(read->shape->wrap, ShapeBox::Wrap::kAround);
    EXPECT_EQ(read->shape->left, place == PicturePlace::kLeft ? 0 : 8400);
    EXPECT_FALSE(read->figures.at(0)->line) << "no frame around it";
    EXPECT_EQ(OwnLookOf(loaded).width, 60);
    const richtext::Run back = WithLook(loaded, {300, 150}, 9000);
    EXPECT_EQ(SourceOf(back), SourceOf(in_line));
  }
}

TEST(PictureLook, ResizesAWordProcessorsShapeInItsPlace) {
  const std::string shape =
      "{\\shp{\\*\\shpinst\\shpleft100\\shptop-"
      "50\\shpright400\\shpbottom100\\shpbxpage\\shpbypage\\shpwr3"
      "{\\sp{\\sn shapeType}{\\sv 75}}{\\sp{\\sn pib}{\\sv "
      "{\\pict\\pngblip\\picwgoal300\\pichgoal150 8950}}}"
      "{\\sp{\\sn fLine}{\\sv 1}}}}";
  const richtext::Run run = FirstRun(Letter(shape));
  ASSERT_EQ(LookOf(run), (PictureLook{300, 150, PicturePlace::kAsSet}));
  const richtext::Run resized = WithLook(run, {900, 450, PicturePlace::kAsSet}, 9000);
  const auto& read = std::get<std::shared_ptr<const Verbatim>>(resized.object);
  EXPECT_EQ(read->shape->left, 100);
  EXPECT_EQ(read->shape->top, -50);
  EXPECT_EQ(read->shape->right, 1000);
  EXPECT_EQ(read->shape->bottom, 400);
  EXPECT_TRUE(read->figures.at(0)->line) << "its frame is kept";
}

TEST(PictureLook, LeavesAloneWhatIsNoSinglePicture) {
  for (const char* source :
       {"x", "{\\object\\objemb{\\*\\objdata 01}{\\result{\\pict\\pngblip 8950}}}",
        "{\\shp{\\*\\shpinst\\shpright900\\shpbottom900{\\sp{\\sn shapeType}{\\sv 1}}}}",
        "{\\shpgrp{\\*\\shpinst\\shpright9\\shpbottom9{\\shp{\\*\\shpinst{\\sp{\\sn pib}{\\sv "
        "{\\pict\\pngblip 8950}}}}}}}"})
    EXPECT_FALSE(LookOf(FirstRun(Letter(source)))) << source;
}

}  // namespace
}  // namespace tenora::richtext
