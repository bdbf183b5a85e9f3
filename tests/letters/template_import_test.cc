#include "letters/template_import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const Date kToday = Date::FromCalendar(2026, 11, 22);

std::string Letter(const std::string& body) {
  return "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0 Arial;}}\\pard " + body + "\\par}";
}

std::string MergeField(const std::string& instruction, const std::string& result) {
  return "{\\field{\\*\\fldinst{ " + instruction + " }}{\\fldrslt{" + result + "}}}";
}

TEST(CodeRepair, MakesCodesOfWhatWordProcessorsMadeOfThem) {
  const struct {
    std::string body, text;
    std::vector<std::string> repairs;
  } cases[] = {
      {"Dear {\\b <<Tenant} Name>>, hello",
       "Dear <<Tenant Name>>, hello",
       {"line 1: <<Tenant Name>> has one format now"}},
      {"Dear " +
           MergeField("MERGEFIELD Tenant_Name \\\\* MERGEFORMAT", "\\'abTenant\\b _Name\\'bb") +
           ", your rent",
       "Dear <<Tenant Name>>, your rent",
       {"the merge field \"Tenant_Name\" is now <<Tenant Name>>"}},
      {MergeField("MERGEFIELD \"current rent\"", "x") + MergeField("MERGEFIELD Tenant_Name", "y"),
       "<<Current Rent>><<Tenant Name>>",
       {"the merge field \"current rent\" is now <<Current Rent>>",
        "the merge field \"Tenant_Name\" is now <<Tenant Name>>"}},
      {"a \\'abCurrent Rent\\'bb b\\par \\'abPrint Date\\'bb and \\'abquoted\\'bb",
       "a <<Current Rent>> b\r\n<<Print Date>> and «quoted»",
       {"line 1: «Current Rent» is now <<Current Rent>>",
        "line 2: «Print Date» is now <<Print Date>>"}},
      // Whoever wrote these must say what they mean.
      {MergeField("MERGEFIELD Salutation", "Madam") + " \\'abTenent Nam\\'bb <<Tenent Name>>",
       "Madam «Tenent Nam» <<Tenent Name>>",
       {}},
      {MergeField("HYPERLINK \"http://x.test\"", "a link"), "a link", {}},
  };
  for (const auto& c : cases) {
    RichTextBox box;
    box.SetTextRTF(Letter(c.body));
    EXPECT_EQ(RepairCodes(&box, TemplateKind::kTenant, kToday), c.repairs) << c.body;
    EXPECT_EQ(box.Text(), c.text) << c.body;
  }
}

TEST(CodeRepair, KeepsBookmarksAroundAFieldInTheirPlaces) {
  RichTextBox box;
  box.SetTextRTF(Letter("{\\*\\bkmkstart a}ab" +
                        MergeField("MERGEFIELD Tenant_Name", "long result") +
                        "{\\*\\bkmkstart b}cd{\\*\\bkmkend b}{\\*\\bkmkend a}"));
  RepairCodes(&box, TemplateKind::kTenant, kToday);
  EXPECT_THAT(
      box.TextRTF(),
      HasSubstr("ab<<Tenant Name>>{\\*\\bkmkstart b}cd{\\*\\bkmkend b}{\\*\\bkmkend a}\\par"));
}

TEST(CodeRepair, MakesCodesOfTheMergeFieldsInHeadersAndFooters) {
  RichTextBox box;
  box.SetTextRTF(
      "{\\rtf1\\ansi\\deff1{\\fonttbl{\\f0 Courier New;}{\\f1 Arial;}}"
      "{\\headerf\\pard\\qr\\f0 For {\\b " +
      MergeField("MERGEFIELD Tenant_Name", "x") +
      "} only\\par}{\\footer\\trowd\\cellx4000\\pard\\intbl " +
      MergeField("MERGEFIELD Current_Rent", "y") +
      "\\cell\\row\\pard\\par}\\pard text\\sect\\sectd{\\header\\pard " +
      MergeField("MERGEFIELD Tenant_Code", "z") + "\\par}end\\par}");
  EXPECT_THAT(RepairCodes(&box, TemplateKind::kTenant, kToday),
              ElementsAre("the merge field \"Tenant_Name\" is now <<Tenant Name>>",
                          "the merge field \"Current_Rent\" is now <<Current Rent>>",
                          "the merge field \"Tenant_Code\" is now <<Tenant Code>>"));
  EXPECT_THAT(LintTemplate(box, TemplateKind::kTenant, kToday), IsEmpty());
  const std::string rtf = box.TextRTF();
  EXPECT_THAT(rtf, HasSubstr("<<Tenant Code>>\\par"));
  EXPECT_THAT(rtf, HasSubstr("For \\b <<Tenant Name>>\\b0  only\\par"));
  EXPECT_THAT(rtf, HasSubstr("<<Current Rent>>\\cell\\row"));
  const auto& groups = box.Document().head_groups;
  ASSERT_EQ(groups.size(), 2U);
  EXPECT_EQ(groups[0].word, "headerf");
  const auto& header = std::get<richtext::Paragraph>(groups[0].blocks.front());
  EXPECT_EQ(groups[0].blocks.size(), 1U);
  EXPECT_EQ(header.format.alignment, richtext::Alignment::kRight);
  EXPECT_EQ(box.Document().fonts[header.runs[1].format.font].name, "Courier New");
}

class TemplateImportTest : public testing::Test {
 protected:
  std::filesystem::path Document(const std::string& name, const std::string& content) {
    WriteWholeFile(folder_ / name, content);
    return folder_ / name;
  }

  ImportedTemplate Import(const std::filesystem::path& document, const std::string& name = {}) {
    return ImportTemplate({document, std::string(kTemplates), name, {}},
                          TemplateLibrary(folder_ / "data"), kToday);
  }

  test::ScratchFolder folder_;
};

TEST_F(TemplateImportTest, SavesUnderAFreeNameAndTellsWhatIsLeftToDo) {
  const auto document = Document("Rent.doc", Letter("<<Tenant Name>> <<Tenent Name>>"));
  std::filesystem::create_directory(folder_ / "data");
  const ImportedTemplate first = Import(document), second = Import(document);
  EXPECT_EQ(first.file, folder_ / "data/Templates/Rent.rtf");
  EXPECT_EQ(second.file, folder_ / "data/Templates/Rent(1).rtf");
  ASSERT_EQ(first.findings.size(), 1U);
  EXPECT_THAT(first.findings.front().Text(), HasSubstr("<<Tenent Name>> is not a merge code"));
  RichTextBox box;
  box.LoadFile(second.file);
  EXPECT_THAT(box.Text(), StartsWith("<<Tenant Name>>"));
  EXPECT_EQ(Import(document, "../Cheque/Mine").file.parent_path(), folder_ / "data/Templates");
}

TEST_F(TemplateImportTest, LeavesTheLibraryAloneWhereTheDocumentIsNone) {
  const struct {
    std::filesystem::path document;
    const char* error;
  } cases[] = {{Document("notes.txt", "plain"), "notes.txt: templates are made of .docx"},
               {Document("x.docx", "plain"), "x.docx: it is no .docx"},
               {folder_ / "absent.docx", "53 - File not found"}};
  for (const auto& c : cases) {
    EXPECT_THAT(test::ErrorOf([&] { Import(c.document); }), HasSubstr(c.error));
  }
  EXPECT_FALSE(std::filesystem::exists(folder_ / "data"));
}

}  // namespace
}  // namespace tenora
