// The HTML and the plain text that e-mails carry, made from the parsed letter.
#include "output/html/document_html.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "output/html/document_plain_text.h"
#include "output/rtf_to_html.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/document_html_check.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string kHead =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Arial;}{\\f1\\froman Times New "
    "Roman;}"
    "{\\f2\\ftech\\fcharset2 Symbol;}{\\f3\\fnil Bad\\'22\\'27<Name>{\\*\\x};}}"
    "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue0;\\red255\\green255\\blue0;"
    "\\red255\\green255\\blue255;\\red38\\green44\\blue48;}\\viewkind4\\uc1\\fs20 ";

std::string Whole(const std::string& body, const std::string& options = "+D") {
  return RtfToHtml(kHead + body + "}", options, [](const richtext::Picture& picture) {
    return std::string(picture.kind == richtext::Picture::Kind::kPng ? "cid:logo" : "");
  });
}

// Without the element around the letter, which states a face of 10 points.
std::string Html(const std::string& body) {
  const std::string html = Whole(body);
  constexpr std::string_view kEnd = "</div>";
  const std::size_t begin = html.find('>') + 1;
  EXPECT_EQ(test::DocumentHtmlCheck::Fault(html), "") << html;
  if (!html.ends_with(kEnd)) return "no element around: " + html;
  return html.substr(begin, html.size() - kEnd.size() - begin);
}

struct Case {
  std::string body, html;
};

void Check(const std::vector<Case>& cases) {
  for (const Case& c : cases) EXPECT_EQ(Html(c.body), c.html) << c.body;
}

std::string P(const std::string& text, const std::string& style = "margin:0") {
  return "<p style=\"" + style + "\">" + text + "</p>";
}

TEST(DocumentHtml, FormatsEndWhereTheyEndOnPaper) {
  const std::string red = "<span style=\"color:#FF0000\">";
  Check({
      {"a {\\cf1 b} c\\par", P("a " + red + "b</span> c")},
      {"{\\cf1 all red}\\par next\\par", P("all red", "margin:0;color:#FF0000") + P("next")},
      {"{\\b a {\\i b} c} d\\par", P("<b>a <i>b</i> c</b> d")},
      {"{\\b a {\\ul b}}{\\ul c}\\par", P("<b>a <u>b</u></b><u>c</u>")},
      {"{\\uldb a}{\\uld b}{\\uldash c}{\\ulwave d}{\\ulth e}\\par",
       P("<u style=\"text-decoration-style:double\">a</u>"
         "<u style=\"text-decoration-style:dotted\">b</u>"
         "<u style=\"text-decoration-style:dashed\">c</u>"
         "<u style=\"text-decoration-style:wavy\">d</u>"
         "<u style=\"text-decoration-thickness:2px\">e</u>")},
      {"{\\ulw two words}\\par", P("<u>two</u> <u>words</u>")},
      {"{\\strike a}m{\\super 2}x{\\sub i}\\par", P("<s>a</s>m<sup>2</sup>x<sub>i</sub>")},
      {"{\\caps a}{\\scaps b}{\\up6 c}\\par", P("<span style=\"text-transform:uppercase\">a</span>"
                                                "<span style=\"font-variant:small-caps\">b</span>"
                                                "<span style=\"vertical-align:3pt\">c</span>")},
      // The paragraph states what most of its text has.
      {"x\\par{\\f1\\fs28 a long line} b\\par x, so that Arial leads, and by far\\par",
       P("x") +
           P("a long line<span style=\"font-family:Arial,sans-serif;font-size:10pt\"> b</span>",
             "margin:0;font-family:'Times New Roman',serif;font-size:14pt") +
           P("x, so that Arial leads, and by far")},
      {"{\\f2 abg} text\\par", P("\u03B1\u03B2\u03B3 text")},
      {"{\\f3 x} and the rest of the line\\par",
       P("<span style=\"font-family:BadName,sans-serif\">x</span> and the rest of the line")},
  });
}

TEST(DocumentHtml, BlackAndWhiteAreTheReadersOwn) {
  Check({
      {"{\\cf2 black} {\\cf5 and nearly} {\\highlight4 on white}\\par",
       P("black and nearly on white")},
      {"{\\highlight3 lit}\\par",
       P("<span style=\"background-color:#FFFF00;color:#000000\">lit</span>")},
      {"{\\highlight3\\cf1 lit}\\par",
       P("<span style=\"background-color:#FFFF00;color:#FF0000\">lit</span>")},
      {"\\pard\\cbpat3 shaded\\par",
       "<div style=\"margin:0;background-color:#FFFF00;color:#000000\">" + P("shaded") + "</div>"},
  });
}

TEST(DocumentHtml, KeepsEveryCharacterAndNoMarkup) {
  Check({
      {"<b>Tom & \"Co\"</b>\\par", P("&lt;b&gt;Tom &amp; &quot;Co&quot;&lt;/b&gt;")},
      {"M\\u257?huta \\'80 \\u-10179?\\u-8704?\\par", P("M\u0101huta \u20AC \U0001F600")},
      {"a   b\\par  c\\par", P("a &nbsp; b") + P("&nbsp;c")},
      {"a\\line b\\line\\par\\par c\\par", P("a<br>b<br>&nbsp;") + P("&nbsp;") + P("c")},
      {"a\\page b\\par c\\column d\\par", P("a<br>b") + P("c<br>d")},
      {"a{\\v hidden}{\\deleted gone}b\\par", P("ab")},
      {"\\'01\\'7f\\u8206?x\\par", P("\u200Ex")},
  });
  EXPECT_THAT(Whole("M\\u257?huta\\par", "+D+U"), HasSubstr(">M&#257;huta<"));
  EXPECT_THAT(Whole("a\\par b\\par", "+D+CR"), HasSubstr("a</p>\r\n<p"));
  EXPECT_THAT(Whole("{\\f1 a}\\par", "+D-FF"), Not(HasSubstr("font-family")));
  EXPECT_EQ(RtfToHtml("", "+D"), "");
}

TEST(DocumentHtml, ParagraphsKeepTheirShape) {
  Check({
      {"\\qc a\\par\\pard\\qr b\\par\\pard\\qj c\\par", P("a", "margin:0;text-align:center") +
                                                            P("b", "margin:0;text-align:right") +
                                                            P("c", "margin:0;text-align:justify")},
      // The first is not indented, so the others' indents are not the letter's margin.
      {"x\\par\\pard\\li720\\ri360\\fi200 a\\par\\pard\\li720\\fi-360 b\\par",
       P("x") + P("a", "margin:0 18pt 0 36pt;text-indent:10pt") +
           P("b", "margin:0 0 0 36pt;text-indent:-18pt;text-indent:calc(-18pt)")},
      {"\\li850\\ri850 all\\par have\\par\\pard\\li1050\\ri850 margins\\par",
       P("all") + P("have") + P("margins", "margin:0 0 0 10pt")},
      // Spaces add up on paper; HTML would keep the larger of the two.
      {"\\sa160 a\\par\\pard\\sb200 b\\par", P("a", "margin:0 0 8pt") + P("b", "margin:18pt 0 0")},
      {"\\sl360\\slmult1 a\\par\\pard\\sl240\\slmult1 b\\par\\pard\\sl-200 c\\par\\pard\\sl500 "
       "d\\par",
       P("a", "margin:0;line-height:172%") + P("b") +
           P("c", "margin:0;mso-line-height-rule:exactly;line-height:10pt") +
           P("d", "margin:0;line-height:25pt")},
      {"\\s1\\contextualspace\\sb200\\sa160 a\\par b\\par\\pard c\\par",
       P("a", "margin:10pt 0 0") + P("b", "margin:0 0 8pt") + P("c")},
      {"\\box\\brdrdb\\brdrw15 a\\par",
       "<div style=\"margin:0;border:double;border-width:3px;padding:0 0 0 0\">" + P("a") +
           "</div>"},
      {"\\brdrb\\brdrs\\brdrw15\\brdrcf1\\brsp20\\sa100 a\\par b\\par",
       "<div style=\"margin:0;margin-bottom:5pt;border:solid #FF0000;border-width:0 0 1px 0;"
       "padding:0 0 1pt 0\">" +
           P("a", "margin:0 0 5pt") + P("b") + "</div>"},
      {"\\rtlpar\\qr a\\par", "<p dir=\"rtl\" style=\"margin:0;text-align:right\">a</p>"},
      {"\\rtlpar\\ql a\\par", "<p dir=\"rtl\" style=\"margin:0;text-align:left\">a</p>"},
  });
}

TEST(DocumentHtml, ListsAreListsWithEachNumberOnce) {
  const std::string numbers =
      "{\\pntext 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec\\pnstart1\\pnindent360{\\pntxta.}}"
      "\\fi-360\\li360 ";
  const std::string letters = "{\\*\\pn\\pnlvlbody\\pnlcltr\\pnstart3{\\pntxta )}}\\fi-360\\li360 ";
  const std::string bullets = "{\\*\\pn\\pnlvlblt{\\pntxtb\\'B7}}\\fi-360\\li1080 ";
  const std::string ol = "<ol style=\"margin:0 0 0 18pt;padding:0;list-style-type:decimal\">";
  const std::string ul = "<ul style=\"margin:0 0 0 36pt;padding:0;list-style-type:disc\">";
  const std::string li = "<li style=\"margin:0\">";
  Check({
      {"x\\par\\pard" + numbers + "one\\par two\\par\\pard x\\par",
       P("x") + ol + li + "one</li>" + li + "two</li></ol>" + P("x")},
      {"\\pard" + numbers + "one\\par\\pard" + bullets + "in\\par\\pard" + numbers + "two\\par",
       ol + li + "one" + ul + li + "in</li></ul></li>" + li + "two</li></ol>"},
      // HTML has no list with marks like these.
      {"\\pard" + letters + "x\\par",
       P("c) &nbsp; x", "margin:0 0 0 18pt;text-indent:-18pt;text-indent:calc(-18pt)")},
  });
  const std::string listed =
      "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat5{\\leveltext\\'02\\'00.;}"
      "\\fi-360\\li360}\\listid1}}{\\*\\listoverridetable{\\listoverride\\listid1\\ls1}}";
  const std::string item = "\\pard\\ls1\\fi-360\\li360 ";
  const std::string html = Html(listed + item + "a\\par\\pard between\\par" + item + "b\\par");
  EXPECT_THAT(html, AllOf(HasSubstr("<ol start=\"5\""), HasSubstr("<ol start=\"6\""))) << html;
}

TEST(DocumentHtml, TablesKeepTheirCells) {
  const std::string head = "<table cellspacing=\"0\" cellpadding=\"0\" border=\"0\"";
  const std::string font = "font-family:Arial,sans-serif;font-size:10pt\">";
  const std::string row = "<tr valign=\"top\">", pad = "style=\"padding:0 5pt;";
  Check({
      {"x\\par\\trowd\\trgaph100\\clcbpat3\\clbrdrb\\brdrs\\brdrw30\\cellx3000\\clvertalc\\cellx600"
       "0"
       "\\pard\\intbl\\qr a\\cell\\pard\\intbl\\cell\\row"
       "\\trowd\\trgaph100\\cellx3000\\cellx6000\\pard\\intbl b\\cell c\\cell\\row\\pard x\\par",
       P("x") + head + " width=\"400\" style=\"border-collapse:collapse;max-width:100%\">" + row +
           "<td width=\"50%\" " + pad + "border:solid;border-width:0 0 2px 0;" +
           "background-color:#FFFF00;color:#000000;text-align:right;" + font + "a</td>" +
           "<td width=\"50%\" valign=\"middle\" " + pad + font + "&nbsp;</td></tr>" + row + "<td " +
           pad + font + "b</td><td " + pad + font + "c</td></tr></table>" + P("x")},
      // Merged to the side by cell edges and by \clmgf, downwards by \clvmgf.
      {"x\\par\\trowd\\clvmgf\\cellx3000\\cellx6000\\cellx9638\\pard\\intbl a\\cell b\\cell "
       "c\\cell\\row"
       "\\trowd\\clvmrg\\cellx3000\\cellx9638\\pard\\intbl\\cell d\\cell\\row"
       "\\trowd\\clmgf\\cellx3000\\clmrg\\cellx6000\\cellx9638\\pard\\intbl e\\cell\\cell "
       "f\\cell\\row"
       "\\pard x\\par",
       P("x") + head + " width=\"100%\" style=\"border-collapse:collapse\">" + row +
           "<td width=\"31%\" rowspan=\"2\" style=\"padding:0;" + font + "a</td>" +
           "<td width=\"31%\" style=\"padding:0;" + font + "b</td>" +
           "<td width=\"37%\" style=\"padding:0;" + font + "c</td></tr>" + row +
           "<td width=\"68%\" colspan=\"2\" style=\"padding:0;" + font + "d</td></tr>" + row +
           "<td width=\"62%\" colspan=\"2\" style=\"padding:0;" + font + "e</td>" +
           "<td width=\"37%\" style=\"padding:0;" + font + "f</td></tr></table>" + P("x")},
  });
  const std::string nested = Html(
      "\\trowd\\cellx5000\\pard\\intbl\\itap1 a\\par"
      "\\pard\\intbl\\itap2 b\\nestcell "
      "c\\nestcell{\\*\\nesttableprops\\trowd\\cellx1000\\cellx2000"
      "\\nestrow}\\pard\\intbl\\itap1\\cell\\row\\pard x\\par");
  EXPECT_THAT(nested, testing::MatchesRegex(".*<td[^>]*><p[^>]*>a</p><table[^>]*><tr[^>]*><td[^>]*>"
                                            "b</td><td[^>]*>c</td></tr></table></td></tr>.*"));
}

TEST(DocumentHtml, LinksLeadToTheWebAndToMailOnly) {
  const struct {
    const char* instruction;
    const char* href;  // empty: no link
  } cases[] = {
      {"HYPERLINK \"https://a.nz/?x=1&y=2\"", "https://a.nz/?x=1&amp;y=2"},
      {" hyperlink  HTTP://a.nz", "HTTP://a.nz"},
      {"HYPERLINK \"mailto:ann@a.nz\" \\\\o \"tip\"", "mailto:ann@a.nz"},
      {"HYPERLINK \\\\o \"tip\" \"http://a.nz/\\u363?'x y\"", "http://a.nz/%C5%AB%27x%20y"},
      {"HYPERLINK \"javascript:alert(1)\"", ""},
      {"HYPERLINK \" JaVaScript:alert(1)//http://a.nz\"", ""},
      {"HYPERLINK \"java\\'01script:x\"", ""},
      {"HYPERLINK \"data:text/html,x\"", ""},
      {"HYPERLINK \"file:///etc/passwd\"", ""},
      {"HYPERLINK \\\\l \"bookmark\"", ""},
      {"HYPERLINK \"http://a.nz/\" \\\\l \"rates 1\" \\\\o \"tip\"", "http://a.nz/#rates%201"},
      {"HYPERLINK \"http://a.nz/#top\" \\\\l \"rates\"", "http://a.nz/#top"},
      {"MERGEFIELD \"http://a.nz\"", ""},
      {"HYPERLINK", ""},
  };
  for (const auto& c : cases) {
    const std::string body =
        std::string("{\\field{\\*\\fldinst{") + c.instruction + "}}{\\fldrslt{\\b go}}} on\\par";
    const std::string href = c.href;
    const std::string link = href.empty() ? "<b>go</b>" : "<a href=\"" + href + "\"><b>go</b></a>";
    EXPECT_EQ(Html(body), P(link + " on")) << c.instruction;
  }
}

TEST(DocumentHtml, ShowsTheFirstPagesHeaderAndFooter) {
  const std::string heads =
      "{\\header\\pard Usual\\par}{\\headerf\\pard First\\par}"
      "{\\footer\\pard Page \\chpgn  of {\\field{\\*\\fldinst NUMPAGES}{\\fldrslt 7}}\\par}";
  const auto text = [](const std::string& html) {
    std::string plain;
    bool tag = false;
    for (const char c : html) {
      tag = tag || c == '<';
      if (!tag) plain += c;
      if (c == '>') tag = false;
    }
    return plain;
  };
  EXPECT_EQ(text(Html(heads + "\\pard\\par Dear\\par\\par")), "UsualDearPage 1 of 1");
  EXPECT_EQ(text(Html("\\titlepg" + heads + "\\pard Dear\\par")), "FirstDear");
}

TEST(DocumentHtml, ShowsPicturesInTheirSize) {
  const std::string png = "{\\pict\\pngblip\\picwgoal1500\\pichgoal750 89504e47}";
  const std::string wide = "{\\pict\\pngblip\\picwgoal19276\\pichgoal750 89504e47}";
  const std::string wmf = "{\\pict\\wmetafile8\\picwgoal1500\\pichgoal750 0100}";
  Check({
      {"a " + png + " b\\par", P("a <img src=\"cid:logo\" alt=\"\" width=\"100\" height=\"50\" "
                                 "style=\"width:100px;height:50px\"> b")},
      {wide + "\\par", P("<img src=\"cid:logo\" alt=\"\" width=\"643\" height=\"25\" "
                         "style=\"width:643px;max-width:100%;height:auto\">")},
      {wmf + "\\par", P("[WMF picture]")},
  });
}

// A shape without line and fill, unless it has one of its own.
std::string Shape(const std::string& words, const std::string& content) {
  return "{\\shp{\\*\\shpinst" + words + "{\\sp{\\sn fLine}{\\sv 0}}" + content +
         "}{\\shprslt old}}";
}

TEST(DocumentHtml, TextBoxesStandApartOnce) {
  const std::string box = Shape("\\shpright3000\\shpbypara", "{\\shptxt A {\\b box}\\par}");
  const std::string html = "<div style=\"margin:0 0 6pt;max-width:200px\">" +
                           P("A <b>box</b>", "margin:0;font-size:12pt") + "</div>";
  const std::string filled = Shape(
      "\\shpleft6000\\shpright9000\\shpbypara",
      "{\\sp{\\sn fLine}{\\sv 1}}{\\sp{\\sn lineColor}{\\sv 255}}{\\sp{\\sn fillColor}{\\sv 65535}}"
      "{\\shptxt x}");
  const std::string logo =
      Shape("\\shpright1500\\shpbottom750", "{\\sp{\\sn pib}{\\sv {\\pict\\pngblip 89504e47}}}");
  const std::string numbers = "{\\*\\pn\\pnlvlbody\\pndec{\\pntxta.}}\\fi-360\\li360 ";
  Check({
      {"a" + box + " b\\par", html + P("a b")},
      {"a\\par" + box + "\\par b\\par", P("a") + html + P("b")},
      {filled + "a\\par",
       "<div style=\"margin:0 0 6pt auto;max-width:200px;border:1px solid #FF0000;"
       "background-color:#FFFF00;color:#000000;padding:3.6pt 7.2pt 3.6pt 7.2pt\">" +
           P("x", "margin:0;font-size:12pt") + "</div>" + P("a")},
      {"a" + logo + "\\par", P("a<img src=\"cid:logo\" alt=\"\" width=\"100\" height=\"50\" "
                               "style=\"width:100px;height:50px\">")},
      {"x\\par\\pard" + numbers + "a" + box + "\\par\\pard x\\par",
       P("x") + "<ol style=\"margin:0 0 0 18pt;padding:0;list-style-type:decimal\">" +
           "<li style=\"margin:0\">" + html + "a</li></ol>" + P("x")},
      // At the foot of the page: below the text.
      {Shape("\\shptop15000\\shpright3000\\shpbottom15500\\shpbypage",
             "{\\shptxt A {\\b box}\\par}") +
           "a\\par b\\par",
       P("a") + P("b") + html},
  });
  const std::string cell = Html("\\trowd\\cellx6000\\pard\\intbl a" + box + "\\cell\\row\\pard");
  EXPECT_THAT(cell, testing::MatchesRegex("<table.*<td[^>]*><div[^>]*>.*box.*</div>" + P("a") +
                                          "</td></tr></table>.*"));
}

// A note with an automatic mark.
std::string Note(const std::string& text, const std::string& word = "\\footnote") {
  return "{\\super\\chftn}{" + word + "\\pard\\fs20{\\super\\chftn} " + text + "}";
}

std::string Notes(const std::string& notes) {
  return "<div style=\"margin-top:12pt\"><hr width=\"33%\" size=\"1\" align=\"left\">" + notes +
         "</div>";
}

TEST(DocumentHtml, ShowsNotesBelowTheText) {
  const std::string one = "<sup>1</sup>";
  Check({
      {"a" + Note("foot\\par on") + " b" + Note("end", "\\footnote\\ftnalt") + " c" +
           Note("third") + "\\par",
       P("a" + one + " b" + one + " c<sup>2</sup>") +
           Notes(P(one + " foot") + P("on") + P("<sup>2</sup> third") + P(one + " end"))},
      {"\\ftnnruc\\ftnstart4 a\\chftn{\\footnote\\pard\\fs20\\chftn  b}\\par",
       P("a<sup>IV</sup>") + Notes(P("<sup>IV</sup> b"))},
      // A note without a mark gets one.
      {"a{\\footnote\\pard\\fs20 b} c{\\super\\chftn}{\\footnote\\pard\\fs20 d}\\par",
       P("a" + one + " c<sup>2</sup>") + Notes(P(one + "b") + P("<sup>2</sup>d"))},
      // The author's own mark counts for nothing, a hidden note does not either.
      {"a*{\\footnote\\pard\\fs20 * own}{\\v" + Note("gone") + "} b" + Note("c") + "\\par",
       P("a* b" + one) + Notes(P("* own") + P(one + " c"))},
  });
  const std::string tables_and_boxes =
      "\\trowd\\cellx6000\\pard\\intbl a" + Note("cell") + "\\cell\\row\\pard" +
      Shape("", "{\\shptxt\\pard\\fs20 b" + Note("box") + "}") + "c" + Note("text") + "\\par";
  EXPECT_THAT(
      Html(tables_and_boxes),
      AllOf(HasSubstr(">a" + one + "<"), HasSubstr(">b<sup>2</sup><"),
            testing::EndsWith(P("c<sup>3</sup>") + Notes(P(one + " cell") + P("<sup>2</sup> box") +
                                                         P("<sup>3</sup> text")))));
  EXPECT_THAT(Html("{\\footer\\pard\\fs20 f" + Note("footer") + "\\par}a" + Note("text") + "\\par"),
              testing::EndsWith(Notes(P(one + " text") + P("<sup>2</sup> footer")) +
                                "<div style=\"margin-top:12pt\">" + P("f<sup>2</sup>") + "</div>"));
}

TEST(DocumentHtml, TabsReachTheirStops) {
  const auto blanks = [](const std::string& body) {
    const std::string html = Html(body);
    return static_cast<int>(Split(html, "&nbsp;").size() - 1 + Split(html, " ").size() -
                            2);  // one in "<p style"
  };
  // A blank of 10 points is 56 twips wide.
  EXPECT_NEAR(blanks("\\tx2880 a\\tab b\\par"), 2880 / 56, 4);
  EXPECT_NEAR(blanks("\\tx2880 A longer text\\tab b\\par"), (2880 - 1150) / 56, 4);
  EXPECT_NEAR(blanks("\\tqr\\tx2880 a\\tab wwww\\par"), (2880 - 600) / 56, 5);
  EXPECT_NEAR(blanks("\\tqr\\tx99999 a\\tab\\tab b\\par"), 9638 / 56, 12) << "the text's edge";
  EXPECT_EQ(blanks("\\qc a\\tab b\\par"), 4);
  EXPECT_NEAR(blanks("a" + std::string(999, ' ') + "\\par"), 9638 / 56, 3) << "a line full";
  EXPECT_THAT(Html("\\tldot\\tx2880 a\\tab b\\par"), HasSubstr("a........"));
}

TEST(DocumentHtml, TakesAnyLetter) {
  static constexpr const char* kPieces[] = {
      "\\b ",
      "\\b0 ",
      "\\i ",
      "\\ul ",
      "\\uldb ",
      "\\ulw ",
      "\\cf1 ",
      "\\cf99 ",
      "\\f3 ",
      "\\f2 ",
      "\\fs0 ",
      "\\fs9999 ",
      "\\par ",
      "\\pard ",
      "\\plain ",
      "\\qc ",
      "\\qr ",
      "\\li-900 ",
      "\\fi-9000 ",
      "\\sb99999 ",
      "\\sl-1 ",
      "{",
      "}",
      "\\tab ",
      "   ",
      "\\'01",
      "\\cell ",
      "\\row ",
      "\\intbl ",
      "\\itap2 ",
      "\\itap9 ",
      "\\nestcell ",
      "\\trowd ",
      "\\cellx900 ",
      "\\cellx-5 ",
      "\\clvmgf ",
      "\\clvmrg ",
      "\\clmgf ",
      "\\clmrg ",
      "\\line ",
      "\\page ",
      "<\"'&>",
      "\\brdrb\\brdrs ",
      "\\cbpat3 ",
      "\\highlight1 ",
      "{\\pntext x}{\\*\\pn\\pnlvlbody\\pndec{\\pntxta.}}",
      "{\\*\\pn\\pnlvlblt}",
      "{\\field{\\*\\fldinst HYPERLINK \"http://a\\'22>\"}{\\fldrslt go}}",
      "{\\pict\\pngblip\\picwgoal-1\\pichgoal9 00}",
      "{\\header\\pard h\\par}",
      "\\chftn ",
      "{\\footnote ",
      "{\\shp{\\*\\shpinst\\shpbypage\\shptop15000{\\shptxt t\\par}}}",
      "{\\shp{\\*\\shpinst{\\shptxt "};
  std::mt19937 random(20261122);
  for (int i = 0; i < 400; ++i) {
    std::string body;
    for (int piece = 0; piece < 150; ++piece) {
      body += random() % 3 == 0 ? "w" + std::to_string(piece)
                                : std::string(kPieces[random() % std::size(kPieces)]);
    }
    const std::string html = Whole(body);
    ASSERT_EQ(test::DocumentHtmlCheck::Fault(html), "") << body << "\n" << html;
    const richtext::Document document = richtext::ReadRtf(kHead + body + "}");
    EXPECT_TRUE(IsValidUtf8(html::DocumentPlainText(document))) << body;
  }
}

TEST(DocumentPlainText, KeepsNumbersLinksAndColumns) {
  const struct {
    std::string body, text;
  } cases[] = {
      {"a {\\b b}\\line c{\\v d}\\par\\par e\\par\\par", "a b\r\nc\r\n\r\ne"},
      {"\\sa200 a\\par b\\par", "a\r\n\r\nb"},
      {"{\\*\\pn\\pnlvlbody\\pndec\\pnstart3{\\pntxta.}}\\fi-360\\li360 a\\par b\\par",
       "3. a\r\n4. b"},
      {"{\\*\\pn\\pnlvlblt{\\pntxtb\\'B7}}\\fi-360\\li720 a\\par", "   \u2022 a"},
      {"{\\field{\\*\\fldinst HYPERLINK \"http://a.nz/\"}{\\fldrslt our {\\b page}}} x\\par",
       "our page <http://a.nz/> x"},
      {"{\\field{\\*\\fldinst HYPERLINK \"mailto:a@b.nz\"}{\\fldrslt a@b.nz}}\\par", "a@b.nz"},
      {"{\\header\\pard H\\par}{\\footer\\pard F\\par}\\pard a\\par", "H\r\n\r\na\r\n\r\nF"},
      {"\\tx1440 Rent\\tab $5\\par", "Rent        $5"},
      {"{\\footer\\pard F\\par}a" + Note("foot") + " b{\\super i}{\\footnote" +
           "\\pard{\\super i}own} m{\\super 2}" + Note("end", "\\footnote\\ftnalt") + "\\par",
       "a[1] b[i] m2[1]\r\n\r\n____________________\r\n[1] foot\r\n[i] own\r\n[1] end\r\n\r\nF"},
      {"a\\par x" + Shape("\\shpbypara", "{\\shptxt b\\par c}") + " y\\par",
       "a\r\n\r\nb\r\nc\r\n\r\nx y"},
      {Shape("\\shpbymargin\\shptop14000\\shpbottom14500", "{\\shptxt b}") + "x\\par y\\par",
       "x\r\ny\r\n\r\nb"},
      {"\\trowd\\cellx3000\\cellx6000\\pard\\intbl Rent\\cell\\qr $420.00\\cell\\row"
       "\\trowd\\cellx3000\\cellx6000\\pard\\intbl Bond held\\cell\\qr $5\\line x\\cell\\row\\pard "
       "x\\par",
       "Rent       $420.00\r\nBond held       $5\r\n                 x\r\nx"},
      {"\\trowd\\cellx3000\\cellx6000\\pard\\intbl " + std::string(20, 'a') + " " +
           std::string(20, 'b') + " " + std::string(20, 'c') + "\\cell " + std::string(30, 'd') +
           "\\cell\\row\\pard",
       std::string(20, 'a') + " " + std::string(20, 'b') + "       " + std::string(30, 'd') +
           "\r\n" + std::string(20, 'c')},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(html::DocumentPlainText(richtext::ReadRtf(kHead + c.body + "}")), c.text) << c.body;
  }
}

}  // namespace
}  // namespace tenora
