#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/richtext/richtext_support.h"

namespace tenora::richtext {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

struct Case {
  std::string body;
  std::string canonical;  // after \pard\f0\fs24 of the first paragraph unless it begins with \pard
};

void Check(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    SCOPED_TRACE(c.body);
    EXPECT_EQ(CanonicalBody(c.body), c.canonical);
    const std::string once = Canonical(Letter(c.body));
    EXPECT_EQ(Canonical(once), once);
  }
}

TEST(CanonicalForm, IsWhatTheClassicControlWrites) {
  const std::string classic =
      "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang5129{\\fonttbl{\\f0\\fnil\\fcharset0 Arial;}"
      "{\\f1\\fnil\\fcharset2 Symbol;}}\r\n"
      "{\\colortbl ;\\red255\\green0\\blue0;}\r\n"
      "\\viewkind4\\uc1\\pard\\qc\\cf1\\ul\\b\\f0\\fs28 Notice\\cf0\\ulnone\\b0\\fs24\\par\r\n"
      "\\pard a\\b b\\i c\\b0\\i0 d\\super 2\\strike\\nosupersub x\\strike0\\par\r\n"
      "\\pard{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'B7}}"
      "\\fi-200\\li200 one\\par\r\n"
      "{\\pntext\\f1\\'B7\\tab}two\\par\r\n"
      "\\pard{\\pntext\\f0 1.\\tab}{\\*\\pn\\pnlvlbody\\pnf0\\pnindent0\\pnstart1\\pndec"
      "{\\pntxta.}}\\fi-360\\li720 first\\par\r\n"
      "{\\pntext\\f0 2.\\tab}second\\par\r\n"
      "\\trowd\\trgaph108\\trleft-108\\cellx4320\\cellx8748\\pard\\intbl a\\cell b\\cell\\row\r\n"
      "\\pard left\\tab right\\line next\\par\r\n"
      "}\r\n";
  EXPECT_EQ(Canonical(classic), classic);
}

TEST(CanonicalForm, JoinsRunsThatLookAlike) {
  Check({
      {"<<Ten{\\lang1033 ant }{\\lang3081\\noproof Name}>>",
       "\\pard\\f0\\fs24 <<Tenant Name>>\\par\r\n"},
      {"{\\rtlch\\fcs1 \\af0 \\ltrch\\fcs0 \\insrsid123 <<Tenant}{\\insrsid9\\charrsid8  Name>>}",
       "\\pard\\f0\\fs24 <<Tenant Name>>\\par\r\n"},
      {"<<Ten{\\expndtw2\\kerning28 ant} Na\r\nme>>", "\\pard\\f0\\fs24 <<Tenant Name>>\\par\r\n"},
      {"x <<Ten{\\*\\bkmkstart _b}ant{\\*\\bkmkend _b} Name>>",
       "\\pard\\f0\\fs24 x {\\*\\bkmkstart _b}{\\*\\bkmkend _b}<<Tenant Name>>\\par\r\n"},
      {"{\\b <<Tenant}{\\b \\b0\\b  Name>>}", "\\pard\\b\\f0\\fs24 <<Tenant Name>>\\b0\\par\r\n"},
  });
}

TEST(CanonicalForm, LeavesACodeSplitThatIsHalfBold) {
  EXPECT_EQ(CanonicalBody("{\\b <<Balance} Owing>>"),
            "\\pard\\b\\f0\\fs24 <<Balance\\b0  Owing>>\\par\r\n");
}

TEST(CanonicalForm, WritesFormattingOnTheText) {
  Check({
      {"{\\cf1 r}{\\highlight2 h}{\\cb2 h}",
       "\\pard\\cf1\\f0\\fs24 r\\cf0\\highlight2 hh\\highlight0\\par\r\n"},
      {"{\\uldb d}{\\ulwave w}{\\up6 u}{\\dn4 l}{\\caps c}{\\scaps s}{\\v h}",
       "\\pard\\uldb\\f0\\fs24 d\\ulwave w\\ulnone\\up6 u\\dn4 l\\caps\\up0 c\\caps0\\scaps "
       "s\\v\\scaps0 h\\v0\\par\r\n"},
      {"\\pard\\qj\\li720\\fi-360\\sl360\\slmult1\\tqr\\tldot\\tx9000\\keepn x",
       "\\pard\\keepn\\fi-360\\li720\\sl360\\slmult1\\qj\\tqr\\tldot\\tx9000\\f0\\fs24 x\\par\r\n"},
      {"\\pard\\box\\brdrs\\brdrw10\\brdrcf1 x",
       "\\pard\\brdrt\\brdrs\\brdrw10\\brdrcf1\\brdrl\\brdrs\\brdrw10\\brdrcf1\\brdrb\\brdrs"
       "\\brdrw10\\brdrcf1\\brdrr\\brdrs\\brdrw10\\brdrcf1\\f0\\fs24 x\\par\r\n"},
      {"\\pard\\brdrb\\brdrs\\brsp85\\brdrw10 x",
       "\\pard\\brdrb\\brdrs\\brdrw10\\brsp85\\f0\\fs24 x\\par\r\n"},
      {"\\pard\\brdrt\\brdrtbl\\brdrw10\\brdrb\\brdrdb\\brdrl\\brdrdot\\brdrr\\brdrdashsm x",
       "\\pard\\brdrl\\brdrdot\\brdrb\\brdrdb\\brdrr\\brdrdash\\f0\\fs24 x\\par\r\n"},
      {"\\pard\\brdrt\\brdrth\\brdrb\\brdrtnthsg\\brdrw30\\brdrl\\brdrtriple\\brdrr\\brdrdashdd"
       "\\brdrbtw\\brdrs\\brdrw10\\brdrcf1\\brdrbar\\brdrs x",
       "\\pard\\brdrt\\brdrth\\brdrl\\brdrtriple\\brdrb\\brdrtnthsg\\brdrw30\\brdrr\\brdrdashdd"
       "\\brdrbtw\\brdrs\\brdrw10\\brdrcf1\\f0\\fs24 x\\par\r\n"},
      {"\\pard\\qd\\kerning28 x\\kerning0 y",
       "\\pard\\qd\\kerning28\\f0\\fs24 x\\kerning0 y\\par\r\n"},
      {"\\pard\\posxc\\absw4000\\absh-900\\posyb\\dxfrtext180 x\\par\\pard y",
       "\\pard\\absw4000\\absh-900\\posxc\\pvmrg\\posyb\\dfrmtxtx180\\dfrmtxty180\\f0\\fs24 "
       "x\\par\r\n"
       "\\pard y\\par\r\n"},
      {"\\pard\\s34\\sa200\\contextualspace x\\par\\pard\\s3 y",
       "\\pard\\s34\\contextualspace\\sa200\\f0\\fs24 x\\par\r\n\\pard y\\par\r\n"},
      {"\\pard\\sa50\\sb50\\sbauto1\\saauto1 x\\par\\pard\\sb50\\sbauto0 y",
       "\\pard\\sb100\\sa100\\sbauto1\\saauto1\\f0\\fs24 x\\par\r\n\\pard\\sb50 y\\par\r\n"},
      {"\\widowctrl\\pard x\\par\\pard\\nowidctlpar y",
       "\\pard\\widctlpar\\f0\\fs24 x\\par\r\n\\pard y\\par\r\n"},
      {"a\\~b\\-c\\_d\\emdash\\bullet e",
       "\\pard\\f0\\fs24 a\\'a0b\\'adc\\u8209?d\\'97\\'95e\\par\r\n"},
      {"\\{\\\\\\}\\'41", "\\pard\\f0\\fs24\\{\\\\\\}A\\par\r\n"},
  });
}

// A section word describes the section in which it stands; \sectd takes the page from the head.
TEST(CanonicalForm, DescribesTheSectionThatBegins) {
  const std::string margins = "\\marglsxn0\\margrsxn0\\margtsxn0\\margbsxn0";
  const std::string plain = "\\sectd" + margins + "\\lndscpsxn0\r\n";
  Check({
      {"a\\sect b", "\\pard\\f0\\fs24 a\\sect" + plain + "b\\par\r\n"},
      {"a\\par\\sect\\sectd b", "\\pard\\f0\\fs24 a\\sect" + plain + "b\\par\r\n"},
      {"\\sbknone a\\sect\\sectd b\\sect\\sectd\\sbknone\\cols2\\pgnlcrm c\\sect",
       "\\pard\\f0\\fs24 a\\sect" + plain + "b\\sect\\sectd\\sbknone" + margins +
           "\\lndscpsxn0\\cols2\\pgnlcrm\r\nc\\par\r\n"},
      {"a\\sect\\sect b",
       "\\pard\\f0\\fs24 a\\sect" + plain + "\\par\r\n\\sect" + plain + "b\\par\r\n"},
      {"a\\sect\\sectd\\pgwsxn300\\pghsxn200\\marglsxn7{\\header\\cf2 h\\par}b",
       "\\pard\\f0\\fs24 a\\sect\\sectd\\pgwsxn300\\pghsxn200\\marglsxn7\\margrsxn1800"
       "\\margtsxn1440\\margbsxn1440\\lndscpsxn\r\n{\\header\\plain\\pard\\cf1\\f0\\fs24 "
       "h\\par\r\n}\r\nb\\par\r\n"},
      {"\\trowd\\cellx900\\pard\\intbl a\\cell\\row\\sect b",
       "\\trowd\\cellx900\\pard\\intbl\\f0\\fs24 a\\cell\\row\r\n\\pard\\par\r\n\\sect" + plain +
           "b\\par\r\n"},
      {"a\\sect\\sectd\\pgbrdrr\\brdrs\\brdrw20\\brdrcf2\\pgbrdropt1 b\\sect\\sectd c",
       "\\pard\\f0\\fs24 a\\sect\\sectd" + margins +
           "\\lndscpsxn0\\pgbrdrr\\brdrs\\brdrw20\\brdrcf1"
           "\\pgbrdropt1\r\nb\\sect" +
           plain + "c\\par\r\n"},
      {"{\\*\\footnote a\\sect b}c\\column d",
       "\\pard\\f0\\fs24{\\footnote\\plain\\pard\\f0\\fs24 a\\par\r\nb}c{\\column}d\\par\r\n"},
  });
}

TEST(CanonicalForm, KeepsTheBordersAroundThePage) {
  const std::string borders =
      "\\pgbrdrhead\\pgbrdrt\\brdrs\\brdrw10\\brsp480\\pgbrdrb\\brdrdb\\pgbrdropt34";
  const std::string letter =
      "{\\rtf1{\\fonttbl{\\f0 Arial;}}\\pgbrdropt34\\pgbrdrhead\\pgbrdrt\\brdrs\\brdrw10\\brsp480"
      "\\pgbrdrb\\brdrdb\\pgbrdrl\\brdrw20\\headery300\\pard\\brdrt\\brdrs x}";
  EXPECT_THAT(Canonical(letter), HasSubstr(borders + "\\headery300\r\n"));
  EXPECT_THAT(Canonical(letter), HasSubstr("\\pard\\brdrt\\brdrs\\f0"));
  EXPECT_EQ(Canonical(Canonical(letter)), Canonical(letter));
}

// Beside a margin that a letter names, the others have RTF's usual values; one that names none has
// none.
TEST(CanonicalForm, WritesAllMarginsOrNone) {
  const std::pair<const char*, const char*> cases[] = {
      {"x", ""},
      {"\\margl0\\margt0\\margr0\\margb0 x", ""},
      {"\\margt0 x", "\\margl1800\\margr1800\\margt0\\margb1440"},
      {"\\margl900\\margr0 x", "\\margl900\\margr0\\margt1440\\margb1440"},
      {"\\margl900\\sectd\\margtsxn5 x", "\\margl900\\margr1800\\margt5\\margb1440"},
  };
  for (const auto& [body, margins] : cases) {
    const std::string saved =
        Canonical("{\\rtf1{\\fonttbl{\\f0 Arial;}}" + std::string(body) + "}");
    const std::size_t at = saved.find("\\marg");
    EXPECT_EQ(at == std::string::npos ? "" : saved.substr(at, saved.find('\r', at) - at), margins)
        << body;
    EXPECT_EQ(Canonical(saved), saved);
  }
}

TEST(CanonicalForm, TakesFormattingFromTheTextNotFromItsStyle) {
  // Writers repeat a style's formatting on the text and leave out what is as \pard and \plain
  // set it: space after the heading would be that of the style it is based on.
  const std::string source =
      "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Arial;}}{\\stylesheet{\\sa160\\fs22 Normal;}"
      "{\\s1\\sb240\\b\\fs32\\sbasedon0 heading 1;}{\\*\\cs3\\i Accent;}}"
      "\\pard\\plain\\s1\\sb240\\fs32 Head\\par\\pard\\plain x{\\cs3 y}{\\cs3\\i z}\\par}";
  EXPECT_THAT(Canonical(source), HasSubstr("\\pard\\sb240\\f0\\fs32 Head\\par\r\n"
                                           "\\pard\\fs24 xy\\i z\\i0\\par"));
  EXPECT_THAT(Canonical(source), Not(HasSubstr("stylesheet")));
}

TEST(CanonicalForm, MapsListTablesOntoBullets) {
  const std::string lists =
      "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat3{\\leveltext\\'02\\'00.;}"
      "{\\levelnumbers\\'01;}\\fi-360\\li720}{\\listlevel\\levelnfc4\\levelstartat1{\\leveltext"
      "\\'04\\'00.\\'01);}{\\levelnumbers\\'01\\'03;}}\\listid7}"
      "{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01\\u-3913 ?;}{\\levelnumbers;}}\\listid8}}"
      "{\\*\\listoverridetable{\\listoverride\\listid7\\ls1}{\\listoverride\\listid8\\ls2}}";
  const std::string body =
      "\\pard\\ls1{\\listtext 3.\\tab}a\\par b\\par\\pard\\ls1\\ilvl1 c\\par"
      "\\pard\\ls1 d\\par\\pard\\ls2 e\\par";
  const Document document = ReadRtf(Letter(lists + body));
  ASSERT_EQ(document.blocks.size(), 5U);
  const auto bullet = [&](std::size_t i) {
    return std::get<Paragraph>(document.blocks[i]).format.bullet;
  };
  EXPECT_EQ(bullet(0).start, 3);
  EXPECT_EQ(bullet(1), bullet(0));
  EXPECT_EQ(bullet(2).kind, Bullet::Kind::kLowerLetter);
  EXPECT_EQ(bullet(2).before, "4.");
  EXPECT_EQ(bullet(2).after, ")");
  EXPECT_EQ(bullet(3).start, 5);
  EXPECT_EQ(bullet(4).kind, Bullet::Kind::kBullet);
  EXPECT_EQ(bullet(4).before, "•");
}

TEST(CanonicalForm, JoinsTheCharacterSetsOfAFont) {
  const std::string source = Canonical(
      "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset238 Arial;}"
      "{\\f2\\fcharset2 Arial;}}\\f0 <<Tenant\\f1  Name\\f0 >> \\f1\\'b9\\'e9\\f2 s}");
  EXPECT_THAT(source, HasSubstr("<<Tenant Name>> \\u261a\\'e9\\f1 s"));
}

TEST(CanonicalForm, JoinsTheScriptsOfAFont) {
  const std::string source = Canonical(
      "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset238 Arial CE;}"
      "{\\f2\\fcharset204 Arial Cyr;}{\\f3 Arial Greek;}{\\f4\\fcharset0 Office CE;}}"
      "a\\f1\\'e8\\f2\\'cf\\f3\\'e1\\f4 b}");
  EXPECT_THAT(source, HasSubstr("a\\u269c\\u1055?\\u945?\\f1 b"));
  EXPECT_THAT(source, HasSubstr("{\\f1\\fnil\\fcharset0 Office CE;}")) << "not its character set";
}

TEST(CanonicalForm, MakesSymbolFieldsText) {
  const auto symbol = [](const std::string& instruction) {
    const Document document =
        ReadRtf(Letter("{\\field{\\*\\fldinst " + instruction + "}{\\fldrslt\\f1}}"));
    const richtext::Run& run = std::get<Paragraph>(document.blocks.at(0)).runs.at(0);
    return document.fonts.at(static_cast<std::size_t>(run.format.font)).name + " " + run.text +
           " " + std::to_string(run.format.half_points);
  };
  EXPECT_EQ(symbol("SYMBOL 252 \\\\f \"Wingdings\" \\\\s 18"), "Wingdings \uf0fc 36");
  EXPECT_EQ(symbol("{SYMBOL 0xAE \\\\f Verdana}"), "Verdana ® 24");
  EXPECT_EQ(symbol("SYMBOL 8364 \\\\u"), "Arial € 24");
}

TEST(CanonicalForm, CarriesWhatItCannotEdit) {
  const char* const kept[] = {
      "{\\*\\shppict{\\pict\\pngblip\\picwgoal300\\pichgoal150 89504e47}}",
      "{\\object\\objemb{\\*\\objclass Sheet}{\\*\\objdata 0105}{\\result{\\pict\\wmetafile8 "
      "0102}}}",
      "{\\shp{\\*\\shpinst\\shpleft0{\\sp{\\sn fillColor}{\\sv 255}}{\\shptxt\\plain\\pard\\f0"
      "\\fs20 Box <<Tenant Name>>\\par\r\n}}}",
      "{\\field{\\*\\fldinst{HYPERLINK \"http://example.com\"}}{\\fldrslt\\ul here}}",
      "{\\field{\\*\\fldinst{PAGE}}{\\fldrslt}}",
      "{\\footnote\\plain\\pard\\f0\\fs20 note}",
      "{\\chftn}{\\footnote\\ftnalt\\plain\\pard\\f0\\fs20{\\chftn} note}",
  };
  for (const char* source : kept) {
    SCOPED_TRACE(source);
    EXPECT_THAT(CanonicalBody(std::string("a ") + source + " b"), HasSubstr(source));
  }
}

TEST(CanonicalForm, JoinsCodesInHeadersAndTextBoxes) {
  const std::string source = Canonical(
      Letter("{\\header\\pard\\qr{\\insrsid1 <<Print}{\\insrsid2  Date>>}\\par}"
             "{\\shp{\\*\\shpinst{\\shptxt{\\lang1 <<Ten}{\\lang2 ant Name>>}\\par}}}text"));
  EXPECT_THAT(source, HasSubstr("{\\header\\plain\\pard\\qr\\f0\\fs24 <<Print Date>>\\par"));
  EXPECT_THAT(source, HasSubstr("<<Tenant Name>>"));
  EXPECT_EQ(Canonical(source), source);
}

TEST(CanonicalForm, RenumbersFontsAndColoursInWhatItCarries) {
  const std::string source =
      Canonical(Letter("{\\footnote{\\f2\\cf2 deep}}{\\trowd\\clcbpat2\\cellx500\\pard\\intbl "
                       "c\\cell\\row}\\pard x"));
  EXPECT_THAT(source, HasSubstr("{\\f1\\froman\\fcharset238 Times;}}"));
  EXPECT_THAT(source, HasSubstr("{\\colortbl ;\\red0\\green0\\blue255;}"));
  EXPECT_THAT(source, HasSubstr("{\\footnote\\plain\\pard\\cf1\\f1\\fs24 deep"));
  EXPECT_THAT(source, HasSubstr("\\trowd\\clcbpat1\\cellx500"));
}

TEST(CanonicalForm, KeepsTheHead) {
  const std::string source = Canonical(
      "{\\rtf1\\mac\\deff0\\deflang1033{\\fonttbl{\\f0 Arial;}}{\\info{\\title Rent \\'8e}"
      "{\\author Kim}{\\version1}}\\paperw11906\\margl900\\titlepg\\deftab567{\\*\\generator "
      "W;}x}");
  EXPECT_THAT(source, HasSubstr("\\ansicpg1252\\deff0\\deflang1033"));
  EXPECT_THAT(source, HasSubstr("{\\info{\\title Rent \\u233e}{\\author Kim}}\r\n"));
  EXPECT_THAT(source, HasSubstr("\\paperw11906\\margl900\\margr1800\\margt1440\\margb1440"
                                "\\deftab567\\titlepg\r\n"));
  EXPECT_THAT(source, Not(HasSubstr("generator")));
}

}  // namespace
}  // namespace tenora::richtext
