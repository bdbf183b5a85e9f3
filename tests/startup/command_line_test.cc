#include "startup/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tenora {
namespace {

TEST(GetCommandParameter, ReadsTheWrittenParameterElseTheFirstOccurrence) {
  const struct {
    const char* line;
    const char* name;
    const char* expected;
  } cases[] = {
      {R"(PRINTRECEIPT="T00001" FORMAT="Rent review")", "FORMAT", "Rent review"},
      {R"(PRINTRECEIPT="T00001" FORMAT="Rent review")", "PRINTRECEIPT", "T00001"},
      {R"(printreceipt="T1" format="x")", "FORMAT", "x"},
      {R"(FORMAT="")", "FORMAT", ""},
      {R"(PRINTRECEIPT="T1")", "FORMAT", "the default"},
      {"", "FORMAT", "the default"},
      // An unclosed value is empty, not the default.
      {R"(FORMAT="Receipt)", "FORMAT", ""},
      {"FORMAT", "FORMAT", ""},
      {"FORMAT=", "FORMAT", ""},
      {R"(FORMAT=")", "FORMAT", ""},
      // The two characters behind the name are not checked.
      {R"(FORMAT: Receipt" x)", "FORMAT", "Receipt"},
      {R"(FORMATReceipt")", "FORMAT", "ceipt"},
      {R"(FORMAT=“Größe")", "FORMAT", "Größe"},
      {R"(FORMAT="a" FORMAT="b")", "FORMAT", "a"},
      {R"(FORMAT="Größe/Māhuta's")", "FORMAT", "Größe/Māhuta's"},
      {R"(printreceipt = "T1" format  ="x" VALUE=  "5")", "PRINTRECEIPT", "T1"},
      {R"(printreceipt = "T1" format  ="x" VALUE=  "5")", "FORMAT", "x"},
      {R"(printreceipt = "T1" format  ="x" VALUE=  "5")", "VALUE", "5"},
      // A name inside another value is part of that value, whether or not the line has it
      // elsewhere.
      {R"(PAYEE="Two Cents Ltd" CENTS="Pence")", "CENTS", "Pence"},
      {R"(PAYEE="Two Cents Ltd" CENTS="Pence")", "PAYEE", "Two Cents Ltd"},
      {R"(PAYEE="Two Cents Ltd")", "CENTS", "the default"},
      {R"(FORMAT="Default receipt" PRINTRECEIPT="T1")", "DEFAULT", "the default"},
      {R"(FORMAT="Default receipt" default="False")", "DEFAULT", "False"},
      {R"(PRINTRECEIPT="FORMAT" FORMAT="b")", "FORMAT", "b"},
      {R"(PAYEE="Two Cents=" CENTS="Pence")", "CENTS", "Pence"},
      {R"(PAYEE="Two Cents=" FORMAT="b")", "CENTS", "the default"},
      {R"(PAYEE="Value=5, Cents=7" VALUE="1")", "VALUE", "1"},
      {R"(NOTE="to PAYEE" PAYEE="Jane")", "PAYEE", "Jane"},
      // Inside a longer name: only where the name itself is not written.
      {R"(ACCENTS="a" CENTS="b")", "CENTS", "b"},
      {R"(éCENTS="a" 2CENTS="b" CENTS="c")", "CENTS", "c"},
      {R"(REFORMAT="a")", "FORMAT", "a"},
      {R"(REFORMAT="FORMAT")", "FORMAT", "FORMAT"},
      // The written one counts, also behind a place that the loose reading would take.
      {R"(FORMAT: Rent" FORMAT="Receipt")", "FORMAT", "Receipt"},
      {R"(CENTS PAYEE="Jane" CENTS="Pence")", "CENTS", "Pence"},
      // A value that is not closed takes the next quote for its own and hides what is before it.
      {R"(PAYEE="Jane VALUE="5" FORMAT="b")", "VALUE", "the default"},
      {R"(PAYEE="Jane VALUE="5" FORMAT="b")", "FORMAT", "b"},
      {R"(TOEMAIL="false TOPRINTER=false)", "TOPRINTER", ""},
      {R"(" = "" FORMAT="b")", "FORMAT", "b"},
      {R"(="FORMAT" x" y)", "FORMAT", "x"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CommandLine(c.line).GetCommandParameter(c.name, "the default"), c.expected) << c.line;
  }
}

TEST(CommandLine, PutsBackWhatTheShellTookAway) {
  const struct {
    std::vector<std::string> arguments;
    const char* expected;
  } cases[] = {
      {{}, ""},
      {{"/NewFormsInstalled"}, "/NewFormsInstalled"},
      // The whole line as one argument keeps its own quotes, sound or not.
      {{R"(PRINTRECEIPT="T00001"  FORMAT="Rent review")"},
       R"(PRINTRECEIPT="T00001"  FORMAT="Rent review")"},
      {{R"(PRINTRECEIPT="T00001" FORMAT="Rent)"}, R"(PRINTRECEIPT="T00001" FORMAT="Rent)"},
      // Quotes lost.
      {{"PRINTRECEIPT=T00001", "FORMAT=Rent review"},
       R"(PRINTRECEIPT="T00001" FORMAT="Rent review")"},
      {{"printreceipt=T00001", "Format=Receipt"}, R"(printreceipt="T00001" Format="Receipt")"},
      {{"PRINTRECEIPT=T00001", "FORMAT=Rent", "review", "TOPRINTER=false"},
       R"(PRINTRECEIPT="T00001" FORMAT="Rent review" TOPRINTER="false")"},
      {{"PRINTRECEIPT=T00001", "FORMAT=", "Rent", "review"},
       R"(PRINTRECEIPT="T00001" FORMAT="Rent review")"},
      {{"PRINTRECEIPT=", "FORMAT="}, R"(PRINTRECEIPT="" FORMAT="")"},
      {{"PRINTRECEIPT=T00001 FORMAT=Rent review"}, R"(PRINTRECEIPT="T00001" FORMAT="Rent review")"},
      {{"FORMAT=a=b", "COPIES=2", "2=2"}, R"(FORMAT="a=b" COPIES="2 2=2")"},
      {{"FORMAT=Rent review COPIES=2"}, R"(FORMAT="Rent review" COPIES="2")"},
      {{"FORMAT=Rent DEFAULT=x", "REPRINT=5"}, R"(FORMAT="Rent DEFAULT=x" REPRINT="5")"},
      // Quotes that came through one by one, and some of each.
      {{R"(PRINTRECEIPT="T00001")", R"(FORMAT="Rent)", R"(review")"},
       R"(PRINTRECEIPT="T00001" FORMAT="Rent review")"},
      {{"PRINTRECEIPT=T00001", R"(FORMAT="Rent review")"},
       R"(PRINTRECEIPT="T00001" FORMAT="Rent review")"},
      {{R"(FORMAT="Rent review")", "PRINTRECEIPT=T00001"},
       R"(FORMAT="Rent review" PRINTRECEIPT="T00001")"},
      // A quote that never closes takes the rest in, so that its value reads as empty.
      {{R"(FORMAT="Receipt)", "TOPRINTER=true"}, R"(FORMAT="Receipt TOPRINTER=true)"},
      // A command word is no part of the value before it; any other bare name is.
      {{"TOPRINTER=true", "PRINTRECEIPT"}, R"(TOPRINTER="true" PRINTRECEIPT)"},
      {{"PAYEE=Two", "Cents", "Ltd", "printcheque", "VALUE=5"},
       R"(PAYEE="Two Cents Ltd" printcheque VALUE="5")"},
      {{"PRINTRECEIPT=T00001 FORMAT=My Default receipt"},
       R"(PRINTRECEIPT="T00001" FORMAT="My Default receipt")"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CommandLine::FromArguments(c.arguments).text(), c.expected)
        << testing::PrintToString(c.arguments);
  }
}

TEST(CommandLine, FindsACommandWordAnywhereInAnyCase) {
  EXPECT_TRUE(CommandLine(R"(x="printreceipt")").Contains("PRINTRECEIPT"));
  EXPECT_FALSE(CommandLine("PRINT RECEIPT").Contains("PRINTRECEIPT"));
}

TEST(FilesToOpen, AreThoseOfALineOfNothingElse) {
  const std::filesystem::path here = std::filesystem::current_path();
  const struct {
    std::vector<std::string> arguments;
    std::vector<std::filesystem::path> files;
  } cases[] = {
      {{}, {}},
      {{"Rent review.rtf"}, {here / "Rent review.rtf"}},
      {{"/srv/x/../a.rtf", "b.docx"}, {"/srv/a.rtf", here / "b.docx"}},
      {{"/NewFormsInstalled"}, {}},
      {{"--all.rtf"}, {}},
      {{"PRINTRECEIPT=T00001", "FORMAT=Rent", "review.rtf"}, {}},
      {{"PRINTRECEIPT=\"T00001\" FORMAT=\"a.rtf\""}, {}},
      {{"PRINTRECEIPT", "a.rtf"}, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(FilesToOpen(c.arguments), c.files);
}

TEST(FolderAmong, IsNoParameterOfThePackage) {
  const std::filesystem::path here = std::filesystem::current_path();
  const struct {
    std::vector<std::string> arguments;
    std::filesystem::path folder;
  } cases[] = {
      {{}, {}},
      {{"a.rtf", "/usr"}, "/usr"},
      {{"."}, here / ""},
      {{"/no such folder", "/NewFormsInstalled"}, {}},
      {{"PRINTRECEIPT=/usr", "FORMAT=a"}, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(FolderAmong(c.arguments), c.folder);
}

}  // namespace
}  // namespace tenora
