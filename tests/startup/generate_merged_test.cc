// What a run leaves of all its letters together: one PDF, and a list for the post.
#include <utility>
#include <vector>

#include "agency.h"
#include "platform/runtime/csv_field.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// As Python's reader of CSV takes the file.
constexpr const char* kReadCsv = R"(
import csv, sys
for row in csv.reader(open(sys.argv[1], encoding='utf-8-sig', newline='')):
    print('|'.join(row[:7] + row[8:]))
)";

class GenerateMerged : public test::Agency {
 protected:
  GenerateMerged() { WriteTemplate("Note", "Dear <<Tenant Code>>"); }

  fs::path Pdf() const { return Home() / "all.pdf"; }
  test::ProcessResult Make(std::vector<std::string> arguments,
                           const std::string& input = {}) const {
    arguments.insert(arguments.begin(), "generate");
    return Run(arguments, input);
  }
  std::string Log() const {
    for (const auto& entry : fs::directory_iterator(Home())) {
      if (entry.path().extension() == ".log") return entry.path().string();
    }
    return {};
  }
  // Each page's first line, as another program reads the PDF.
  std::vector<std::string> Pages() const {
    const auto text = test::RunProcess({"pdftotext", "-layout", Pdf().string(), "-"});
    std::vector<std::string> pages;
    for (const std::string& page : Split(text.output, "\f")) {
      pages.emplace_back(TrimBlanks(page.substr(0, page.find('\n'))));
    }
    if (!pages.empty()) pages.pop_back();
    return pages;
  }
  // Title and page of each bookmark, as poppler has them.
  std::vector<std::string> Bookmarks() const {
    const auto result = test::RunProcess({"pdftohtml", "-xml", "-stdout", "-i", Pdf().string()});
    std::vector<std::string> found;
    for (const std::string& line : Split(result.output, "\n")) {
      const std::size_t page = line.find("<item page=\""), text = line.find("\">");
      if (page == std::string::npos || text == std::string::npos) continue;
      const std::string title = line.substr(text + 2, line.find("</item>") - text - 2);
      found.push_back(line.substr(page + 12, text - page - 12) + " " + title);
    }
    return found;
  }
};

TEST_F(GenerateMerged, OnePdfHasEachLetterInOrderUnderItsBookmark) {
  struct Case {
    const char* description;
    std::vector<std::string> more;
    std::vector<std::string> pages, bookmarks;
  };
  WriteTemplate("Two", R"(One <<Tenant Code>>\page Two)");
  const std::vector<Case> cases{
      {"one page each",
       {"--template", "Note"},
       {"Dear T00007", "Dear T00001"},
       {"1 Mei Huang (T00007)", "2 Noor Whaanga (T00001)"}},
      {"on front sides",
       {"--template", "Note", "--duplex"},
       {"Dear T00007", "", "Dear T00001"},
       {"1 Mei Huang (T00007)", "3 Noor Whaanga (T00001)"}},
      {"whose backs are full",
       {"--template", "Two", "--duplex", "--pdf"},
       {"One T00007", "Two", "One T00001", "Two"},
       {"1 Mei Huang (T00007)", "3 Noor Whaanga (T00001)"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.description);
    fs::remove(Pdf());
    std::vector<std::string> arguments{"--recipient", "T00007",    "--recipient",
                                       "T00001",      "--one-pdf", Pdf().string()};
    arguments.insert(arguments.end(), c.more.begin(), c.more.end());
    const auto result = Make(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr("One PDF of 2 letters, "));
    EXPECT_EQ(Pages(), c.pages);
    EXPECT_EQ(Bookmarks(), c.bookmarks);
  }
  const auto again = Make({"--template", "Note", "--all", "--one-pdf", Pdf().string()});
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.errors, HasSubstr("all.pdf; nothing was done"));
}

TEST_F(GenerateMerged, AfterResumingItIsRightAndUntilThenItSaysWhoIsMissing) {
  WriteTemplate("Ask", "<<Tenant Code>> <<?Which day?>>");
  const auto held = Make({"--template", "Ask", "--recipient", "T00001", "--recipient", "T00007",
                          "--one-pdf", Pdf().string(), "--csv", (Home() / "post.csv").string()},
                         "Mon } day\nTuesday\n");
  EXPECT_EQ(held.status, 1);
  EXPECT_THAT(held.errors, HasSubstr("Not in the PDF: Noor Whaanga (T00001): held back: "));
  EXPECT_THAT(Bookmarks(), ElementsAre("1 Mei Huang (T00007)"));
  EXPECT_THAT(ReadWholeFile(Home() / "post.csv"), HasSubstr("Noor Whaanga/Ask.rtf,held back,"));
  const auto sent = Make({"--resume", Log(), "--send-held"});
  EXPECT_EQ(sent.status, 0) << sent.errors;
  EXPECT_THAT(Bookmarks(), ElementsAre("1 Noor Whaanga (T00001)", "2 Mei Huang (T00007)"));
  EXPECT_THAT(ReadWholeFile(Home() / "post.csv"), Not(HasSubstr("held")));
  // What is there in its place by then may be somebody's work.
  WriteFile(Pdf(), "not a PDF");
  const auto kept = Make({"--resume", Log()});
  EXPECT_EQ(kept.status, 1);
  EXPECT_THAT(kept.errors, HasSubstr("was not made by a run of letters"));
  EXPECT_EQ(ReadWholeFile(Pdf()), "not a PDF");
}

TEST_F(GenerateMerged, ARunIsUnfinishedUntilItsPdfAndListAreWritten) {
  const fs::path list = Home() / "post.csv";
  const auto unfinished = [&] { return Run({"generate", "--unfinished"}).output; };
  EXPECT_EQ(Make({"--template", "Note", "--recipient", "T00007", "--one-pdf", Pdf().string(),
                  "--csv", list.string()})
                .status,
            0);
  EXPECT_EQ(unfinished(), "");
  // As a kill leaves it that comes when every letter is saved.
  const std::string log = ReadWholeFile(Log());
  WriteWholeFile(Log(), log.substr(0, log.find("\ncomplete\t") + 1));
  fs::remove(Pdf());
  fs::remove(list);
  EXPECT_THAT(
      unfinished(),
      HasSubstr("1 of 1 letter saved\n  The list of the letters is not "
                "finished: " +
                list.string() + "\n  The PDF of all letters is not finished: " + Pdf().string()));
  // Nor does one end whose PDF cannot be written.
  WriteFile(Pdf(), "not a PDF");
  EXPECT_EQ(Make({"--resume", Log()}).status, 1);
  EXPECT_THAT(unfinished(), testing::EndsWith("1 letter saved\n  The PDF of all letters is "
                                              "not finished: " +
                                              Pdf().string() + "\n"));
  fs::remove(Pdf());
  EXPECT_EQ(Make({"--resume", Log()}).status, 0);
  EXPECT_THAT(Pages(), ElementsAre("Dear T00007"));
  EXPECT_EQ(unfinished(), "");
}

TEST_F(GenerateMerged, TheListForThePostReadsAsASpreadsheetTakesIt) {
  const fs::path list = Home() / "post.csv";
  const auto result = Make({"--template", "Note", "--recipient", "T00007", "--csv", list.string()});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(ReadWholeFile(list).starts_with("\xEF\xBB\xBFNumber,"));
  const auto read = test::RunProcess({"python3", "-c", kReadCsv, list.string()});
  EXPECT_EQ(read.output,
            "Number|Name|Code|Address 1|Address 2|Address 3|E-mail|Result|Reason\n"
            "1|Mei Huang|T00007|25 K\u014Dwhai Crescent|St "
            "Heliers|Auckland|tenant7@example.test|done|\n");
  for (const auto& [text, cell] : std::vector<std::pair<std::string, std::string>>{
           {"=HYPERLINK(\"x\",1)", "\"'=HYPERLINK(\"\"x\"\",1)\""},
           {"-1+1", "'-1+1"},
           {"+64", "'+64"},
           {"@SUM(A1)", "'@SUM(A1)"},
           {"12 High Street, Flat \"B\"", "\"12 High Street, Flat \"\"B\"\"\""},
           {"a=b", "a=b"},
           {"", ""}}) {
    EXPECT_EQ(CsvField(NoFormula(text)), cell);
  }
}

TEST_F(GenerateMerged, FilesAreCalledByThePatternAndStayInTheFolder) {
  struct Case {
    std::string pattern, file;
  };
  const std::vector<Case> cases{
      {"{tenant name} - {Template}", "Mei Huang - Note.rtf"},
      {"{Number} {Property Code}", "1 PR00018.rtf"},
      {"../{Tenant Code}/x", "__-T00007-x~97ad9c24.rtf"},
      {"{Tenancy End Date}", "Note.rtf"},
      {" ", "Note(1).rtf"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.pattern);
    const auto result =
        Make({"--template", "Note", "--recipient", "T00007", "--name-pattern", c.pattern});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, (Home() / "Mei Huang" / c.file).string() + "\n");
  }
  // Cut between characters, and once more where it is taken.
  std::string macrons;
  for (int i = 0; i < 200; ++i) macrons += "\u014D";
  const auto cut = Make({"--template", "Note", "--recipient", "T00007", "--recipient", "T00007",
                         "--name-pattern", "x" + macrons, "--pdf"});
  EXPECT_EQ(cut.status, 0) << cut.errors;
  for (const std::string& line : Split(cut.output, "\n")) {
    EXPECT_LE(fs::path(line).filename().string().size(), 255U);
    EXPECT_TRUE(IsValidUtf8(line));
  }
  // The setting holds where the call says nothing, and on resuming what held then.
  StoreSetting("Mail", "TenantFileNames", "{Tenant Code} {Print Date}");
  const auto set = Make({"--template", "Note", "--recipient", "T00001"});
  EXPECT_THAT(set.output, testing::ContainsRegex("/T00001 20..-..-..[.]rtf\n$"));
  const auto unknown =
      Make({"--template", "Note", "--recipient", "T00001", "--name-pattern", "{Tennant Name}"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.errors, HasSubstr("do you mean \"Tenant Name\"?"));
  EXPECT_THAT(unknown.errors, HasSubstr("There are: Template, Number, "));
}

}  // namespace
}  // namespace tenora
