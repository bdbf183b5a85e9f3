#include "data/database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "data/fake_engine.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DatabaseTest : public testing::Test {
 protected:
  void StoreLocation(const std::string& networkable, const std::string& location) {
    settings_.SaveSettingText("Settings", "Networkable", networkable);
    settings_.SaveSettingText("Settings", "DatabaseLocation", location);
  }
  std::filesystem::path MakeServer(const char* file = "property.mdb") {
    std::filesystem::create_directories(server_);
    WriteWholeFile(server_ / file, "x");
    return server_ / file;
  }
  std::string Own() const { return (platform_.ProgramFolder() / "property.mdb").string(); }
  std::string Log() const { return ReadWholeFile(platform_.ProgramFolder() / "errNov26.log"); }
  std::string Described(const std::string& name, const std::string& error) const {
    return name + "\r\n\r\nGeneral Errors...\r\n\r\n" + error + "\r\n\r\n";
  }

  test::FakeScript script_;
  test::FakePlatform platform_{std::make_unique<test::FakeWorkspace>(script_)};
  std::filesystem::path server_ = platform_.folder / "server";
  Settings settings_{platform_.Parts()};
  Database database_{platform_.Parts(), settings_};
};

constexpr const char* kCannotSave =
    "We are unable to save files onto the server computer.  Files will be saved locally.";

TEST_F(DatabaseTest, OpensTheProgramFoldersFileUnlessNetworked) {
  StoreLocation("0", MakeServer());
  database_.OpenDatabase();
  EXPECT_THAT(script_.opened, ElementsAre(Own()));
  EXPECT_TRUE(database_.IsOpen());
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());
  database_.CloseDatabase();
  EXPECT_FALSE(database_.IsOpen());
}

TEST_F(DatabaseTest, OpensTheServersFileAlsoWhenStoredWithBackslashes) {
  StoreLocation("1", ReplaceAll(MakeServer(), "/", "\\"));
  database_.OpenDatabase();
  EXPECT_THAT(script_.opened, ElementsAre((server_ / "property.mdb").string()));
  EXPECT_EQ(database_.DataFolder(), server_);
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(server_ / "test.txt"));
}

TEST_F(DatabaseTest, OpensABranchOnAServerAndNothingInItsPlace) {
  StoreLocation("1", " service=rents branch='Old Mill' ");
  database_.OpenDatabase();
  EXPECT_THAT(script_.opened, ElementsAre("service=rents branch='Old Mill'"));
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());
  EXPECT_EQ(database_.ServerAway(), std::nullopt);

  database_.TakeBranch("service=rents branch=North", platform_.ProgramFolder() / "N");
  database_.OpenDatabase();
  EXPECT_EQ(script_.opened.back(), "service=rents branch=North");
  EXPECT_EQ(database_.LastOpened(), "service=rents branch=North");
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder() / "N");
  EXPECT_EQ(database_.TemplateFolder(), platform_.ProgramFolder());
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(DatabaseTest, RevertsToTheProgramFolderWithOneMessageWhenTheServersFileIsMissing) {
  const std::string missing = (server_ / "property.mdb").string();
  StoreLocation("1", missing);
  database_.OpenDatabase();
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());
  database_.CloseDatabase();
  database_.OpenDatabase();  // as the merge of each letter does
  EXPECT_THAT(script_.opened, ElementsAre(Own(), Own()));
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre("Unable to access \r\n" + missing +
                                                     "\r\nReverting back to \r\n" + Own()));
}

TEST_F(DatabaseTest, TellsAgainWhenTheServerIsLostAgain) {
  const std::string server = MakeServer(), away = server + ".away";
  StoreLocation("1", server);
  for (int i = 0; i < 2; ++i) {
    std::filesystem::rename(server, away);
    database_.OpenDatabase();
    database_.OpenDatabase();
    std::filesystem::rename(away, server);
    database_.OpenDatabase();
  }
  EXPECT_EQ(platform_.dialogs.shown().size(), 2U);
  EXPECT_EQ(database_.UnreachableServer(), server);
  EXPECT_EQ(database_.LastOpened(), server);
}

TEST_F(DatabaseTest, NeverGoesOnWithAnotherFileThanTheOneThatIsAsked) {
  const std::string server = MakeServer();
  StoreLocation("1", server);
  {
    const Database::OneFile one_file(database_, server);
    std::filesystem::remove(server);
    for (int i = 0; i < 2; ++i) {
      database_.OpenDatabase();
      EXPECT_FALSE(database_.IsOpen());
    }
    EXPECT_THAT(script_.opened, IsEmpty());
    EXPECT_EQ(database_.ErrorsReported(), 2U);
    EXPECT_THAT(platform_.dialogs.Texts(), testing::Each(testing::HasSubstr("cannot be reached")));
  }
  database_.OpenDatabase();
  EXPECT_THAT(script_.opened, ElementsAre(Own()));
}

TEST_F(DatabaseTest, ReportsANonNumericNetworkableUnderStartAdo) {
  StoreLocation("yes", MakeServer());
  database_.OpenDatabase();
  EXPECT_FALSE(database_.IsOpen());
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre(Described(
                  "", "13 - Type mismatch: the setting \"Networkable\" of section \"Settings\"")));
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());  // and no second message
  EXPECT_EQ(platform_.dialogs.shown().size(), 1u);
}

TEST_F(DatabaseTest, ReportsWhatTheEngineRaisesWhileOpening) {
  script_.open_error = RuntimeError(3024, "Could not find file 'x'.", "DAO.Workspace");
  database_.OpenDatabase();
  EXPECT_FALSE(database_.IsOpen());
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre(Described("",
                                    "3024 - Could not find file 'x'.  Put the rental package's "
                                    "property.mdb there, or start Tenora with TENORA_HOME set "
                                    "to the folder that holds it.")));
  EXPECT_EQ(platform_.dialogs.shown()[0].title, "Tenora Mail Merge Facility");
}

TEST_F(DatabaseTest, DecidesTheDataFolderOnce) {
  StoreLocation("1", MakeServer());
  EXPECT_EQ(database_.DataFolder(), server_);
  StoreLocation("0", "");
  EXPECT_EQ(database_.DataFolder(), server_);
}

TEST_F(DatabaseTest, TakesEveryOccurrenceOfTheFileNameOutOfTheFolder) {
  server_ = platform_.folder / "a/Property.mdb/b";
  MakeServer("PROPERTY.MDB");
  std::filesystem::create_directories(platform_.folder / "a/b");
  StoreLocation("2", server_ / "PROPERTY.MDB");
  EXPECT_EQ(database_.DataFolder(), platform_.folder / "a/b");
}

TEST_F(DatabaseTest, FindsTheServersFileUnderAnyNameWithoutRegardToCase) {
  const struct {
    const char *file, *stored;  // in the server's folder
    bool found;
  } cases[] = {
      {"MyOffice.accdb", "MyOffice.accdb", true},
      {"MyOffice.accdb", "MYOFFICE.ACCDB", true},
      {"PROPERTY.MDB", "property.mdb", true},
      {"Élodie & Söhne.mdb", "éLODIE & SÖHNE.MDB", true},
      {"E\u0301lodie.mdb", "\u00e9LODIE.mdb", true},  // as macOS writes it
      {"Дом.mdb", "ДОМ.mdb", true},
      {"Elodie.mdb", "Élodie.mdb", false},
  };
  for (const auto& c : cases) {
    std::filesystem::remove_all(server_);
    script_.opened.clear();
    const std::string file = MakeServer(c.file);
    Database database(platform_.Parts(), settings_);
    StoreLocation("1", ReplaceAll((platform_.folder / "SERVER" / c.stored).string(), "/", "\\"));
    database.OpenDatabase();
    EXPECT_THAT(script_.opened, ElementsAre(c.found ? file : Own())) << c.stored;
    EXPECT_EQ(database.Location(), c.found ? file : Own()) << c.stored;
    EXPECT_EQ(database.DataFolder(), c.found ? server_ : platform_.ProgramFolder()) << c.stored;
  }
}

TEST_F(DatabaseTest, SavesLocallyWhenTheServersFolderTakesNoFiles) {
  // What is left of the path when each file name is taken out is no folder.
  server_ = platform_.folder / "a/property.mdb/b";
  StoreLocation("1", MakeServer());
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());
  EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre(kCannotSave));

  Database in_command_mode(platform_.Parts(), settings_);
  in_command_mode.SetCommandMode();
  EXPECT_EQ(in_command_mode.DataFolder(), platform_.ProgramFolder());
  EXPECT_EQ(platform_.dialogs.shown().size(), 1u);
}

// The superuser may write everywhere, so such a test runs as somebody else.
class AsNobody {
 public:
  AsNobody() { EXPECT_TRUE(::geteuid() != 0 || ::seteuid(65534) == 0); }
  ~AsNobody() { EXPECT_TRUE(::getuid() != 0 || ::seteuid(0) == 0); }
};

TEST_F(DatabaseTest, OpensFromAReadOnlyFolderButSavesLocally) {
  using std::filesystem::perms;
  StoreLocation("1", MakeServer());
  std::filesystem::permissions(server_, perms(0555));
  std::filesystem::permissions(platform_.folder.path(), perms(0755));
  {
    const AsNobody nobody;
    database_.OpenDatabase();
    EXPECT_THAT(script_.opened, ElementsAre((server_ / "property.mdb").string()));
    EXPECT_EQ(database_.DataFolder(), platform_.ProgramFolder());
  }
  EXPECT_THAT(platform_.dialogs.Texts(), ElementsAre(kCannotSave));
  std::filesystem::permissions(server_, perms::owner_all);
}

TEST_F(DatabaseTest, KeepsAUsersTestFileWhenItTriesTheFolder) {
  StoreLocation("1", MakeServer());
  WriteWholeFile(server_ / "test.txt", "somebody's notes");
  EXPECT_EQ(database_.DataFolder(), server_);
  EXPECT_EQ(ReadWholeFile(server_ / "test.txt"), "somebody's notes");
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(server_)) files += entry.exists();
  EXPECT_EQ(files, 2);
}

TEST_F(DatabaseTest, ReadsRowsThroughRepairedStatements) {
  script_.results["select * from tenancy where name = 'O''Brien' and closed_yn=0"] = {
      .fields = {"code"}, .rows = {{std::string("T1")}, {std::string("T2")}}};
  database_.OpenDatabase();
  RecordsetPtr set;
  database_.CreateSet(set, "select * from tenancy where name = 'O'Brien' and closed_yn=false",
                      query::kForwardOnly, query::kReadOnly);
  EXPECT_EQ(script_.last_type, 8);
  EXPECT_EQ(script_.last_options, 4);
  std::string codes;
  EXPECT_FALSE(database_.DataIsEmpty(set));
  for (; !database_.DataEOF(set); database_.MoveNext(set)) codes += TextOf(set->Field("code"));
  EXPECT_EQ(codes, "T1T2");
  EXPECT_FALSE(database_.DataIsEmpty(set));
  database_.DataClose(set);
  EXPECT_FALSE(set);
  EXPECT_EQ(script_.closed_sets, 1);
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(DatabaseTest, TakesAnEmptyHandleAsAnEmptySet) {
  RecordsetPtr none;
  EXPECT_TRUE(database_.DataEOF(none));
  EXPECT_TRUE(database_.DataIsEmpty(none));
  database_.MoveNext(none);
  database_.DataClose(none);
  EXPECT_THAT(platform_.dialogs.Texts(), IsEmpty());
}

TEST_F(DatabaseTest, ReportsEachFailureOnceAndLeavesTheCallerAnEmptyResult) {
  const RuntimeError broken(3167, "Record is deleted.", "DAO.Recordset");
  script_.results["broken"] = {.fields = {"a"},
                               .rows = {{Null{}}},
                               .move_error = broken,
                               .close_error = broken,
                               .end_error = broken};
  RecordsetPtr set;
  database_.CreateSet(set, "broken", query::kForwardOnly, query::kReadOnly);
  EXPECT_FALSE(set);
  database_.OpenDatabase();
  database_.CreateSet(set, "missing", query::kForwardOnly, query::kReadOnly);
  EXPECT_FALSE(set);
  database_.CreateSet(set, "broken", query::kForwardOnly, query::kReadOnly);
  ASSERT_TRUE(set);
  EXPECT_TRUE(database_.DataEOF(set));
  EXPECT_TRUE(database_.DataIsEmpty(set));
  database_.MoveNext(set);
  database_.DataClose(set);
  EXPECT_FALSE(set);
  const std::string deleted = Described(Own(), "3167 - Record is deleted.");
  EXPECT_THAT(
      platform_.dialogs.Texts(),
      ElementsAre(Described("", "91 - Object variable or With block variable not set"),
                  Described(Own(), "3078 - no such table"), deleted, deleted, deleted, deleted));
}

TEST_F(DatabaseTest, EndsALoopWhoseSetCannotMoveOn) {
  script_.results["torn"] = {.fields = {"a"},
                             .rows = {{Null{}}, {Null{}}},
                             .move_error = RuntimeError(3343, "Torn page.", "DAO.Recordset")};
  database_.OpenDatabase();
  for (int round = 1; round <= 2; ++round) {
    RecordsetPtr set;
    database_.CreateSet(set, "torn", query::kForwardOnly, query::kReadOnly);
    int rows = 0;
    for (; rows < 10 && !database_.DataEOF(set); database_.MoveNext(set)) ++rows;
    EXPECT_EQ(rows, 1);
    EXPECT_EQ(platform_.dialogs.shown().size(), round);
  }
}

TEST_F(DatabaseTest, LooksUpTheFirstRowsValueOrTheDefault) {
  const struct {
    test::FakeResult result;
    std::string text;
  } cases[] = {
      {{.fields = {"result"}, .rows = {{std::string("T1")}, {std::string("T2")}}}, "T1"},
      {{.fields = {"result"}, .rows = {{12.5}}}, "12.5"},
      {{.fields = {"result"}, .rows = {{std::string()}}}, ""},
      {{.fields = {"result"}, .rows = {{Null{}}}}, "none"},
      {{.fields = {"result"}}, "none"},
      {{.open_error = RuntimeError(3061, "Too few parameters.", "DAO.Database")}, "none"},
  };
  database_.OpenDatabase();
  const std::string sql = "select tenant_code as result from revenues where recordnumber=7";
  for (const auto& c : cases) {
    script_.results[sql] = c.result;
    EXPECT_EQ(database_.LookupText("tenant_code", "revenues", "where recordnumber=7", "none"),
              c.text);
  }
  EXPECT_EQ(platform_.dialogs.shown().size(), 1u);

  const Date day = Date::FromCalendar(2026, 11, 15), fallback = Date::FromCalendar(2000, 1, 1);
  const auto look_up = [&](Value value) {
    script_.results[sql] = {.fields = {"result"}, .rows = {{value}}};
    return database_.LookupDate("tenant_code", "revenues", "where recordnumber=7", fallback);
  };
  EXPECT_EQ(look_up(day), day);
  EXPECT_EQ(look_up(std::string("15/11/2026")), day);
  EXPECT_EQ(look_up(Null{}), fallback);
  EXPECT_THROW(look_up(std::string("soon")), RuntimeError);
}

TEST_F(DatabaseTest, AppendsEveryReportToTheMonthsLog) {
  database_.OpenDatabase();
  database_.DataErrorReport("Execute SQL", RuntimeError(3075, "Syntax error", "DAO.Database"));
  // This one source is not described: box and line stay empty.
  database_.DataErrorReport("Execute SQL",
                            RuntimeError(3075, "x", "Microsoft JET Database Engine"));
  database_.DataErrorReport("Execute SQL", RuntimeError(0, "", "DAO.Database"));
  EXPECT_THAT(platform_.dialogs.Texts(),
              ElementsAre(Described(Own(), "3075 - Syntax error"), "", ""));
  EXPECT_EQ(Log(), "21/11/26 09:30:00 " + Described(Own(), "3075 - Syntax error") +
                       "\r\n21/11/26 09:30:00 \r\n21/11/26 09:30:00 \r\n");
}

TEST_F(DatabaseTest, ReportsOnEvenWhenTheLogCannotBeWritten) {
  std::filesystem::create_directory(platform_.ProgramFolder() / "errNov26.log");
  database_.DataErrorReport("Execute SQL", RuntimeError(3075, "Syntax error", "DAO.Database"));
  EXPECT_EQ(platform_.dialogs.shown().size(), 1u);
}

TEST_F(DatabaseTest, WritesNoReportThroughALinkInThePlaceOfTheLog) {
  const auto log = platform_.ProgramFolder() / "errNov26.log";
  WriteWholeFile(platform_.ProgramFolder() / "victim", "precious");
  std::filesystem::create_symlink("victim", log);
  database_.DataErrorReport("Execute SQL", RuntimeError(3075, "Syntax error", "DAO.Database"));
  EXPECT_EQ(platform_.dialogs.shown().size(), 1u);
  EXPECT_EQ(ReadWholeFile(platform_.ProgramFolder() / "victim"), "precious");
}

// Over the real engine, which also has to understand the statements as they are repaired.
TEST(DatabaseOfTheSampleAgency, ReportsAStatementOfUnknownNamesAndGoesOn) {
  test::FakePlatform platform;
  platform.InstallSampleDatabase();
  Settings settings(platform.Parts());
  Database database(platform.Parts(), settings);
  database.OpenDatabase();
  EXPECT_EQ(database.LookupText("reference", "no_such_table", "", "none"), "none");
  EXPECT_EQ(database.LookupText("no_such_field", "tenancy", "", "none"), "none");
  EXPECT_EQ(database.LookupText("reference", "tenancy", "where where", "none"), "none");
  EXPECT_EQ(platform.dialogs.shown().size(), 3u);
  const std::string file = (platform.ProgramFolder() / "property.mdb").string();
  for (const std::string& text : platform.dialogs.Texts()) {
    EXPECT_THAT(text, testing::StartsWith(file + "\r\n\r\nGeneral Errors...\r\n\r\n3"));
  }
  EXPECT_EQ(database.LookupText("reference", "tenancy",
                                "where name = 'Tama O'Brien' and closed_yn = false", "none"),
            "T00005");
}

}  // namespace
}  // namespace tenora
