#include "agency.h"
#include "platform/runtime/version.h"

namespace tenora {
namespace {

using testing::HasSubstr;

class OwnCommands : public test::Agency {};

TEST_F(OwnCommands, QueryPrintsTabSeparatedTextWithAHeader) {
  const test::ProcessResult result =
      Run({"query", Database().string(),
           "select reference, name, bond from tenancy where reference = 'T00002'"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "reference\tname\tbond\nT00002\tÉlodie Evans-Pike\t2640\n");
}

TEST_F(OwnCommands, TablesListsTheTablesWithTheirRows) {
  const test::ProcessResult result = Run({"tables", Database().string()});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("tenancy\t42\n"));
}

TEST_F(OwnCommands, TellAFailureFromAUsageError) {
  const std::string database = Database().string();
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* message;
  } cases[] = {
      {{"query", database, "select * from nothing"}, 1, "3078 - "},
      {{"query", database, "select nothing from tenancy"}, 1, "3061 - "},
      {{"query", database, "select from where"}, 1, "3075 - "},
      {{"query", database, "delete from tenancy"}, 1, " - "},
      {{"query", database, "select 1/0"}, 1, "11 - Division by zero. Statement: select 1/0"},
      {{"query", "/no/such.mdb", "select 1"}, 1, "3024 - "},
      {{"tables", "/etc/passwd"}, 1, "3343 - "},
      {{"tables", "/"}, 1, "3343 - "},
      {{"query"}, 2, "DATABASE"},
      {{"query", database}, 2, "SQL"},
      {{"tables", database, "more"}, 2, "more"},
      {{"tables", "--bogus", database}, 2, "--bogus"},
      {{"letter.rtf", "/usr"}, 2, "/usr is a folder"},
  };
  for (const auto& c : cases) {
    const test::ProcessResult result = Run(c.arguments);
    EXPECT_EQ(result.status, c.status) << testing::PrintToString(c.arguments);
    EXPECT_THAT(result.errors, HasSubstr(c.message)) << testing::PrintToString(c.arguments);
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(OwnCommands, LintSaysWhatIsWrongWithTemplatesAndGoesOnAfterAMissingOne) {
  std::vector<std::string> all{"lint", "--all"};
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(test::SampleDatabase().parent_path())) {
    if (entry.path().extension() == ".rtf") all.push_back(entry.path());
  }
  const test::ProcessResult library = Run(all);
  EXPECT_EQ(library.status, 0) << library.output << library.errors;
  EXPECT_EQ(library.output, "");

  WriteTemplate("Odd", test::RtfDocument("Dear <<Name>>, <<TCustom:Pet>> <<TCustom:NoSuch>>"));
  WriteTemplate("Drawn", test::RtfDocument("{\\pict\\pngblip 89504e47}\\par\\par {\\mmath one}"));
  const std::string path = (Home() / "Templates/Odd.rtf").string();
  const std::string owner_template = path + ": line 1: \"Dear <<Name>>";
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string output, errors;
  } cases[] = {
      {{"lint", "Odd"}, 1, owner_template, ""},
      {{"lint", "Odd"}, 1, "<<TCustom:NoSuch>> names a field that no tenant has", ""},
      {{"lint", "--kind=owner", path}, 1, "<<TCustom:Pet>> is a code of tenant templates", ""},
      {{"lint", "Drawn"},
       1,
       "Drawn.rtf: line 1: \"a picture that cannot be read\": it will not",
       ""},
      {{"lint", "Drawn"}, 1, "Drawn.rtf: line 3: \"a formula\": it will not appear on paper", ""},
      {{"lint", "Receipt", "--kind=tenant"}, 0, "", ""},
      {{"lint", "Missing", "Odd"}, 1, owner_template, "Template \"Missing\" not found"},
      {{"lint", "/no/such.rtf", "Odd"}, 1, owner_template, "/no/such.rtf"},
      {{"lint", Database().string(), path}, 1, owner_template, "321 - Invalid file format: "},
      {{"lint", "../home/Templates/Odd"}, 1, "", "53 - "},
      {{"lint", "--database=/no/such.mdb", "Receipt"}, 1, "", "3024 - "},
      {{"lint"}, 2, "", "--all"},
      {{"lint", "--kind=letter", "Odd"}, 2, "", "letter"},
  };
  for (const auto& c : cases) {
    const test::ProcessResult result = Run(c.arguments);
    EXPECT_EQ(result.status, c.status) << testing::PrintToString(c.arguments);
    EXPECT_THAT(result.output, HasSubstr(c.output));
    EXPECT_THAT(result.errors, HasSubstr(c.errors));
    EXPECT_EQ(result.output.empty(), c.output.empty());
  }
}

TEST_F(OwnCommands, HelpTellsOfTheCommandWordsAndTheEnvironment) {
  for (const char* word : {"--help", "-h"}) {
    const test::ProcessResult result = Run({word});
    EXPECT_EQ(result.status, 0);
    for (const char* part : {"query", "tables", "PRINTRECEIPT", "PRINTCHEQUE", "TENORA_HOME",
                             "TENORA_SETTINGS", "TENORA_NOW", "TENORA_PDF", "TENORA_PRINTER"}) {
      EXPECT_THAT(result.output, HasSubstr(part));
    }
  }
  EXPECT_EQ(Run({"--version"}).output,
            "Tenora Mail Merge Facility " + std::string(kVersion) + "\n");
}

TEST_F(OwnCommands, ReportAFullStandardOutput) {
  const test::ProcessResult result =
      Run({"query", Database().string(), "select * from revenues"}, "", {});
  EXPECT_EQ(result.status, 0);
  const std::string shell = "\"$0\" query \"$1\" 'select * from revenues' > /dev/full";
  const test::ProcessResult full = test::RunProcess(
      {"sh", "-c", shell, (test::BinaryDir() / "tenora").string(), Database().string()});
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.errors, HasSubstr("standard output"));
}

TEST_F(OwnCommands, AChangesStatusSaysWhetherItWasMade) {
  constexpr const char* kChange = "\"$0\" query --write \"$1\" \"$2\" ";
  const struct {
    std::string shell;
    int status;
    const char* message;
    bool made;
  } cases[] = {
      {kChange, 0, "", true},
      {std::string(kChange) + "> /dev/full", 0, "Warning: 1 row changed", true},
      {std::string(kChange) + ">&-", 0, "Warning: 1 row changed", true},
      {std::string(kChange) + ">&- 2>&-", 0, "", true},
      // The pipe's reader has gone.
      {"mkfifo \"$1.pipe\"; exec 3<>\"$1.pipe\" 4>\"$1.pipe\" 3<&-; " + std::string(kChange) +
           ">&4",
       0, "Warning: 1 row changed", true},
      {"ulimit -f 1; " + std::string(kChange), 1, "3026 - Not enough space on disk", false},
  };
  int bond = 100;
  for (const auto& c : cases) {
    const std::string wanted = std::to_string(++bond);
    const test::ProcessResult result = test::RunProcess(
        {"sh", "-c", c.shell, (test::BinaryDir() / "tenora").string(), Database().string(),
         "update tenancy set bond = " + wanted + " where reference = 'T00002'"});
    EXPECT_EQ(result.status, c.status) << c.shell;
    EXPECT_THAT(result.errors, HasSubstr(c.message)) << c.shell;
    const std::string found =
        Run({"query", Database().string(), "select bond from tenancy where reference = 'T00002'"})
            .output;
    EXPECT_EQ(found == "bond\n" + wanted + "\n", c.made) << c.shell << found;
  }
}

}  // namespace
}  // namespace tenora
