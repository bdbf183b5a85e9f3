#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/richtext_support.h"

namespace tenora {
namespace {

using richtext::Letter;

RichTextBox BoxOf(const std::string& body) {
  RichTextBox box;
  box.SetTextRTF(Letter(body));
  return box;
}

TEST(SetSelText, ReplacesTheSelection) {
  const struct {
    const char* body;
    int start, length;
    const char* put;
    const char* text;
    int caret;
  } kCases[] = {
      {"abc\\par def\\par", 1, 1, "X", "aXc\r\ndef", 2},
      {"abc\\par def\\par", 2, 3, "", "abef", 2},
      {"abc\\par def\\par", 7, 0, "!", "abc\r\ndef!", 8},
      {"abc\\par", 1, 0, "x\r\ny\nz", "ax\r\ny\r\nzbc", 6},
      {"abc\\par", 0, 99, "", "", 0},
      {"a\\u-10179?\\u-8704?b\\par", 3, 1, "c", "a😀c", 4},
      {"M\\u257?\\par", 2, 0, "{h}\\u", "Mā{h}\\u", 7},
      {"p\\par\\trowd\\cellx1\\cellx2\\pard\\intbl ab\\cell cd\\cell\\row\\pard q\\par", 3, 3, "X",
       "p\r\naX\td\r\nq", 4},
      {"", 0, 0, "<<Tenant Name>>", "<<Tenant Name>>", 15},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.body);
    RichTextBox box = BoxOf(c.body);
    box.Select(c.start, c.length);
    box.SetSelText(c.put);
    EXPECT_EQ(box.Text(), c.text);
    EXPECT_EQ(box.SelStart(), c.caret);
    EXPECT_EQ(box.SelLength(), 0);
    EXPECT_EQ(richtext::Canonical(box.TextRTF()), box.TextRTF());
  }
}

TEST(SetSelText, TakesTheFormatAtTheStart) {
  RichTextBox box = BoxOf("plain \\b bold\\b0  plain\\par");
  box.Select(8, 0);
  box.SetSelText("<<Mobile>>");
  EXPECT_NE(box.TextRTF().find("\\b bo<<Mobile>>ld\\b0"), std::string::npos) << box.TextRTF();
  box.Select(6, 4);
  box.SetSelText("X");
  EXPECT_NE(box.TextRTF().find("\\b XMobile>>ld\\b0"), std::string::npos) << box.TextRTF();
}

TEST(SetSelText, KeepsWhatItDoesNotTouch) {
  RichTextBox box = BoxOf(
      "a{\\*\\bkmkstart m}b{\\*\\bkmkend m} {\\field{\\*\\fldinst{HYPERLINK \"x\"}}{\\fldrslt "
      "link}}{\\pict\\pngblip 8950} end\\par");
  box.Select(0, 1);
  box.SetSelText("longer ");
  EXPECT_NE(box.TextRTF().find("longer {\\*\\bkmkstart m}b{\\*\\bkmkend m} {\\field{\\*\\fldinst"
                               "{HYPERLINK \"x\"}}{\\fldrslt link}}{\\pict\\pngblip 8950} end"),
            std::string::npos)
      << box.TextRTF();
}

// An editor that holds a document as edits leave it.
class UntidyView : public RichTextView {
 public:
  explicit UntidyView(richtext::Document content) : content_(std::move(content)) {}

  richtext::Document Content() override { return content_; }
  Range Selection() override { return {}; }
  void Select(Range) override {}
  void ReplaceSelection(std::string_view) override {}
  void BoxChanged(Change) override {}

 private:
  richtext::Document content_;
};

richtext::Font FontNamed(const char* name) {
  richtext::Font font;
  font.name = name;
  font.family = "swiss";
  return font;
}

TEST(AttachedView, GivesTheBoxTheCanonicalFormOfItsContent) {
  using richtext::Document;
  using richtext::Paragraph;
  const auto first = [](Document& document) -> Paragraph& {
    return std::get<Paragraph>(document.blocks.front());
  };
  const struct {
    const char* what;
    const char* body;
    std::function<void(Document&)> disturb;
  } kCases[] = {
      {"an empty run in bold", "<<Name>>",
       [&](Document& document) {
         richtext::Run run = first(document).runs.front();
         first(document).runs = {run, run, run};
         first(document).runs[0].text = "<<Na";
         first(document).runs[1].text.clear();
         first(document).runs[1].format.bold = true;
         first(document).runs[2].text = "me>>";
       }},
      {"one font twice, and a font without text", "a{\\f2 b}",
       [&](Document& document) {
         document.fonts.push_back(FontNamed("arial"));
         document.fonts.push_back(FontNamed("Verdana"));
         first(document).runs.back().format.font = static_cast<int>(document.fonts.size()) - 2;
       }},
      {"one colour twice", "a{\\cf1 b}\\cf2 c",
       [&](Document& document) {
         document.colours.push_back(document.colours[1]);
         first(document).runs.front().format.colour = 3;
       }},
      {"a mark in a merge code", "a <<Name>>",
       [&](Document& document) {
         first(document).marks.push_back({6, "{\\*\\bkmkstart m}"});
       }},
      {"a bullet without its font", "one",
       [&](Document& document) {
         first(document).format.bullet.kind = richtext::Bullet::Kind::kBullet;
         first(document).format.bullet.before = "•";
       }},
      {"a table with a font of its own", "\\trowd\\cellx900\\intbl a{\\f2 b}\\cell\\row\\pard end",
       [](Document& document) {
         document.fonts.insert(document.fonts.begin() + 1, FontNamed("Verdana"));
         auto& table = *std::get<std::shared_ptr<richtext::Table>>(document.blocks.front());
         auto& cell = std::get<Paragraph>(table.rows.front().cells.front().blocks.front());
         cell.runs.back().format.font = 2;
       }},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.what);
    Document document = richtext::ReadRtf(Letter(c.body));
    c.disturb(document);
    const std::string untidy = richtext::WriteRtf(document);
    UntidyView view(document);
    RichTextBox box;
    box.AttachView(&view);
    box.ViewEdited();
    EXPECT_EQ(box.TextRTF(), richtext::Canonical(untidy));
    EXPECT_NE(box.TextRTF(), untidy);
    EXPECT_EQ(richtext::WriteRtf(document), untidy) << "a table of the view's was changed";
  }
}

TEST(Find, SelectsWhatItFinds) {
  const struct {
    const char* body;
    const char* text;
    int start, end, options, found;
  } kCases[] = {
      {"One two TWO", "two", 0, -1, 0, 4},
      {"One two TWO", "two", 5, -1, 0, 8},
      {"One two TWO", "two", 5, -1, RichTextBox::kMatchCase, -1},
      {"twofold two", "two", 0, -1, RichTextBox::kWholeWord, 8},
      {"GR\\'d6SSE", "gr\xc3\xb6sse", 0, -1, 0, 0},
      {"\\u1044?\\u1040?", "да", 0, -1, 0, 0},
      {"one\\par two", "e\r\nt", 0, -1, 0, 2},
      {"one two", "two", 0, 6, 0, -1},
      {"one", "", 0, -1, 0, -1},
      {"one", "o", 9, -1, 0, -1},
      {"\\u-10179?\\u-8704?x", "x", 0, -1, 0, 2},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.body);
    RichTextBox box = BoxOf(c.body);
    EXPECT_EQ(box.Find(c.text, c.start, c.end, c.options), c.found);
    EXPECT_EQ(box.SelStart(), std::max(c.found, 0));
    EXPECT_EQ(box.SelLength() > 0, c.found >= 0);
  }
  RichTextBox box = BoxOf("one two");
  EXPECT_EQ(box.Find("two", 0, -1, RichTextBox::kNoHighlight), 4);
  EXPECT_EQ(box.SelLength(), 0);
}

}  // namespace
}  // namespace tenora
