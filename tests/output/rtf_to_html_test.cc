#include "output/rtf_to_html.h"

#include <gtest/gtest.h>

#include <vector>

namespace tenora {
namespace {

const std::string kHead =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0\\deflang5129{\\fonttbl{\\f0\\fnil\\fcharset0 Arial;}"
    "{\\f1\\froman{\\*\\panose 0203}Times New Roman{\\*\\falt Tms};}}\r\n"
    "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n\\viewkind4\\uc1 ";

std::string Html(const std::string& body, const std::string& options = "") {
  return RtfToHtml(kHead + body + "\r\n}\r\n", options);
}

struct Case {
  std::string body, html;
  std::string options = "";
};

void Check(const std::vector<Case>& cases) {
  for (const Case& c : cases) EXPECT_EQ(Html(c.body, c.options), c.html) << c.body << c.options;
}

TEST(RtfToHtml, WritesCharacterFormatting) {
  Check({
      {"{\\b Rent}", "<b>Rent</b>"},
      {"\\b A\\b  B\\b0  C", "<b>A B</b> C"},
      {"\\b\\b A", "<b>A</b>"},
      {"\\i A\\i0 B", "<i>A</i>B"},
      {"\\ul A\\ulnone B", "<u>A</u>B"},
      {"\\strike A\\strike B\\strike0 C", "<s>AB</s>C"},
      {"m\\super 2\\nosupersub  x\\sub 1\\nosupersub y", "m<sup>2</sup> x<sub>1</sub>y"},
      {"\\super\\super 2", "<sup>2</sup>"},
      {"\\b\\b0 plain", "plain"},
      {"\\b A\\plain B", "<b>A</b>B"},
      {"\\b1 A\\ul0 B\\unknown7 C", "ABC"},
      // What crosses goes out closed and opened again.
      {"\\b A\\i B\\b0 C\\i0 D", "<b>A<i>B</i></b><i>C</i>D"},
      {"\\b A\\ul B\\i C\\ul0\\ulnone D", "<b>A<u>B<i>C</i></u><i>D</i></b>"},
      {"\\b A\\par B\\b0", "<b>A<br>B</b>"},
      // A closing brace ends the formatting from outside the group too.
      {"\\b A {\\i B} C", "<b>A <i>B</i></b> C"},
      {"A {\\b B", "A <b>B</b>"},
      {"A}\\b B}", "A<b>B</b>"},
  });
}

TEST(RtfToHtml, WritesFontTagsOnlyWithAColour) {
  Check({
      {"\\f0\\fs24 text", "text"},
      {"\\f0\\fs24\\cf2 text", "<font face=\"Arial\" color=\"#0000FF\" size=3>text</font>"},
      {"\\f1\\cf1 text", "<font face=\"Times New Roman\" color=\"#FF0000\">text</font>"},
      {"\\fs200\\cf1 x", "<font color=\"#FF0000\" size=8>x</font>"},
      {"\\fs4\\cf1 x", "<font color=\"#FF0000\" size=1>x</font>"},
      {"\\fs-4\\cf1 x", "<font color=\"#FF0000\" size=1>x</font>"},
      {"\\fs24\\cf1 x", "<font color=\"#FF0000\">x</font>", "+F=3"},
      {"\\fs24\\cf1 x", "<font color=\"#FF0000\" size=3>x</font>", "+F=31"},
      {"\\fs24\\cf1 x", "<font color=\"#FF0000\" size=3>x</font>", "+F=-3"},
      {"\\f0\\cf1 x", "<font color=\"#FF0000\">x</font>", "-FF"},
      {"\\f9\\cf1 x", "<font color=\"#FF0000\">x</font>"},
      {"\\cf3 x\\cf99999999999 y\\cf-1 z", "xyz"},
      {"\\cf1 red\\cf2 blue",
       "<font color=\"#FF0000\">red</font><font color=\"#0000FF\">blue</font>"},
      {"\\cf1\\fs24\\cf2 x", "<font color=\"#0000FF\" size=3>x</font>"},
      // Black, size and face wait for the next colour.
      {"\\cf1 red\\cf0\\fs40\\f0  still", "<font color=\"#FF0000\">red still</font>"},
      {"\\cf1 A\\b B\\cf2 C",
       "<font color=\"#FF0000\">A<b>B</b></font><b><font color=\"#0000FF\">C</font></b>"},
      {"{\\f0\\fs40 x}\\cf1 y", "x<font color=\"#FF0000\">y</font>"},
  });
}

TEST(RtfToHtml, BreaksLinesBetweenTextOnly) {
  Check({
      {"\\par A\\par\\par B\\par\\par", "<br>A<br><br>B"},
      {"A\\par B", "A<br>\r\nB", "+CR"},
      {"A\\pard B", "A<Br>\r\nB", "+CR"},
      {"\\pard A\\par\\pard B\\pard C", "A<br>B<Br>C"},
      {"\\b A\\par\\pard B", "<b>A</b><br>B"},
      {"\\b\\pard B", "B"},
      {"one\r\n two\rthree\nfour\\par\r\nfive", "one twothreefour<br>five"},
      {"\\b\r\nA", "<b>A</b>"},
      {"A\\line B\\lquote C", "ABC"},
      {"A\\tab B", "A\tB"},
      // The indentation is written at once, as wide as it was; blanks inside a line stay blanks.
      {"   \\b A \\b0  \\i B", "&nbsp;&nbsp;&nbsp;<b>A  </b><i>B</i>"},
      {"A\\par   \\b B", "A&nbsp;&nbsp;<br><b>B</b>"},
      {"A\\par\r\n  B", "A<br>  B"},
  });
}

TEST(RtfToHtml, WritesListItemsAroundTheirFormatting) {
  const std::string bullet =
      "{\\pntext\\f1\\'B7\\tab}{\\*\\pn\\pnlvlblt\\pnf1\\pnindent0{\\pntxtb\\'B7}}";
  Check({
      {"\\pard" + bullet + "\\fi-200\\li200 one\\par\r\n" + bullet + "two\\par\r\n\\pard three",
       "<li>\tone</li><li>\ttwo<Br></li>three"},
      {"\\pard" + bullet + "\\b one\\b0\\par\\par two", "<li>\t<b>one</b></li><br>two"},
      {"\\b Head\\par" + bullet + "one", "<b>Head</b><br><li><b>\t</b>one</li>"},
      {"{\\pntext\\pard\\plain\\'b7\\tab}one\\par", "<li>&middot;\tone</li>"},
      {"{\\pntext{\\pict 00}{\\*\\x y}\\tab}one", "<li>\tone</li>"},
      {"{\\pn\\pnlvlblt{\\pntxtb x}{\\pntxta y}}one", "<li>one</li>"},
      {"\\pnlvlblt\\pnlvlblt one", "<li>one</li>"},
      {"\\pntxta.x\\pntxtb\\'e9 y", " y"},
      {"A\\bullet B\\bullet C\\par D", "A<li>B</li><li>C</li>D"},
      {"\\i\\bullet\\b B", "<li><i><b>B</b></i></li>"},
      {"\\pnlvlblt one\\pard two", "<li>one<Br></li>two"},
      {"{\\*\\listtable{\\list\\listid1}}\\pnlvlblt one\\pard two\\par three",
       "<li>one<Br>two</li>three"},
      {"\\pnlvlblt one \\\\list\\\\ \\pard two", "<li>one \\list\\ <Br></li>two"},
      {"\\bullet\\par A", "A"},
  });
}

TEST(RtfToHtml, WrapsAlignedParagraphsUntilTheNextReset) {
  const std::string centre = "<table width=100%><tr><td align=\"center\">";
  const std::string right = "<table width=100%><tr><td align=\"right\">";
  const std::string end = "</td></tr></table>";
  Check({
      {"\\pard\\qc A\\par\\pard B", centre + "A" + end + "<br>B"},
      {"\\pard\\qr A\\par B\\par\\pard C", right + "A<br>B" + end + "<br>C"},
      {"\\pard\\b\\qc A", centre + "<b>A</b>" + end},
      {"\\qc\\qr A", right + "A" + end},
      {"\\qc A\\par\\qr B", centre + "A" + end + "<br>" + right + "B" + end},
      {"\\qc A\\qr B\\par C", centre + "AB" + end + "<br>" + right + "C" + end},
      {"\\b A\\par\\qc B", "<b>A</b><br>" + centre + "<b>B</b>" + end},
      {"\\qc A\\bullet B\\par C", centre + "A<li>B</li>C" + end},
      {"\\bullet A\\qc B", "<li>A" + centre + "B" + end + "</li>"},
      {"\\qc\\bullet A", centre + "<li>A</li>" + end},
      {"\\qc {\\b A}\\par B", centre + "<b>A</b>" + end + "<br>B"},
      {"\\qc\\plain A", "A"},
      {"\\qc\\pard A", "A"},
  });
}

TEST(RtfToHtml, WritesEscapedCharacters) {
  Check({
      {"\\{a\\\\b\\}", "{a\\b}"},
      {"caf\\'e9 du", "caf&eacute; du"},
      {"caf\\'E9 \\'B7x", "caf x"},
      {"\\'e4!", "<sup>TM</sup>!"},
      {"\\'99!", "<sup>TM</sup>!"},
      {"\\b A\\'99 B", "<b>A<sup>TM</sup> B</b>"},
      {"\\'00\\'85\\'9a\\'9e", "&nbsp;...\xC5\xA1\xC5\xBE"},
      {"a\\'80\\'92\\'a0\\'ae\\'41\\'0ab", "ab"},
      {"a\\~b\\_c\\-d", "abcd"},
      // Bytes as UTF-8, else as Windows-1252; control characters are dropped.
      {"\xC4\x81 \xE9 \x80 \x81", "\xC4\x81 \xC3\xA9 \xE2\x82\xAC \xEF\xBF\xBD"},
      {std::string("a\0\x01\fb\tc", 7), "ab\tc"},
      {"a < b & c > d", "a < b & c > d"},
      {"a < b & c > d\\'e9\\tab\\par \\'a9", "a &lt; b &amp; c &gt; d&eacute;\t<br>&copy;", "+E"},
  });
}

TEST(RtfToHtml, ReadsUnicodeEscapesWhenAsked) {
  Check({
      {"M\\u257?huta", "M?huta"},
      {"M\\u257?huta", "M&#257;huta", "+U"},
      {"\\u-3913?x", "&#61623;x", "+U"},
      {"\\u-10179?\\u-8704?x", "&#128512;x", "+U"},
      {"\\u-10179?x\\u-8704?\\u0?\\u10?\\u-99999?y", "xy", "+U"},
      {"\\u233\\'e9 \\u233\\tab x", "&#233; &#233;x", "+U"},
      {"\\uc2\\u233??x\\uc0\\u233 y", "&#233;x&#233;y", "+U"},
      {"{\\uc3\\u233 abcd}\\u233 abcd", "&#233;d&#233;bcd", "+U"},
      {"{\\uc3{\\u233 a}bcd}", "&#233;bcd", "+U"},
      {"{\\uc2{\\*\\x y}\\u233 ab}\\u233 ab", "&#233;&#233;b", "+U"},
      {"\\u233\r\n?x", "&#233;x", "+U"},
      {"\\uc-5\\u233 a\\uc9999999999\\u233 b\\par c", "&#233;a&#233;", "+U"},
  });
}

TEST(RtfToHtml, DropsWhatIsNotText) {
  Check({
      {"A{\\pict\\wmetafile8 0102{\\x 03}04}B", "AB"},
      {"A{\\*\\generator x {y} \\} \\{ z;}B", "AB"},
      {"A{\\pict\\bin4 }}}}05}B", "AB"},
      {"A\\bin3 }}}B\\bin99999999999 C", "AB"},
      {"{\\stylesheet{\\s0 Normal;}}{\\info{\\title T}{\\author {A}}}B", "B"},
      {"{\\*\\listtable{\\x;}}{\\*\\listoverridetable{\\y z}}B", "B"},
      {"A C:\\\\info{B}", "A C:\\infoB"},
      {"A {\\information B} C", "A B C"},
      {"A\\info B", "AB"},
      {"A{\\pict 00", "A"},
  });
}

TEST(RtfToHtml, ReadsTheTablesWhereverAndHoweverTheyStand) {
  const auto html = [](const std::string& rtf) { return RtfToHtml(rtf, ""); };
  const std::string red = "<font color=\"#FF0000\">x</font>";
  EXPECT_EQ(html("{\\rtf1\\cf1 x{\\colortbl\\red255\\green0\\blue0;}}"), red);
  EXPECT_EQ(html("{\\rtf1{\\colortbl;;\\red999\\green-5;}\\cf1 x}"), red);
  EXPECT_EQ(html("{\\rtf1{\\colortbl;\\red10\\green11\\blue171;}\\cf1 x}"),
            "<font color=\"#0A0BAB\">x</font>");
  EXPECT_EQ(html("{\\rtf1\\colortbl;\\red255\\green0\\blue0;\\cf1 x}"), ";;x");
  const std::string colour = "{\\colortbl;\\red1\\green2\\blue3;}";
  const auto face = [&](const std::string& table) {
    const std::string tag = html("{\\rtf1{\\fonttbl" + table + "}" + colour + "\\f3\\cf1 x}");
    return tag.substr(0, tag.find(" color"));
  };
  EXPECT_EQ(face("{\\f3 A;}{\\f4 B;}"), "<font face=\"A\"");
  EXPECT_EQ(face("\\f2\\fnil A;\\f3\\fswiss B C;"), "<font face=\"B C\"");
  EXPECT_EQ(face("{\\f3\\fnil Caf\\'e9}"), "<font face=\"Caf&eacute;\"");
  EXPECT_EQ(face("{\\f3 a\"><b>&;}"), "<font face=\"a&quot;&gt;&lt;b&gt;&amp;\"");
  EXPECT_EQ(face("{\\f99999999999 A;}{\\f-1 B;}"), "<font");
  EXPECT_EQ(face("{\\f3 " + std::string(5000, 'x') + ";}"), "<font");
}

TEST(RtfToHtml, StripsWhatSurroundsTheDocument) {
  for (const char* rtf :
       {"{\\rtf1 A}", "\r\n {\\rtf1 A}\r\n\r\n", "\\rtf1 A", "{\\rtf1 A\r\n}", "{\\rtf1{\\*\\x}A"})
    EXPECT_EQ(RtfToHtml(rtf, ""), "A") << rtf;
  EXPECT_EQ(RtfToHtml(std::string("{\\rtf1 A}\r\n\0", 12), ""), "A");
  for (const char* nothing : {"", " ", "{", "}", "{}", "\\", "\\'", "\\'e", "{\\rtf1}", "\\b"})
    EXPECT_EQ(RtfToHtml(nothing, "+U+E"), "") << nothing;
}

TEST(RtfToHtml, FindsItsSwitchesAnywhereInAnyOrder) {
  const std::string body = "\\f0\\fs24\\cf1 <\\par A";
  const std::string plain = "<font face=\"Arial\" color=\"#FF0000\" size=3><<br>A</font>";
  EXPECT_EQ(Html(body), plain);
  EXPECT_EQ(Html(body, "+I"), plain);
  EXPECT_EQ(Html(body, "+cr-ff+e CR +F=x"), plain);
  const std::string all = "<font color=\"#FF0000\">&lt;<br>\r\nA</font>";
  EXPECT_EQ(Html(body, "-FF+F=3+E+CR"), all);
  EXPECT_EQ(Html(body, "x+CR, +E; +F=3pt -FF"), all);
  EXPECT_EQ(Html(body, "+F=99999999999999999999"), plain);
}

}  // namespace
}  // namespace tenora
