// Templates as a word processor writes them, and our letters as it reads them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/richtext/rich_text_box.h"
#include "platform/richtext/richtext_support.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using ::testing::HasSubstr;

class WordProcessor : public ::testing::Test {
 protected:
  void SetUp() override {
    if (std::system("command -v soffice >/dev/null 2>&1") != 0)
      GTEST_SKIP() << "soffice is not installed: templates of word processors are not tested";
  }

  // Converts a file of the scratch folder; the result is written next to it.
  std::string Convert(const std::string& name, const std::string& to, const std::string& options) {
    std::vector<std::string> call{
        "soffice", "-env:UserInstallation=file://" + (folder_ / "profile").string(), "--headless"};
    if (!options.empty()) call.push_back(options);
    const std::string extension = to.substr(0, to.find(':'));
    call.insert(call.end(), {"--convert-to", to, "--outdir", (folder_ / "out").string(),
                             (folder_ / name).string()});
    const auto result = test::RunProcess(call, {"HOME=" + folder_.path().string()});
    const auto out =
        folder_ / "out" / std::filesystem::path(name).replace_extension(extension).filename();
    EXPECT_TRUE(std::filesystem::exists(out)) << result.output << result.errors;
    return ReadWholeFile(out);
  }

  // The text LibreOffice sees, blanks of its layout aside.
  std::string TextSeen(const std::string& name) {
    std::string text = Convert(name, "txt:Text (encoded):UTF8", "");
    if (text.starts_with("\xef\xbb\xbf")) text.erase(0, 3);
    text = ReplaceAll(text, "\r", "");
    while (text.ends_with('\n') || text.ends_with(' ')) text.pop_back();
    return text;
  }

  test::ScratchFolder folder_;
};

constexpr const char* kPage =
    "<html><head><meta charset='utf-8'><title>Rent notice</title></head><body>"
    "<div title='header'><p>Head &lt;&lt;Print Date&gt;&gt;</p></div>"
    "<h1>Dear &lt;&lt;Tenant Name&gt;&gt;</h1>"
    "<p>Split <span lang='de'>&lt;&lt;Cur</span><span lang='fr'>rent R</span>ent&gt;&gt; by "
    "language, <a name='mark'></a>&lt;&lt;Mob<a name='m2'></a>ile&gt;&gt; by bookmarks, "
    "<b>&lt;&lt;Email&gt;&gt;</b> bold, <font color='#ff0000'>&lt;&lt;Fax&gt;&gt;</font> red, "
    "<b>&lt;&lt;Bond</b> Amount&gt;&gt; half bold.</p>"
    "<p>Māhuta “quotes” € 😀</p><ul><li>first</li><li>second</li></ul>"
    "<ol><li>one</li><li>two</li></ol>"
    "<table border=1><tr><td>A &lt;&lt;Home Phone&gt;&gt;</td><td>B</td></tr>"
    "<tr><td>C</td><td>D</td></tr></table>"
    "<p align=center>centre <a href='http://example.com/'>link</a> x<sup>2</sup></p>"
    // Eight red pixels square.
    "<p><img "
    "src='data:image/"
    "png;base64,iVBORw0KGgoAAAANSUhEUgAAAAgAAAAICAIAAABLbSncAAAAEklEQVR4nGP4z8CAFWEXHbQSACj/"
    "P8Fu7N9hAAAAAElFTkSuQmCC'></p><p>end</p></body></html>";

TEST_F(WordProcessor, TemplatesHoldTheirCodesWholeAndSurviveASave) {
  WriteWholeFile(folder_ / "page.html", kPage);
  std::filesystem::create_directories(folder_ / "out");
  WriteWholeFile(folder_ / "template.odt",
                 Convert("page.html", "odt", "--infilter=HTML (StarWriter)"));
  WriteWholeFile(folder_ / "template.docx", Convert("template.odt", "docx", ""));
  for (const char* name : {"template.odt", "template.docx"}) {
    SCOPED_TRACE(name);
    WriteWholeFile(folder_ / "template.rtf", Convert(name, "rtf", ""));
    RichTextBox box;
    box.LoadFile(folder_ / "template.rtf");
    for (const char* code : {"<<Print Date>>", "<<Tenant Name>>", "<<Current Rent>>", "<<Mobile>>",
                             "<<Email>>", "<<Fax>>", "<<Home Phone>>"})
      EXPECT_THAT(box.TextRTF(), HasSubstr(code));
    EXPECT_THAT(box.Text(), HasSubstr("Split <<Current Rent>> by language"));
    EXPECT_THAT(box.Text(), HasSubstr("Māhuta “quotes” € 😀"));
    EXPECT_THAT(box.TextRTF(), HasSubstr("89504e47"));
    EXPECT_EQ(richtext::Canonical(box.TextRTF()), box.TextRTF());
    box.SaveFile(folder_ / "saved.rtf");
    EXPECT_EQ(TextSeen("saved.rtf"), TextSeen("template.rtf"));
    const std::string again = Convert("saved.rtf", "odt", "");
    EXPECT_FALSE(again.empty());
  }
}

TEST_F(WordProcessor, ReadsTheTextOfOurLetters) {
  std::filesystem::create_directories(folder_ / "out");
  RichTextBox box;
  box.SetText("Dear Māhuta,\r\n“quotes” € 😀 Жук 日本\r\n{braces} \\slash\r\n\tindented");
  box.SaveFile(folder_ / "ours.rtf");
  EXPECT_EQ(TextSeen("ours.rtf"), ReplaceAll(box.Text(), "\r", ""));
}

}  // namespace
}  // namespace tenora
