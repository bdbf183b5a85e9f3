#include "startup/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tenora {
namespace {

TEST(GetCommandParameter, ReadsByTheFirstOccurrence) {
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
      // Repeated: the first. Inside another value or a longer word: that place.
      {R"(FORMAT="a" FORMAT="b")", "FORMAT", "a"},
      {R"(PRINTRECEIPT="FORMAT" FORMAT="b")", "FORMAT", "FORMAT="},
      {R"(REFORMAT="a" FORMAT="b")", "FORMAT", "a"},
      {R"(FORMAT="Größe/Māhuta's")", "FORMAT", "Größe/Māhuta's"},
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
      // A known name without a value is no part of the value before it.
      {{"TOPRINTER=true", "PRINTRECEIPT"}, R"(TOPRINTER="true" PRINTRECEIPT)"},
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

}  // namespace
}  // namespace tenora
