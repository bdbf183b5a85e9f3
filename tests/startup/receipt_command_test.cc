#include <algorithm>

#include "agency.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kReceipt = R"(PRINTRECEIPT="T00001" FORMAT="Receipt")";

class ReceiptCommand : public test::Agency {
 protected:
  void Change(const std::string& sql) const {
    const test::ProcessResult result = Run({"query", "--write", Database().string(), sql});
    ASSERT_EQ(result.status, 0) << result.errors;
  }
  // One value out of the sample database, through the program's own query command.
  std::string Ask(const std::string& sql) const {
    const test::ProcessResult result = Run({"query", test::SampleDatabase().string(), sql});
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::vector<std::string> lines = Split(result.output, "\n");
    return lines.size() > 1 ? lines[1] : "";
  }
};

TEST_F(ReceiptCommand, PrintsTheLatestPaymentHoweverTheLineWasTyped) {
  const std::string number =
      Ask("select top 1 recordnumber from revenues where tenant_code = 'T00001' "
          "and [revenue group] in ('RENT','WATER','DAMAGE') order by date desc, recordnumber desc");
  ASSERT_NE(number, "");
  const std::vector<std::string> lines[] = {
      {kReceipt},
      {"PRINTRECEIPT=T00001", "FORMAT=Receipt"},
      {R"(printreceipt=" T00001 " format="receipt" DEFAULT="-1" TOEMAIL="0")"},
      {"PRINTRECEIPT=T00001 FORMAT=Receipt"},
  };
  for (const auto& line : lines) {
    fs::remove_all(Home() / "Printed");
    const test::ProcessResult result = Run(line);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(PrintedText(), HasSubstr("Receipt " + number + " of T00001 Noor Whaanga on"));
    ASSERT_EQ(Printed().size(), 1u);
    EXPECT_EQ(result.output, "Printed: " + Printed()[0].string() + "\n");
  }
}

TEST_F(ReceiptCommand, ReadsATemplatesNameThatHoldsAParametersName) {
  for (const char* name : {"Default receipt", "Reprint of Format", "ToEmail=", "Printreceipt"}) {
    WriteTemplate(name, "<<Tenant Name>>");
    fs::remove_all(Home() / "Printed");
    const test::ProcessResult result =
        Receipt(std::string("FORMAT=\"") + name + "\" PRINTRECEIPT=\"T00001\"");
    EXPECT_EQ(result.status, 0) << name << result.errors;
    EXPECT_EQ(PrintedText(), "Noor Whaanga ");
  }
}

TEST_F(ReceiptCommand, ReprintsByThePaymentAloneAndSavesNoCopy) {
  StoreSetting("Receipt", "SaveCopy", "1");
  const std::string tenant = Ask("select tenant_code from revenues where recordnumber = 3");
  const test::ProcessResult result = Receipt(R"(PRINTRECEIPT="" REPRINT="3" FORMAT="Receipt")");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(PrintedText(), HasSubstr("Receipt 3 of " + tenant));
  EXPECT_THAT(PrintedText(), HasSubstr("[]"));
  fs::remove_all(Home() / "Printed");
  std::vector<std::string> entries;
  for (const auto& entry : fs::directory_iterator(Home()))
    entries.push_back(entry.path().filename());
  EXPECT_THAT(entries, testing::UnorderedElementsAre("Templates", "property.mdb"));
}

TEST_F(ReceiptCommand, SavesCopiesUnderFreeNames) {
  StoreSetting("Receipt", "SaveCopy", "1");
  const std::string line = std::string(kReceipt) + R"( TOPRINTER="false")";
  const fs::path folder = Home() / "Noor Whaanga";
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Receipt(line).status, 0);
  const std::string first = ReadWholeFile(folder / "Receipt.rtf");
  EXPECT_THAT(first, HasSubstr("Noor Whaanga"));
  EXPECT_THAT(first, Not(HasSubstr("<<")));
  fs::remove(folder / "Receipt(1).rtf");
  WriteFile(folder / "Receipt(2).rtf", "kept");
  EXPECT_EQ(Receipt(line).status, 0);
  EXPECT_TRUE(fs::exists(folder / "Receipt(1).rtf"));
  EXPECT_EQ(ReadWholeFile(folder / "Receipt(2).rtf"), "kept");
  EXPECT_THAT(Printed(), IsEmpty());
}

TEST_F(ReceiptCommand, RefusesACommandThatIsNoCommand) {
  for (const char* line : {
           R"(PRINTRECEIPT="T00001")",
           R"(PRINTRECEIPT="T00001" FORMAT="")",
           R"(PRINTRECEIPT="T00001" FORMAT="Receipt)",
           R"(PRINTRECEIPT="" FORMAT="Receipt")",
           R"(PRINTRECEIPT="  " FORMAT="Receipt" REPRINT="0")",
           "PRINTRECEIPT",
           "xprintreceiptx",
           R"(/NewFormsInstalled PRINTCHEQUE="" PRINTRECEIPT="")",
       }) {
    ExpectRefused(Receipt(line), "Invalid command string for ReceiptPrint");
  }
}

TEST_F(ReceiptCommand, RefusesValuesThatCannotBeConverted) {
  for (const char* extra : {R"( TOPRINTER="maybe")", R"( TOPRINTER="")", R"( DEFAULT="true)",
                            R"( TOEMAIL="yes please")", R"( REPRINT="ten")", R"( REPRINT="")"}) {
    const test::ProcessResult result = Receipt(std::string(kReceipt) + extra);
    ExpectRefused(result, "13 - Type mismatch: " + std::string(extra + 1).substr(0, 6));
    EXPECT_THAT(result.errors, HasSubstr("General - ReceiptPrint"));
  }
  ExpectRefused(Receipt(std::string(kReceipt) + R"( REPRINT="99999999999")"), "6 - Overflow");
}

TEST_F(ReceiptCommand, RefusesAnUnknownTenancy) {
  for (const char* code : {"T99999", "O'Brien", "' or '1'='1", "<<T>>", "Ā"}) {
    const test::ProcessResult result =
        Receipt(std::string("PRINTRECEIPT=\"") + code + "\" FORMAT=\"Receipt\"");
    ExpectRefused(result, code);
    EXPECT_THAT(result.errors, HasSubstr("General - ReceiptPrint"));
  }
}

TEST_F(ReceiptCommand, RefusesToReprintAPaymentThatIsNotThere) {
  for (const auto& [tenant, number] :
       {std::pair("", "99999999"), {"T00001", "99999999"}, {"T00001", "-3"}}) {
    const test::ProcessResult result = Receipt(std::string("PRINTRECEIPT=\"") + tenant +
                                               "\" FORMAT=\"Receipt\" REPRINT=\"" + number + "\"");
    ExpectRefused(result, std::string("There is no payment with the number ") + number + ".");
    EXPECT_THAT(result.errors, HasSubstr("General - ReceiptPrint"));
  }
}

TEST_F(ReceiptCommand, RefusesAReceiptOfATenancyThatNeverPaid) {
  StoreSetting("Receipt", "SaveCopy", "1");
  const std::string in_building = "T00007";
  Change("delete from revenues where tenant_code = '" + in_building + "'");
  const std::string before = ReadWholeFile(Database());
  for (const char* code : {"Last Payment Number", "Last Payment Amount", "Last Payment Date",
                           "Last Payment Tender", "Last Payment Tax", "Last Payment Excl."}) {
    // No number of the building's series is used up either.
    WriteTemplate("Paid", std::string("<<BuildingReceiptNumber>> <<") + code + ">>");
    const test::ProcessResult result =
        Receipt("PRINTRECEIPT=\"" + in_building + "\" FORMAT=\"Paid\" TOPRINTER=\"False\"");
    ExpectRefused(result, "The tenancy '" + in_building + "' (Mei Huang) has no payment");
    EXPECT_THAT(result.errors, HasSubstr("General - ReceiptPrint"));
  }
  EXPECT_EQ(ReadWholeFile(Database()), before);
  // The account can be shown without one.
  WriteTemplate("Account", "<<Tenant Name>> owes <<Balance Owing>>");
  EXPECT_EQ(Receipt("PRINTRECEIPT=\"" + in_building + "\" FORMAT=\"Account\"").status, 0);
  EXPECT_THAT(PrintedText(), HasSubstr("Mei Huang owes"));
}

TEST_F(ReceiptCommand, SaysThatItIsMadeFromTheLocalCopy) {
  const std::string said = "This receipt is made from the copy of the database on this computer";
  const fs::path server = Home().parent_path() / "server/property.mdb";
  StoreSetting("Settings", "Networkable", "1");
  StoreSetting("Settings", "DatabaseLocation", server.string());
  const test::ProcessResult local = Receipt(kReceipt);
  EXPECT_EQ(local.status, 0) << local.errors;
  EXPECT_THAT(local.errors, HasSubstr(said));
  EXPECT_THAT(local.errors, HasSubstr(server.string() + " could not be reached"));
  EXPECT_THAT(PrintedText(), HasSubstr("Noor Whaanga"));

  fs::create_directory(server.parent_path());
  fs::copy_file(Database(), server);
  fs::copy(Home() / "Templates", server.parent_path() / "Templates", fs::copy_options::recursive);
  const test::ProcessResult reached = Receipt(kReceipt);
  EXPECT_EQ(reached.status, 0);
  EXPECT_EQ(reached.errors, "");
}

TEST_F(ReceiptCommand, RefusesATemplateThatCannotBeLoaded) {
  WriteFile(Home() / "Templates/Plain.rtf", "no rich text");
  WriteFile(Home() / "Templates/Empty.rtf", "");
  WriteFile(Home() / "secret.rtf", test::RtfDocument("secret"));
  fs::create_directory(Home() / "Templates/Folder.rtf");
  const struct {
    const char* format;
    const char* message;
  } cases[] = {
      {"None", "53 - File not found"},
      {"Plain", "321 - "},
      {"Empty", "321 - "},
      {"Folder", "75 - "},
      {"../../x", "75 - "},
      {"..\\secret", "75 - "},
      {"/etc/passwd", "75 - "},
  };
  fs::rename(Home() / "secret.rtf", Home() / "Templates/../Templates.rtf");
  for (const auto& c : cases) {
    const test::ProcessResult result =
        Receipt(std::string("PRINTRECEIPT=\"T00001\" FORMAT=\"") + c.format + "\"");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(c.message)) << c.format;
    EXPECT_THAT(result.errors, HasSubstr(c.format));
    EXPECT_THAT(result.errors, HasSubstr("frmLetter - LoadLetter"));
    EXPECT_THAT(Printed(), IsEmpty());
  }
}

TEST_F(ReceiptCommand, RefusesADatabaseItCannotRead) {
  const std::string whole = ReadWholeFile(Database());
  fs::remove(Database());
  ExpectRefused(Receipt(kReceipt), "property.mdb");
  for (const std::string& content :
       {std::string(), std::string("no database"), std::string(8192, 'x'), whole.substr(0, 100),
        whole.substr(0, 4096), whole.substr(0, whole.size() / 2 / 4096 * 4096)}) {
    WriteFile(Database(), content);
    ExpectRefused(Receipt(kReceipt), "property.mdb");
  }
  fs::remove(Database());
  fs::create_directory(Database());
  ExpectRefused(Receipt(kReceipt), "property.mdb");
}

TEST_F(ReceiptCommand, RefusesALetterWhoseTableOrColumnIsMissing) {
  // Renamed in the catalogue and the definition, where names are two bytes a letter.
  const auto rename = [&](const std::string& name, const std::string& other) {
    std::string bytes = ReadWholeFile(test::SampleDatabase());
    const auto wide = [](const std::string& text) {
      std::string result;
      for (const char c : text) result.append(1, c).append(1, '\0');
      return result;
    };
    bytes = ReplaceAll(ReplaceAll(bytes, wide(name), wide(other)), name, other);
    WriteFile(Database(), bytes);
  };
  for (const char* name : {"revenues", "recordnumber", "tenancy", "water_meter"}) {
    std::string other = name;
    other[0] = 'x';
    rename(name, other);
    const test::ProcessResult result = Receipt(kReceipt);
    EXPECT_EQ(result.status, 1) << name;
    EXPECT_THAT(result.errors, HasSubstr(name));
    EXPECT_THAT(Printed(), IsEmpty());
  }
}

TEST_F(ReceiptCommand, PrintsNothingWhereABuildingsNumberCannotBeIssued) {
  WriteTemplate("Numbered", "No. <<BuildingReceiptNumber>> for <<Tenant Name>>");
  const std::string in_building =
      Ask("select top 1 tenancy.reference from tenancy inner join property on "
          "tenancy.[property code] = property.code where property.parent_property <> ''");
  ASSERT_NE(in_building, "");
  // A folder in the journal's place: the database cannot be changed safely.
  fs::create_directory(Database().string() + ".journal");
  const test::ProcessResult result =
      Receipt("PRINTRECEIPT=\"" + in_building + "\" FORMAT=\"Numbered\"");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("property.mdb"));
  EXPECT_THAT(Printed(), IsEmpty());
}

TEST_F(ReceiptCommand, WithoutADisplayTheWindowsSaySo) {
  const std::vector<std::string> no_display{"QT_QPA_PLATFORM=", "DISPLAY=", "WAYLAND_DISPLAY="};
  ExpectRefused(Run({}, "", no_display), "There is no display");
  ExpectRefused(Run({"/NewFormsInstalled"}, "", no_display), "There is no display");
}

TEST_F(ReceiptCommand, HoldsALetterThatIsNotAsItShouldBeAndSaysWhy) {
  StoreSetting("Receipt", "SaveCopy", "1");
  const struct {
    const char* text;
    const char* answers;
    const char* reason;
  } cases[] = {
      {"By <<FutureDate:soon:Days>>", "", "Noor Whaanga (T00001): FutureDate:soon:Days: "},
      {"Dear <<Tenant Nmae>>", "", "Noor Whaanga (T00001): Tenant Nmae: "},
      {"<<?A?>> <<?Who signs?>>", "Ann\n", "Noor Whaanga (T00001): Who signs: "},
      {"<<?Which house?>>", "5\\99 High St\n", "\"5\\99 High St\" does not stand in the letter"},
      {"<<?Which house?>>", "Close } brace\n",
       "the answer \"Close } brace\" does not stand in the letter as it was given; answer without"},
  };
  for (const auto& c : cases) {
    WriteTemplate("Held", c.text);
    const test::ProcessResult result =
        Run({R"(PRINTRECEIPT="T00001" FORMAT="Held" TOEMAIL="True")"}, c.answers);
    ExpectRefused(result, c.reason);
    EXPECT_THAT(result.errors, HasSubstr("Otherwise nothing is printed or sent. [No]")) << c.text;
  }
  Change("update tenancy set name = 'Close } brace' where reference = 'T00001'");
  ExpectRefused(Receipt(kReceipt), "Tenant Name: the value \"Close } brace\" does not stand");
}

TEST_F(ReceiptCommand, IsNotStoppedByAWarning) {
  Change("delete from insp_schedule");
  WriteTemplate("Dated", "Come by on <<Next Inspection>>");
  for (const auto& [extra, printed] : {std::pair("", 1U), {R"( TOPRINTER="False")", 0U}}) {
    fs::remove_all(Home() / "Printed");
    const test::ProcessResult result =
        Receipt(std::string(R"(PRINTRECEIPT="T00001" FORMAT="Dated")") + extra);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_THAT(result.errors, testing::StartsWith("Warning: Noor Whaanga (T00001): "
                                                   "Next Inspection: there is no such date"));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1);
    EXPECT_EQ(Printed().size(), printed);
  }
}

TEST_F(ReceiptCommand, AsksPromptsOnTheTerminal) {
  WriteTemplate("Prompted", "For <<?What for?>>, <<?What for?>>. <<?Signed by?>>");
  const test::ProcessResult result =
      Run({R"(PRINTRECEIPT="T00001" FORMAT="Prompted")"}, "Ngā hē\nOffice\n");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.errors, HasSubstr("Tenant : Noor Whaanga"));
  EXPECT_THAT(PrintedText(), HasSubstr("For Ngā hē, Ngā hē. Office"));
}

TEST_F(ReceiptCommand, PrintsNothingWhenThePrinterIsNotThereOrNotChosen) {
  const test::ProcessResult missing = Run({kReceipt}, "", {"TENORA_PRINTER=No such printer"});
  ExpectRefused(missing, "482 - ");
  EXPECT_THAT(missing.errors, HasSubstr("No such printer"));
  const test::ProcessResult cancelled = Receipt(std::string(kReceipt) + R"( DEFAULT="false")");
  EXPECT_EQ(cancelled.status, 1);
  EXPECT_THAT(Printed(), IsEmpty());
}

TEST_F(ReceiptCommand, SaysWhichFileCouldNotBeWritten) {
  StoreSetting("Receipt", "SaveCopy", "1");
  WriteFile(Home() / "Noor Whaanga", "a file where the recipient's folder should be");
  const test::ProcessResult result = Receipt(std::string(kReceipt) + R"( TOPRINTER="false")");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr((Home() / "Noor Whaanga").string()));

  WriteFile(Home() / "blocked", "a file where a folder should be");
  const test::ProcessResult unprinted =
      Run({kReceipt}, "", {"TENORA_PDF=" + (Home() / "blocked/Receipt.pdf").string()});
  EXPECT_EQ(unprinted.status, 1);
  EXPECT_THAT(unprinted.errors, HasSubstr("blocked"));
  EXPECT_EQ(unprinted.output, "");
}

}  // namespace
}  // namespace tenora
