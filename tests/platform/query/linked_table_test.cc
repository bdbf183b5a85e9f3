// Tables that are linked from other files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <map>

#include "platform/access/file_builder.h"
#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// Adds a table of texts, each with its number.
void AddTexts(test::FileBuilder& builder, const std::string& name,
              const std::vector<std::string>& texts) {
  std::vector<std::string> rows;
  for (const std::string& text : texts) {
    rows.push_back(builder.Row({true, true},
                               test::Stored32(static_cast<std::uint32_t>(rows.size() + 1)),
                               {builder.Text(text)}));
  }
  builder.AddTable(name, {.columns = {{"number", 4, 0, true, 0, 4}, {"text", 10, 1, false, 0, 60}}},
                   rows);
}

class LinkedTables : public ::testing::Test {
 protected:
  LinkedTables() {
    test::FileBuilder main(1), deep(0);
    AddTexts(main, "own", {"here"});
    main.AddLink("beside", "rents", "back.mdb");
    main.AddLink("absolute", "rents", (folder_ / "back.mdb").string(), "MS Access;PWD=secret");
    main.AddLink("drive", "RENTS", "C:\\Data\\BACK.MDB");
    main.AddLink("computer", "rents", "\\\\server\\share\\Back.mdb");
    main.AddLink("below", "things", "SUB\\deep.mdb");
    main.AddLink("chain", "onward", "back.mdb");
    main.AddLink("loop", "home", "back.mdb");
    main.AddLink("self", "own", "main.mdb");
    main.AddLink("gone", "rents", "D:\\gone.mdb");
    main.AddLink("nameless", "", "back.mdb");
    main.AddLink("zero", "rents", std::string("no\0such.mdb", 11));
    main.AddLink("lost", "nosuch", "back.mdb");
    main.AddLink("text", "list#txt", "C:\\texts", "Text;FMT=Delimited;PWD=secret");
    main.AddLink("server", "dbo.rents", "", "ODBC;DSN=x;PWD=secret", 4);
    main.AddLink("parts", "dbo.rents", "", "DSN=x;PWD=secret", 4);
    main.AddLink("notes", "rents", "notes.txt");
    main.AddLink("folder", "rents", "sub");
    main.AddLink("pipe", "rents", "pipe.mdb");
    main.AddQueries(
        {{"Late", {{3, "", "", "", 1}, {5, "beside", "", ""}, {8, "", "", "number > 1"}}}});
    Write("main.mdb", main);
    SetTime("main.mdb");
    WriteBack({"Ann", "Ben"});
    std::filesystem::create_directory(folder_ / "sub");
    AddTexts(deep, "things", {"deep"});
    Write("sub/Deep.mdb", deep);
    std::ofstream(folder_ / "notes.txt") << "no database\n";
    ::mkfifo((folder_ / "pipe.mdb").c_str(), 0600);
  }

  void Write(const char* name, test::FileBuilder& builder) {
    std::ofstream(folder_ / name, std::ios::binary) << builder.Finish();
  }

  void WriteBack(const std::vector<std::string>& rents) {
    test::FileBuilder back(3);
    AddTexts(back, "rents", rents);
    back.AddLink("onward", "things", "sub/Deep.mdb");
    back.AddLink("home", "own", "main.mdb");
    Write("back.mdb", back);
    SetTime("back.mdb");
  }

  // Each state of a file is old enough to be known by its time.
  void SetTime(const char* name) {
    std::filesystem::last_write_time(folder_ / name, std::filesystem::file_time_type::clock::now() -
                                                         std::chrono::hours(1) +
                                                         std::chrono::seconds(++states_));
  }

  std::unique_ptr<EngineDatabase> Open() { return workspace_->OpenDatabase(folder_ / "main.mdb"); }

  int states_ = 0;
  test::ScratchFolder folder_;
  std::unique_ptr<Workspace> workspace_ = Workspace::Create();
};

TEST_F(LinkedTables, AreReadFromTheirFiles) {
  const struct {
    const char* sql;
    std::vector<std::string> rows;
  } kCases[] = {
      {"beside", {"1|Ann", "2|Ben"}},
      {"absolute", {"1|Ann", "2|Ben"}},
      {"select drive.text from drive where drive.number = 2", {"Ben"}},
      {"select text from computer", {"Ann", "Ben"}},
      {"select text from below", {"deep"}},
      {"select text from chain", {"deep"}},
      {"select o.text, b.text, d.text from (own as o inner join beside as b on b.number = "
       "o.number) "
       "inner join drive as d on d.number = b.number",
       {"here|Ann|Ann"}},
      {"select count(*) from own where number in (select number from beside)", {"1"}},
      {"Late", {"2|Ben"}},
  };
  const auto database = Open();
  for (const auto& c : kCases) EXPECT_EQ(RowsOf(*database, c.sql), c.rows) << c.sql;
  database->BeginTrans();
  for (const auto& c : kCases) EXPECT_EQ(RowsOf(*database, c.sql), c.rows) << c.sql;
  database->Rollback();
}

TEST_F(LinkedTables, SayWhatIsWrongWithThem) {
  const struct {
    const char* table;
    int number;
    std::vector<const char*> named;
  } kCases[] = {
      {"gone", 3024, {"'D:\\gone.mdb'", "table 'gone' is linked", "beside"}},
      {"zero", 3024, {"'no\\0such.mdb'", "table 'zero' is linked"}},
      {"folder", 3024, {"'sub'", "table 'folder'"}},
      {"pipe", 3024, {"'pipe.mdb'", "table 'pipe'"}},
      {"notes", 3343, {"notes.txt", "table 'notes' is linked"}},
      {"lost", 3078, {"'nosuch'", "back.mdb", "table 'lost' is linked"}},
      {"nameless", 3078, {"table 'nameless' is linked"}},
      {"text", 3170, {"table 'text' is linked through Text"}},
      {"server", 3170, {"table 'server' is linked through ODBC"}},
      {"parts", 3170, {"through ODBC"}},
      {"loop", 3102, {"'loop'", "main.mdb"}},
      {"self", 3102, {"'self'", "main.mdb"}},
  };
  const auto database = Open();
  for (const bool within_transaction : {false, true}) {
    if (within_transaction) database->BeginTrans();
    for (const auto& c : kCases) {
      const auto error =
          test::RaisedBy([&] { RowsOf(*database, "select * from " + std::string(c.table)); });
      ASSERT_TRUE(error.has_value()) << c.table;
      EXPECT_EQ(error->number(), c.number) << error->what();
      for (const char* text : c.named) {
        EXPECT_THAT(ToLower(error->what()), HasSubstr(ToLower(text)));
      }
      EXPECT_THAT(error->what(), Not(HasSubstr("secret")));
    }
  }
}

TEST_F(LinkedTables, AreListedWithTheirPlace) {
  std::map<std::string, std::string> kinds;
  for (const TableSummary& table : Open()->Tables()) kinds[table.name] = table.kind;
  const std::string back = "'" + (folder_ / "back.mdb").string() + "'";
  EXPECT_EQ(kinds["own"], "");
  EXPECT_EQ(kinds["absolute"], "linked to table 'rents' of " + back);
  EXPECT_EQ(kinds["drive"], "linked to table 'RENTS' of 'C:\\Data\\BACK.MDB', found as " + back);
  EXPECT_EQ(kinds["gone"], "linked to table 'rents' of 'D:\\gone.mdb', which is not there");
  EXPECT_EQ(kinds["text"], "linked to table 'list#txt' of 'C:\\texts' (Text)");
  EXPECT_EQ(kinds["server"], "linked to table 'dbo.rents' of a server");
}

TEST_F(LinkedTables, AreReadAnewWhenTheirFileHasChanged) {
  EXPECT_THAT(RowsOf(*Open(), "select text from beside"), ElementsAre("Ann", "Ben"));
  WriteBack({"Cat"});
  EXPECT_THAT(RowsOf(*Open(), "select text from beside"), ElementsAre("Cat"));
  std::filesystem::rename(folder_ / "back.mdb", folder_ / "away.mdb");
  EXPECT_EQ(test::NumberOf([&] { RowsOf(*Open(), "beside"); }), 3024);
  std::filesystem::rename(folder_ / "away.mdb", folder_ / "back.mdb");
  EXPECT_THAT(RowsOf(*Open(), "select text from beside"), ElementsAre("Cat"));
}

TEST_F(LinkedTables, AreNotWritten) {
  const auto database = Open();
  const std::string before = ReadWholeFile(folder_ / "back.mdb");
  for (const char* sql :
       {"update beside set text = 'x'", "delete from beside where number = 1",
        "insert into beside (text) values ('x')", "update drive set text = 'x' where number = 1"}) {
    const auto error = test::RaisedBy([&] { database->Execute(sql); });
    ASSERT_TRUE(error.has_value()) << sql;
    EXPECT_EQ(error->number(), 3073) << sql;
    EXPECT_THAT(error->what(), HasSubstr("is linked to table")) << sql;
  }
  EXPECT_EQ(ReadWholeFile(folder_ / "back.mdb"), before);
  EXPECT_EQ(database->Execute("update own set text = 'x'"), 1);
  EXPECT_EQ(database->Execute("insert into own (number, text) select number, text from beside"), 2);
  EXPECT_THAT(RowsOf(*database, "select text from own"), ElementsAre("x", "Ann", "Ben"));
}

}  // namespace
}  // namespace tenora::query
