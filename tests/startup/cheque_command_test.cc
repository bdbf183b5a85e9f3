#include "agency.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kCheque = R"(PRINTCHEQUE="" VALUE="12.5" FORMAT="Trust" PAYEE="Jane")";

class ChequeCommand : public test::Agency {
 protected:
  ChequeCommand() {
    // A cheque needs no database.
    fs::remove(Database());
    for (const char* folder : {"Cheque", "Check"}) {
      WriteFile(Home() / folder / "Trust.rtf",
                test::RtfDocument(std::string(folder) +
                                  ": <<Print Date>> <<Payee Name>> [<<Value in words 1>>|<<Value "
                                  "in words 2>>] <<Value in numbers>>"));
    }
    WriteFile(Home() / "Cheque/Figures.rtf", test::RtfDocument("Figures: <<Value in numbers>>"));
    WriteFile(Home() / "Cheque/Words.rtf", test::RtfDocument("<<Value in words 2>>"));
  }
  // Picks the first printer of the list, which is the PDF printer.
  test::ProcessResult Cheque(const std::string& line, const std::string& input = "1\n",
                             const std::vector<std::string>& environment = {}) const {
    fs::remove_all(Home() / "Printed");
    return Run({line}, input, environment);
  }
};

TEST_F(ChequeCommand, PrintsPayeeAndAmountHoweverTheLineWasTyped) {
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{kCheque}, "Cheque: 21/11/2026 Jane [Twelve Dollars and 50 Cents|] 12.50"},
      {{"PRINTCHEQUE=", "VALUE=1234.56", "FORMAT=trust", "PAYEE=Jane", "& Sons"},
       "Cheque: 21/11/2026 Jane & Sons [One Thousand Two Hundred and Thirty Four Dollars |and 56 "
       "Cents] 1234.56"},
      {{R"(printcheque VALUE="12.5abc" FORMAT="Trust" PAYEE="Māhuta")"},
       "Cheque: 21/11/2026 Māhuta [Twelve Dollars and 50 Cents|] 12.50"},
      // A name inside a value is part of it, with and without the parameter of that name.
      {{R"(PRINTCHEQUE="" PAYEE="Value in Cents Ltd" VALUE="1" FORMAT="Trust")"},
       "Cheque: 21/11/2026 Value in Cents Ltd [One Dollars and 00 Cents|] 1.00"},
      {{"PRINTCHEQUE=", "VALUE=1", "FORMAT=Trust", "PAYEE=Two", "Cents", "Ltd"},
       "Cheque: 21/11/2026 Two Cents Ltd [One Dollars and 00 Cents|] 1.00"},
      // A currency behind the amount; blanks inside it are skipped.
      {{R"(PRINTCHEQUE="" VALUE="1 234.50 NZD" FORMAT="Figures" PAYEE="J")"}, "Figures: 1234.50"},
      {{R"(PRINTCHEQUE="" VALUE="12.50€" FORMAT="Figures" PAYEE="J")"}, "Figures: 12.50"},
      {{R"(PRINTCHEQUE="" VALUE="12.50 руб" FORMAT="Figures" PAYEE="J")"}, "Figures: 12.50"},
      {{R"(PRINTCHEQUE="" VALUE="0.005" FORMAT="Figures" PAYEE="J")"}, "Figures: 0.01"},
      {{R"(PRINTCHEQUE="" VALUE="999999.99" FORMAT="Trust" PAYEE="J")"},
       "Cheque: 21/11/2026 J [Nine Hundred and Ninety Nine Thousand Nine |Hundred and Ninety Nine "
       "Dollars and 99 Cents] 999999.99"},
      // Without words there is nothing that could differ from the figures.
      {{R"(PRINTCHEQUE="" VALUE="1000000" FORMAT="Figures" PAYEE="J")"}, "Figures: 1000000.00"},
  };
  for (const auto& [line, printed] : cases) {
    fs::remove_all(Home() / "Printed");
    const test::ProcessResult result = Run(line, "1\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(PrintedText(), printed + " ");
    ASSERT_EQ(Printed().size(), 1u);
    EXPECT_EQ(result.output, "Printed: " + Printed()[0].string() + "\n");
    EXPECT_THAT(result.errors, HasSubstr("1  Print to PDF"));
  }
}

TEST_F(ChequeCommand, SpellsTheWordAndTheDateAsTheLocaleDoes) {
  for (const auto& [locale, printed] : {std::pair("en_US.UTF-8", "Check: 11/21/2026 Jane"),
                                        std::pair("en_NZ.UTF-8", "Cheque: 21/11/2026 Jane"),
                                        std::pair("de_DE.UTF-8", "Cheque: 21.11.2026 Jane"),
                                        std::pair("C", "Cheque: 21/11/2026 Jane")}) {
    EXPECT_EQ(Cheque(kCheque, "1\n", {std::string("LC_ALL=") + locale}).status, 0);
    EXPECT_THAT(PrintedText(), testing::StartsWith(printed)) << locale;
  }
}

TEST_F(ChequeCommand, KeepsTheCurrencysWordsForLaterChequesEvenWhenCancelled) {
  const std::string words = R"( DOLLARS="Pounds" CENTS="Pence")";
  for (const char* input : {"", "\n", "9\n9\n9\n"}) {
    const test::ProcessResult result = Cheque(kCheque + words, input);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(Printed(), IsEmpty());
  }
  // A word that cannot be kept: the cheque would be made out in another currency.
  const test::ProcessResult refused =
      Cheque(kCheque + std::string(" CENTS=\"") + std::string(2000, 'x') + "\"");
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.errors, HasSubstr("Nothing was printed."));
  EXPECT_THAT(Printed(), IsEmpty());
  StoreSetting("Cheque", "Cents", "Pence");
  EXPECT_EQ(Cheque(std::string(kCheque) + R"( CENTS="")").status, 0);
  EXPECT_THAT(PrintedText(), HasSubstr("[Twelve Pounds and 50 Pence|]"));
}

TEST_F(ChequeCommand, RefusesACommandThatIsNoCommandAndKeepsNothingOfIt) {
  for (const char* parameters :
       {R"(VALUE="0" FORMAT="Trust" PAYEE="Jane")", R"(VALUE="-5" FORMAT="Trust" PAYEE="Jane")",
        R"(VALUE="abc12" FORMAT="Trust" PAYEE="Jane")", R"(FORMAT="Trust" PAYEE="Jane")",
        R"(VALUE="1e999" FORMAT="Trust" PAYEE="Jane")", R"(VALUE="5" FORMAT="" PAYEE="Jane")",
        R"(VALUE="5" FORMAT="Trust" PAYEE="")", R"(VALUE="5" FORMAT="Trust" PAYEE="Jane)"}) {
    const std::string line = std::string(R"(PRINTCHEQUE="" DOLLARS="Pounds" )") + parameters;
    const test::ProcessResult result = Cheque(line);
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_THAT(result.errors, HasSubstr("Invalid command string for ReceiptCheque")) << line;
    EXPECT_THAT(Printed(), IsEmpty());
  }
  EXPECT_EQ(Cheque(kCheque).status, 0);
  EXPECT_THAT(PrintedText(), HasSubstr("Twelve Dollars"));
}

TEST_F(ChequeCommand, RefusesAnAmountThatItWouldMisstateAndNamesIt) {
  const struct {
    const char* value;
    const char* reason;
  } cases[] = {
      {"1,234.50", "only as 1."},
      {"1.234,50", "only as 1.234."},
      {"12,50", "only as 12."},
      {"1'234.50", "only as 1."},
      {"1\u00A0234.50", "only as 1."},
      {"1\u202F234.50", "only as 1."},
      {"12.50-", "only as 12.5."},
      {"12.50 CR-", "only as 12.5."},
      {"12.5.3", "only as 12.5."},
      {"12.5+3", "only as 12.5."},
      {"12 dollars 50", "only as 12."},
      {"12.5(0)", "only as 12.5."},
      {"5%", "only as 5."},
      {"5\u4E07", "only as 5."},
      {"12\u066B50", "only as 12."},
      {"1d3", "only as 1."},
      {"0.004", "rounds to 0.00"},
      {"1e-300", "rounds to 0.00"},
      {"0.0049 NZD", "rounds to 0.00"},
      {"1000000", "words and figures would differ"},
      {"999999.995", "would differ"},
      {"1e15", "words and figures would differ"},
  };
  for (const auto& c : cases) {
    for (const char* format : {"Trust", "Words"}) {
      const test::ProcessResult result = Cheque(std::string(R"(PRINTCHEQUE="" FORMAT=")") + format +
                                                R"(" PAYEE="Jane" VALUE=")" + c.value + "\"");
      EXPECT_EQ(result.status, 1) << c.value;
      EXPECT_THAT(result.errors, AllOf(HasSubstr("\"" + std::string(c.value) + "\""),
                                       HasSubstr(c.reason), HasSubstr("Nothing was printed.")));
      EXPECT_THAT(Printed(), IsEmpty()) << c.value;
    }
  }
  // A refused value keeps no word of the currency either.
  EXPECT_EQ(Cheque(R"(PRINTCHEQUE="" FORMAT="Trust" PAYEE="J" DOLLARS="Yen" VALUE="1,5")").status,
            1);
  EXPECT_EQ(Cheque(kCheque).status, 0);
  EXPECT_THAT(PrintedText(), HasSubstr("Twelve Dollars"));
}

TEST_F(ChequeCommand, ThatIsNotAsItShouldBeDoesNotLeaveWithoutAWord) {
  WriteFile(Home() / "Cheque/Misspelt.rtf", test::RtfDocument("Pay <<Payee Nmae>>"));
  const struct {
    const char* parameters;
    const char* reason;
  } cases[] = {
      {R"(FORMAT="Trust" PAYEE="Close } brace")", "Payee Name: the value \"Close } brace\" does"},
      {R"(FORMAT="Trust" PAYEE="J" DOLLARS="Do{lars")", "the value \"Five Do{lars and 00 Cents\""},
      {R"(FORMAT="Misspelt" PAYEE="Jane")",
       "Jane: Payee Nmae: the code \"<<Payee Nmae>>\" was not"},
  };
  for (const auto& c : cases) {
    const std::string line = std::string(R"(PRINTCHEQUE="" VALUE="5" )") + c.parameters;
    // Where nobody can answer the question, nothing leaves.
    const test::ProcessResult held = Cheque(line);
    EXPECT_EQ(held.status, 1);
    EXPECT_THAT(held.errors, AllOf(HasSubstr("This cheque is not as"), HasSubstr(c.reason),
                                   HasSubstr("nothing is printed or sent. [No]")));
    EXPECT_THAT(Printed(), IsEmpty());
  }
}

TEST_F(ChequeCommand, NamesTheTemplateThatCannotBeLoaded) {
  for (const auto& [format, message] :
       {std::pair("None", "53 - File not found"), {"../Templates/Receipt", "75 - "}}) {
    const test::ProcessResult result =
        Cheque(std::string(R"(PRINTCHEQUE="" VALUE="5" PAYEE="Jane" FORMAT=")") + format + "\"");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr(message), HasSubstr(format), HasSubstr("frmLetter - LoadLetter")));
    EXPECT_THAT(Printed(), IsEmpty());
  }
}

}  // namespace
}  // namespace tenora
