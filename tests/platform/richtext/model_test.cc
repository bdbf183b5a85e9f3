#include <gtest/gtest.h>

#include "platform/richtext/richtext_support.h"

namespace tenora::richtext {
namespace {

const Table& FirstTable(const Document& document) {
  for (const Block& block : document.blocks) {
    if (const auto* table = std::get_if<std::shared_ptr<Table>>(&block)) return **table;
  }
  throw std::runtime_error("no table");
}

TEST(RtfReader, GivesTablesTheirGeometry) {
  const Document document =
      ReadRtf(Letter("\\trowd\\trhdr\\trqc\\trgaph70\\trleft-70\\trrh-400"
                     "\\clvmgf\\clvertalc\\clcbpat2\\clbrdrt\\brdrs\\brdrw15\\brdrcf1\\cellx2000"
                     "\\clmgf\\clbrdrb\\brdrnone\\cellx4000\\clmrg\\clvertalb\\cellx5000"
                     "\\pard\\intbl a\\par b\\cell c\\cell\\cell\\row"
                     "\\trowd\\cellx2000\\pard\\intbl d\\cell e\\cell\\row\\pard after\\par"));
  const Table& table = FirstTable(document);
  ASSERT_EQ(table.rows.size(), 2U);
  const Row& head = table.rows[0];
  EXPECT_TRUE(head.header);
  EXPECT_EQ(head.alignment, Alignment::kCentre);
  EXPECT_EQ(head.left_edge, -70);
  EXPECT_EQ(head.half_gap, 70);
  EXPECT_EQ(head.height, -400);
  ASSERT_EQ(head.cells.size(), 3U);
  EXPECT_EQ(head.cells[0].right_edge, 2000);
  EXPECT_EQ(head.cells[0].vertical_merge, Cell::Merge::kFirst);
  EXPECT_EQ(head.cells[0].vertical_align, Cell::VerticalAlign::kCentre);
  EXPECT_EQ(head.cells[0].top, (Border{true, 15, 1}));
  EXPECT_EQ(head.cells[0].shading, 2);
  EXPECT_EQ(head.cells[0].blocks.size(), 2U);
  EXPECT_FALSE(head.cells[1].bottom.present);
  EXPECT_EQ(head.cells[1].horizontal_merge, Cell::Merge::kFirst);
  EXPECT_EQ(head.cells[2].horizontal_merge, Cell::Merge::kContinued);
  // A cell that the definition forgot is still a cell.
  ASSERT_EQ(table.rows[1].cells.size(), 2U);
  EXPECT_GT(table.rows[1].cells[1].right_edge, 2000);
}

TEST(RtfReader, ShadesCellsInSharesOfTheirColours) {
  // Red is 1, blue is 2 of the letter's colours; white and black are no colours of a cell's own.
  const struct {
    const char* words;
    Colour colour;
  } cases[] = {{"\\clshdng2500", {.red = 192, .green = 192, .blue = 192}},
               {"\\clcfpat1\\clcbpat2\\clshdng5000", {.red = 127, .blue = 128}},
               {"\\clcfpat2\\clshdng10000", {.blue = 255}},
               {"\\clcfpat1\\clcbpat2\\clshdng-50", {.blue = 255}},
               {"\\clcbpatraw2", {.blue = 255}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    const std::string source = Canonical(Letter(std::string("\\trowd") + c.words +
                                                "\\cellx2000\\cellx3000\\pard\\intbl "
                                                "a\\cell b\\cell\\row\\pard x"));
    EXPECT_EQ(Canonical(source), source);
    const Document document = ReadRtf(source);
    const std::vector<Cell>& cells = FirstTable(document).rows[0].cells;
    EXPECT_EQ(document.colours.at(static_cast<std::size_t>(cells[0].shading)), c.colour);
    EXPECT_EQ(cells[1].shading, 0);
  }
}

TEST(RtfReader, KnowsWhereTheTextOfRowsAndCellsRuns) {
  const Document document = ReadRtf(
      Letter("\\trowd\\rtlrow\\cltxbtlr\\cellx1000\\cltxtbrl\\cellx2000\\cltxlrtb\\cellx3000"
             "\\pard\\intbl a\\cell b\\cell c\\cell\\row\\pard x"));
  const Row& row = FirstTable(document).rows[0];
  EXPECT_TRUE(row.right_to_left);
  EXPECT_EQ(row.cells[0].direction, Cell::Direction::kUp);
  EXPECT_EQ(row.cells[1].direction, Cell::Direction::kDown);
  EXPECT_EQ(row.cells[2].direction, Cell::Direction::kAcross);
}

TEST(RtfReader, DrawsTheBordersThatCellsHave) {
  using Kind = Border::Kind;
  const struct {
    const char* words;
    Border border;
  } cases[] = {
      {"\\brdrs\\brdrw10", {true, 10}},
      {"\\brdrtnthsg\\brdrw30", {.present = true, .width = 30, .kind = Kind::kThickThinSmall}},
      {"\\brdrdb\\brdrw15\\brdrcf1",
       {.present = true, .width = 15, .colour = 1, .kind = Kind::kDouble}},
      {"\\brdrdot", {.present = true, .kind = Kind::kDotted}},
      {"\\brdrtbl\\brdrw10\\brdrcf1", {}},
      {"\\brdrs\\brdrtbl", {}},
      {"\\brdrnil", {}},
      {"\\brdrw20", {}}};
  for (const auto& c : cases) {
    const Document document = ReadRtf(Letter(std::string("\\trowd\\trbrdrt\\brdrs\\clbrdrt") +
                                             c.words + "\\cellx2000\\pard\\intbl a\\cell\\row"));
    EXPECT_EQ(FirstTable(document).rows.at(0).cells.at(0).top, c.border) << c.words;
  }
}

TEST(RtfReader, GivesCellsTheirPadding) {
  // Cells name their top "l" and their left "t", rows do not; a length counts with its unit only.
  const Document document = ReadRtf(
      Letter("\\trowd\\trpaddl108\\trpaddfl3\\trpaddt9\\trpaddft3\\trpaddb5\\clpadl20\\clpadfl3"
             "\\clpadt30\\clpadft3\\clbrdrt\\brdrs\\brsp20\\brdrw15\\clpadr7\\cellx2000\\cellx4000"
             "\\pard\\intbl a\\cell b\\cell\\row"));
  const std::vector<Cell>& cells = FirstTable(document).rows.at(0).cells;
  const auto sides = [](const Padding& padding) {
    return std::vector{padding.top, padding.left, padding.bottom, padding.right};
  };
  EXPECT_EQ(sides(cells.at(0).padding), (std::vector{20, 30, -1, -1}));
  EXPECT_EQ(sides(cells.at(1).padding), (std::vector{9, 108, -1, -1}));
  EXPECT_EQ(cells[0].top.width, 15) << "behind a word between border words";
}

TEST(RtfReader, PutsTablesIntoCells) {
  const std::string source = Letter(
      "\\trowd\\cellx5000\\pard\\intbl outer\\par\\itap2 x\\nestcell y\\nestcell"
      "{\\*\\nesttableprops\\trowd\\cellx1000\\cellx2000\\nestrow}{\\nonesttables\\par}"
      "\\pard\\intbl end\\cell\\row\\pard after\\par");
  const Document document = ReadRtf(source);
  const std::vector<Block>& blocks = FirstTable(document).rows.at(0).cells.at(0).blocks;
  ASSERT_EQ(blocks.size(), 3U);
  const Table& inner = *std::get<std::shared_ptr<Table>>(blocks[1]);
  ASSERT_EQ(inner.rows.at(0).cells.size(), 2U);
  EXPECT_EQ(inner.rows[0].cells[1].right_edge, 2000);
  EXPECT_EQ(PlainText(document.blocks), "outer\r\nx\ty\r\nend\r\nafter");
}

TEST(RtfReader, MeasuresPictures) {
  const struct {
    const char* source;
    Picture::Kind kind;
    int width, height;
    std::size_t bytes;
  } kCases[] = {
      {"{\\pict\\pngblip\\picwgoal300\\pichgoal150\\picscalex50\\picscaley200 8950\r\n4e47}",
       Picture::Kind::kPng, 150, 300, 4},
      {"{\\pict\\jpegblip\\picw10\\pich20 ffd8ff}", Picture::Kind::kJpeg, 150, 300, 3},
      {"{\\pict\\wmetafile8\\picw2540\\pich1270 01}", Picture::Kind::kWmf, 1440, 720, 1},
      {"{\\pict{\\*\\picprop{\\sp{\\sn a}{\\sv 1}}}\\emfblip\\picwgoal10\\pichgoal10\\bin3 a}b}",
       Picture::Kind::kEmf, 10, 10, 3},
      {"{\\pict\\dibitmap0\\picwgoal20\\pichgoal20 0a0b}", Picture::Kind::kDib, 20, 20, 2},
      {"{\\pict\\pngblip\\picwgoal400\\pichgoal200\\piccropl100\\piccropt-50 89}",
       Picture::Kind::kPng, 300, 250, 1},
      // Nothing would be left of its width.
      {"{\\pict\\pngblip\\picwgoal400\\pichgoal200\\piccropl300\\piccropr100\\piccropb50 89}",
       Picture::Kind::kPng, 400, 150, 1},
      // Its words, or all of it, in a group of their own.
      {"{\\pict{\\pngblip\\picwgoal300\\pichgoal150\\picscalex50 8950}}", Picture::Kind::kPng, 150,
       150, 2},
      {"{\\pict{\\jpegblip}{\\picwgoal300\\pichgoal150}ffd8ff}", Picture::Kind::kJpeg, 300, 150, 3},
      // The bytes are of another kind than their name.
      {"{\\pict\\wmetafile8\\picwgoal20\\pichgoal20 89504e470d0a}", Picture::Kind::kPng, 20, 20, 6},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.source);
    for (const std::string& source :
         {Letter(c.source), Canonical(Letter(std::string(c.source) + "{\\nonshppict x}"))}) {
      const Document document = ReadRtf(source);
      const richtext::Run& run = std::get<Paragraph>(document.blocks.at(0)).runs.at(0);
      const auto& picture = std::get<std::shared_ptr<const Picture>>(run.object);
      EXPECT_EQ(picture->kind, c.kind);
      EXPECT_EQ(picture->width, c.width);
      EXPECT_EQ(picture->height, c.height);
      EXPECT_EQ(picture->bytes.size(), c.bytes);
    }
  }
}

TEST(RtfReader, ShowsFormFields) {
  const auto shown = [](const std::string& instruction) {
    const std::string source =
        Canonical(Letter("{\\field{\\*\\fldinst {" + instruction + "}}{\\fldrslt }}"));
    const richtext::Run run = std::get<Paragraph>(ReadRtf(source).blocks.at(0)).runs.at(0);
    EXPECT_EQ(Canonical(source), source);
    return std::get<std::shared_ptr<const Verbatim>>(run.object)->shown_text;
  };
  const std::string box = "FORMCHECKBOX {\\*\\formfield{\\fftype1\\fftypetxt0\\ffhps20";
  const std::string list = "FORMDROPDOWN {\\*\\formfield{\\fftype2{\\*\\ffname D}";
  EXPECT_EQ(shown(box + "\\ffres1\\ffdefres0}}"), "☒");
  EXPECT_EQ(shown(box + "\\ffres0\\ffdefres1}}"), "☐");
  EXPECT_EQ(shown(box + "\\ffres25\\ffdefres1}}"), "☒") << "25 is undecided";
  EXPECT_EQ(shown(list + "\\ffres1\\ffdefres0{\\*\\ffl one}{\\*\\ffl zw\\'f6lf}}}"), "zwölf");
  EXPECT_EQ(shown(list + "\\ffres7{\\*\\ffl one}}}"), "");
  EXPECT_EQ(shown("\\cs16 " + box + "\\ffres1}}"), "☒");
  EXPECT_EQ(shown(" " + list + "\\ffres0{\\*\\ffl one}}}"), "one");
  EXPECT_EQ(shown("MACROBUTTON NoMacro [Click here]"), "[Click here]");
  EXPECT_EQ(shown("MACROBUTTON MTPlaceRef \\\\* MERGEFORMAT (1)"), "(1)");
  EXPECT_EQ(shown("GOTOBUTTON _Toc1 {\\field{\\*\\fldinst PAGEREF _Toc1}{\\fldrslt 3}}"), "3");
}

TEST(RtfReader, ShowsEquationsAsText) {
  const struct {
    const char* instruction;
    const char* shown;
  } kCases[] = {
      {"x = \\\\f(1,2)", "x = 1/2"},
      {"\\\\r(,a;b)", "\u221aa"},
      {"\\\\r(3;x\\\\s\\\\up8(2))", "3\u221ax2"},
      {"\\\\b\\\\bc\\\\[(\\\\a\\\\al\\\\co2(1,2,3,4))", "[1 2 3 4]"},
      {"\\\\b(a \\\\( b)", "(a ( b)"},
      {"\\\\i(0,1,x dx)", "\u222bx dx"},
      {"\\\\* jc2 \\\\* \"Font:Arial\" \\\\o\\\\ad(\\\\s\\\\up 10(small),large)", "smalllarge"},
      // Cut off, or nothing of the kind.
      {"\\\\f(1,\\\\f(2", "1/2/"},
      {"\\\\", ""},
  };
  for (const auto& c : kCases) {
    const Document document = ReadRtf(
        Letter("{\\field{\\*\\fldinst { EQ " + std::string(c.instruction) + "}}{\\fldrslt }}"));
    const richtext::Run& run = std::get<Paragraph>(document.blocks.at(0)).runs.at(0);
    EXPECT_EQ(std::get<std::shared_ptr<const Verbatim>>(run.object)->shown_text, c.shown);
  }
}

TEST(RtfReader, SizesPicturesWithoutAGoalByTheirResolution) {
  // 300 by 150 pixels at 11811 dots to the metre, which is 300 to the inch.
  const std::string png =
      "89504e470d0a1a0a0000000d49484452"
      "0000012c"
      "00000096"
      "0802000000"
      "00000000"
      "00000009"
      "70485973"
      "00002e23"
      "00002e23"
      "01"
      "00000000"
      "0000000049444154";
  const std::string jpeg =
      "ffd8ffe000104a46494600010101"
      "00c8"
      "00c8"
      "0000"
      "ffc00011"
      "08"
      "0064"
      "00c8"
      "03";
  const std::string dib =
      "28000000"
      "60000000"
      "a0ffffff"
      "01001800"
      "00000000"
      "00000000"
      "00000000"
      "00000000";
  const struct {
    std::string words, bytes;
    int width, height;
  } cases[] = {{"\\pngblip\\picw300\\pich150", png, 1440, 720},
               {"\\pngblip\\picscalex50\\picscaley200", png, 720, 1440},
               {"\\pngblip\\picwgoal2880", png, 2880, 1440},
               {"\\pngblip\\picw300\\pich150", png.substr(0, 60), 4500, 2250},
               {"\\jpegblip\\picw200\\pich100", jpeg, 1440, 720},
               {"\\dibitmap0", dib, 1440, 1440}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    const Document document = ReadRtf(Letter("{\\pict" + c.words + " " + c.bytes + "}"));
    const richtext::Run& run = std::get<Paragraph>(document.blocks.at(0)).runs.at(0);
    const Picture& picture = *std::get<std::shared_ptr<const Picture>>(run.object);
    EXPECT_EQ(picture.width, c.width);
    EXPECT_EQ(picture.height, c.height);
  }
}

TEST(RtfReader, ShowsWhatObjectsShow) {
  const Document document =
      ReadRtf(Letter("{\\object\\objemb{\\*\\objdata 01}{\\result{\\pict\\pngblip 89}}}"
                     "{\\shp{\\*\\shpinst{\\shptxt Box\\par}}}"));
  const std::vector<richtext::Run>& runs = std::get<Paragraph>(document.blocks.at(0)).runs;
  ASSERT_EQ(runs.size(), 2U);
  const auto& object = std::get<std::shared_ptr<const Verbatim>>(runs[0].object);
  ASSERT_NE(object->shown_picture, nullptr);
  EXPECT_EQ(object->shown_picture->bytes, "\x89");
  EXPECT_EQ(std::get<std::shared_ptr<const Verbatim>>(runs[1].object)->shown_text, "Box");
}

// The points of an outline in twips of the figure, with how they are reached.
std::string DescribedOutline(const richtext::Figure& figure) {
  std::string text;
  const auto add = [&](const richtext::Outline::Point& point) {
    text += std::to_string(std::lround(point.x * (figure.right - figure.left))) + "," +
            std::to_string(std::lround(point.y * (figure.bottom - figure.top))) + " ";
  };
  for (const richtext::Outline::Step& step : figure.outline.steps) {
    using Kind = richtext::Outline::Step::Kind;
    text += "MLCZ"[static_cast<int>(step.kind)];
    if (step.kind == Kind::kCurve) {
      add(step.first);
      add(step.second);
    }
    if (step.kind != Kind::kClose) add(step.to);
  }
  return text;
}

// One figure as "kind left,top,right,bottom fill line text".
std::string Described(const richtext::Figure& figure) {
  const char* const kinds[] = {"rectangle", "rounded", "ellipse", "line", "outline"};
  const auto colour = [](const std::optional<richtext::Colour>& one) {
    if (!one) return std::string("-");
    return std::to_string(one->red) + "/" + std::to_string(one->green) + "/" +
           std::to_string(one->blue);
  };
  std::string text = kinds[static_cast<int>(figure.kind)];
  for (const int edge : {figure.left, figure.top, figure.right, figure.bottom})
    text += " " + std::to_string(edge);
  return text + " " + colour(figure.fill) + " " + colour(figure.line) + " " +
         PlainText(figure.blocks) + (figure.picture ? "[picture]" : "") +
         (figure.lettering ? "[" + figure.lettering->text + "]" : "") + DescribedOutline(figure) +
         (figure.rotation == 0 ? "" : "turned " + std::to_string(std::lround(figure.rotation)));
}

TEST(RtfReader, TakesTheFiguresOutOfDrawings) {
  const std::string place = "\\shpleft100\\shptop200\\shpright1100\\shpbottom700";
  const auto shape = [&](int type, const std::string& more) {
    return "{\\shp{\\*\\shpinst" + place + "{\\sp{\\sn shapeType}{\\sv " + std::to_string(type) +
           "}}" + more + "}{\\shprslt{\\*\\do\\dptxbx{\\dptxbxtext copy\\par}}}}";
  };
  const auto member = [](int left, int right, const std::string& more) {
    return "{\\shp{\\*\\shpinst{\\sp{\\sn shapeType}{\\sv 1}}{\\sp{\\sn relLeft}{\\sv " +
           std::to_string(left) + "}}{\\sp{\\sn relRight}{\\sv " + std::to_string(right) +
           "}}{\\sp{\\sn relBottom}{\\sv 50}}" + more + "}}";
  };
  const struct {
    std::string source;
    std::vector<std::string> figures;
  } cases[] = {
      {shape(202, "{\\sp{\\sn fillColor}{\\sv 255}}{\\shptxt box\\par}"),
       {"rectangle 0 0 1000 500 255/0/0 0/0/0 box"}},
      {shape(3, "{\\sp{\\sn fFilled}{\\sv 0}}{\\sp{\\sn lineColor}{\\sv 16711680}}"),
       {"ellipse 0 0 1000 500 - 0/0/255 "}},
      {shape(20, ""), {"line 0 0 1000 500 - 0/0/0 "}},
      {shape(75, "{\\sp{\\sn pib}{\\sv{\\pict\\pngblip 89}}}"),
       {"rectangle 0 0 1000 500 - - [picture]"}},
      {shape(2, "{\\sp{\\sn fHidden}{\\sv 1}}"), {}},
      // Its \shp does not begin the group.
      {"{\\fs20\\shp{\\*\\shpinst" + place + "{\\sp{\\sn shapeType}{\\sv 1}}}}",
       {"rectangle 0 0 1000 500 255/255/255 0/0/0 "}},
      // Lettering, and kinds that are not known, show nothing without a text.
      {shape(136, "{\\sp{\\sn fFilled}{\\sv 1}}"), {}},
      {shape(199, ""), {}},
      {shape(136, "{\\sp{\\sn gtextUNICODE}{\\sv Caf\\'e9}}{\\sp{\\sn rotation}{\\sv 20643840}}"),
       {"rectangle 0 0 1000 500 255/255/255 0/0/0 [Caf\u00e9]turned 315"}},
      {shape(6, "{\\sp{\\sn fFlipH}{\\sv 1}}"),
       {"outline 0 0 1000 500 255/255/255 0/0/0 M1000,0 L0,500 L1000,500 Z"}},
      {shape(66, "{\\sp{\\sn adjustValue}{\\sv 10800}}{\\sp{\\sn fFilled}{\\sv 0}}"),
       {"outline 0 0 1000 500 - 0/0/0 M1000,125 L500,125 L500,0 L0,250 L500,500 L500,375 L1000,375 "
        "Z"}},
      {shape(0,
             "{\\sp{\\sn geoRight}{\\sv 10}}{\\sp{\\sn geoBottom}{\\sv 10}}{\\sp{\\sn "
             "pVerticies}{\\sv "
             "8;5;(0,0);(10,0);(10,5);(10,10);(5,10)}}{\\sp{\\sn pSegmentInfo}{\\sv "
             "2;5;16384;1;8193;24577;32768}}"),
       {"outline 0 0 1000 500 255/255/255 0/0/0 M0,0 L1000,0 C1000,250 1000,500 500,500 Z"}},
      // What is turned by about a quarter has the place of the turned shape. Boxes of text are not
      // turned.
      {shape(1, "{\\sp{\\sn rotation}{\\sv 5898240}}"),
       {"rectangle 250 -250 750 750 255/255/255 0/0/0 turned 90"}},
      {shape(1, "{\\sp{\\sn rotation}{\\sv 2949120}}{\\shptxt box\\par}"),
       {"rectangle 0 0 1000 500 255/255/255 0/0/0 box"}},
      {"{\\shpgrp{\\*\\shpinst" + place +
           "{\\sp{\\sn groupRight}{\\sv 200}}{\\sp{\\sn groupBottom}{\\sv 100}}" +
           member(0, 100, "{\\shptxt a\\par}") + member(100, 200, "") + "}}",
       {"rectangle 0 0 500 250 255/255/255 0/0/0 a",
        "rectangle 500 0 1000 250 255/255/255 0/0/0 "}},
      {"{\\shpgrp{\\*\\shpinst" + place +
           "{\\sp{\\sn groupRight}{\\sv 200}}{\\sp{\\sn groupBottom}{\\sv 100}}{\\sp{\\sn "
           "fFlipH}{\\sv "
           "1}}{\\sp{\\sn rotation}{\\sv 11796480}}" +
           member(0, 100, "") + member(100, 200, "{\\shptxt a\\par}") + "}}",
       {"rectangle 0 250 500 500 255/255/255 0/0/0 turned 180",
        "rectangle 500 250 1000 500 255/255/255 0/0/0 a"}},
      {"{\\*\\do\\dobxpage\\dptxbx\\dptxbxmar40{\\dptxbxtext old\\par}\\dpx10\\dpy20\\dpxsize300"
       "\\dpysize400\\dpfillbgcr255\\dpfillpat1\\dplinehollow\\dpline\\dpptx0\\dppty100\\dpptx100"
       "\\dppty0\\dpx10\\dpy20\\dpxsize100\\dpysize100}",
       {"rectangle 0 0 300 400 255/0/0 - old", "line 0 0 100 100 - 0/0/0 "}},
      {"{\\*"
       "\\do\\dppolyline\\dppolycount2\\dpptx20\\dppty0\\dpptx0\\dppty10\\dpx10\\dpy20\\dpxsize20"
       "\\dpysize10\\dppolygon\\dpptx0\\dppty0\\dpptx5\\dppty5\\dpptx0\\dppty5\\dpx10\\dpy20\\dpxsi"
       "ze5"
       "\\dpysize5}",
       {"outline 0 0 20 10 - 0/0/0 M20,0 L0,10 ", "outline 0 0 5 5 - 0/0/0 M0,0 L5,5 L0,5 Z"}},
  };
  for (const auto& c : cases) {
    for (const std::string& source : {Letter(c.source), Canonical(Letter(c.source))}) {
      const Document document = ReadRtf(source);
      const richtext::Run& run = std::get<Paragraph>(document.blocks.at(0)).runs.at(0);
      std::vector<std::string> found;
      for (const auto& figure : std::get<std::shared_ptr<const Verbatim>>(run.object)->figures)
        found.push_back(Described(*figure));
      EXPECT_EQ(found, c.figures) << source;
    }
  }
}

// A box's fonts and colours are those of the letter, also after its tables are put in order.
TEST(RtfReader, NumbersTheTextInBoxesAsTheLetter) {
  const Document document = ReadRtf(
      "{\\rtf1{\\fonttbl{\\f0 Unused;}{\\f7 Arial;}}{\\colortbl;\\red9;\\red255;}"
      "{\\shp{\\*\\shpinst{\\sp{\\sn shapeType}{\\sv 202}}{\\shptxt\\f7\\cf2 box\\par}}}}");
  const auto& object = std::get<std::shared_ptr<const Verbatim>>(
      std::get<Paragraph>(document.blocks.at(0)).runs.at(0).object);
  ASSERT_EQ(object->figures.size(), 1U);
  const richtext::CharFormat& format =
      std::get<Paragraph>(object->figures[0]->blocks.at(0)).runs.at(0).format;
  EXPECT_EQ(document.fonts.at(static_cast<std::size_t>(format.font)).name, "Arial");
  EXPECT_EQ(document.colours.at(static_cast<std::size_t>(format.colour)).red, 255);
}

TEST(RtfReader, KeepsAFieldsResultAsText) {
  const Document document =
      ReadRtf(Letter("see {\\field\\fldlock{\\*\\fldinst {\\b HYPER}{\\i LINK \"a\"}}{\\fldrslt "
                     "{\\ul li}{\\ul nk {\\field{\\*\\fldinst X}{\\fldrslt in}}}}}."));
  EXPECT_EQ(PlainText(document.blocks), "see link in.");
  const std::vector<richtext::Run>& runs = std::get<Paragraph>(document.blocks.at(0)).runs;
  ASSERT_EQ(runs.size(), 4U);
  ASSERT_NE(runs[1].field, nullptr);
  EXPECT_EQ(runs[1].field->instruction, "HYPERLINK \"a\"");
  EXPECT_EQ(runs[1].field->flags, "\\fldlock");
  EXPECT_EQ(runs[2].field->outer, runs[1].field);
}

}  // namespace
}  // namespace tenora::richtext
