// Files that are corrupt, protected, truncated or not databases at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <random>

#include "platform/access/database_file.h"
#include "platform/access/file_builder.h"
#include "platform/access/read_everything.h"
#include "platform/access/showcase.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

using test::BuiltTable;
using test::FileBuilder;
using test::Pointer;
using test::Stored16;
using test::Stored32;
using testing::HasSubstr;

constexpr std::size_t kMostRows = 100000;

std::vector<std::byte> BytesOf(const std::string& file) {
  const auto* bytes = reinterpret_cast<const std::byte*>(file.data());
  return {bytes, bytes + file.size()};
}

// Opens and reads everything; returns the first RuntimeError, "" if there is none.
std::string ErrorOf(const std::string& file) {
  std::string first_error;
  const std::string error = test::ErrorOf([&] {
    first_error =
        test::ReadEverything(*DatabaseFile::OpenBytes(BytesOf(file), "bad.mdb"), kMostRows)
            .first_error;
  });
  return error + first_error;
}

std::string OpenErrorOf(const std::filesystem::path& path) {
  return test::ErrorOf([&] { DatabaseFile::Open(path); });
}

TEST(OpeningADatabase, NamesWhatIsWrongWithThePath) {
  const test::ScratchFolder scratch;
  const std::string folder = scratch.path().string();
  EXPECT_EQ(OpenErrorOf(scratch / "none.mdb"),
            "3024 - Could not find file '" + folder + "/none.mdb'.");
  EXPECT_EQ(OpenErrorOf(scratch.path()),
            "3343 - Unrecognized database format '" + folder + "'. It is a folder.");
  WriteWholeFile(scratch / "empty.mdb", "");
  EXPECT_THAT(OpenErrorOf(scratch / "empty.mdb"), HasSubstr("zero bytes"));
  EXPECT_THAT(OpenErrorOf(scratch / "empty.mdb" / "x.mdb"), HasSubstr("3024 - "));
  EXPECT_THAT(OpenErrorOf("/dev/null"), HasSubstr("3343 - "));
  WriteWholeFile(scratch / "secret.mdb", test::Showcase(1));
  std::filesystem::permissions(scratch / "secret.mdb", std::filesystem::perms::none);
  if (::geteuid() != 0) {
    EXPECT_THAT(OpenErrorOf(scratch / "secret.mdb"), HasSubstr("3051 - "));
  }
}

TEST(OpeningADatabase, RefusesUnsupportedFilesWithTheReason) {
  const std::string good = test::Showcase(1), ace = test::Showcase(4);
  const auto with = [](std::string file, std::size_t at, const std::string& bytes) {
    return file.replace(at, bytes.size(), bytes);
  };
  const auto locked = [](int version, std::size_t at, const std::string& clear) {
    FileBuilder builder(version);
    builder.SetHeader(at, clear);
    return builder.Finish();
  };
  struct Case {
    const char* what;
    std::string file;
    const char* error;
  };
  const std::vector<Case> cases{
      {"text", "Dear tenant,\n" + std::string(9000, 'x'), "3343 - "},
      {"another product's file", with(good, 4, "MSISAM Database"), "3343 - "},
      {"truncated within the header", good.substr(0, 100), "truncated at byte 100"},
      {"truncated within a page", good.substr(0, good.size() - 1), "truncated at byte "},
      {"truncated after the header", good.substr(0, 4096), "page 2: the page is beyond the end"},
      {"unknown version", with(ace, 0x14, "\x07"), "version 7 is not known"},
      {"Jet with a version of ACE", with(good, 0x14, "\x02"), "version 2 is not known"},
      {"Jet 3 password", locked(0, 0x42, "secret"), "3031 - Not a valid password. "},
      {"Jet 4 password", locked(1, 0x42, "s"), "3031 - Not a valid password. "},
      {"Jet 4 encoded", locked(1, 0x3E, "key!"), "encoded or encrypted"},
      {"ACE encrypted", locked(5, 0x3E, "key!"), "encoded or encrypted"},
      {"unknown code page", FileBuilder(0, 4711).Finish(), "code page 4711 is not known"},
      {"catalogue page of another type", with(good, 2 * 4096, "\x01"),
       "table 'MSysObjects', page 2: "},
  };
  for (const Case& c : cases) {
    const std::string error = ErrorOf(c.file);
    EXPECT_THAT(error, HasSubstr(c.error)) << c.what;
    EXPECT_THAT(error, HasSubstr("'bad.mdb'")) << c.what;
  }
}

// A table with a long and a memo column on known pages, to be corrupted.
struct CorruptibleTable {
  FileBuilder builder{1};
  std::uint32_t definition = builder.NewPage(), data = builder.NewPage(),
                values = builder.NewPage();

  std::string Row(const std::string& memo) const {
    return builder.Row({true, true}, Stored32(1), {memo});
  }
  std::string Memo(std::uint32_t kind, std::size_t length, std::uint8_t row) const {
    return Row(test::LongValueHead(kind, length, Pointer(values, row)));
  }
  std::string Finish() {
    BuiltTable table;
    table.columns = {{"id", 4, 0, true, 0, 4}, {"memo", 12, 1, false, 0}};
    table.max_columns = 2;
    table.variable_columns = 1;
    table.data_pages = {data};
    builder.PutDefinition(definition, table);
    builder.AddToCatalogue("things", definition);
    return builder.Finish();
  }
};

std::string ErrorOfRow(const std::function<std::string(CorruptibleTable&)>& row,
                       unsigned flags = 0) {
  CorruptibleTable table;
  table.builder.PutRows(table.data, table.definition, {{row(table), flags}, {"", 0xC000}});
  return ErrorOf(table.Finish());
}

TEST(CorruptRows, RaiseErrorsThatNameFileTableAndPage) {
  struct Case {
    const char* what;
    std::function<std::string(CorruptibleTable&)> row;
    const char* error;
    unsigned flags = 0;
  };
  const std::vector<Case> cases{
      {"empty", [](CorruptibleTable&) { return std::string(); }, "too short for its column count"},
      {"more columns than bytes", [](CorruptibleTable&) { return Stored16(0xFFFF) + "abc"; },
       "too short for 65535 columns"},
      {"variable count beyond the row",
       [](CorruptibleTable& v) {
         std::string row = v.Row("");
         return row.replace(row.size() - 3, 2, Stored16(0x7FFF));
       },
       "too short for 32767 variable columns"},
      {"end beyond the row",
       [](CorruptibleTable& v) {
         std::string row = v.Row("");
         return row.replace(row.size() - 7, 2, Stored16(0x7FFF));
       },
       "overlap"},
      {"no space for the fixed column",
       [](CorruptibleTable& v) {
         return v.builder.Row({true, false}, "", {""});
       },
       "fixed column"},
      {"overflow to itself", [](CorruptibleTable& v) { return Pointer(v.data, 0); }, "form a loop",
       0x4000},
      {"overflow to no page", [](CorruptibleTable&) { return Pointer(0xFFFFFF, 0); },
       "beyond the end", 0x4000},
      {"overflow to another table's page", [](CorruptibleTable&) { return Pointer(4, 0); },
       "belongs to the table", 0x4000},
      {"overflow to a deleted row", [](CorruptibleTable& v) { return Pointer(v.data, 1); },
       "is deleted", 0x4000},
      {"overflow to no row", [](CorruptibleTable& v) { return Pointer(v.data, 9); }, "row 9",
       0x4000},
      {"overflow without a pointer", [](CorruptibleTable&) { return std::string("ab"); },
       "too short", 0x4000},
      {"memo longer than the file", [](CorruptibleTable& v) { return v.Memo(0, 0x3FFFFFFF, 0); },
       "longer than the file"},
      {"inline memo longer than its row",
       [](CorruptibleTable& v) { return v.Memo(0x80000000, 10, 0); }, "longer than its row"},
      {"memo on an unused page", [](CorruptibleTable& v) { return v.Memo(0x40000000, 10, 0); },
       "expected a data page"},
      {"memo's head truncated", [](CorruptibleTable& v) { return v.Row("abc"); },
       "head is too short"},
  };
  for (const Case& c : cases) {
    const std::string error = ErrorOfRow(c.row, c.flags);
    EXPECT_THAT(error, HasSubstr("3049 - Cannot open database 'bad.mdb'.")) << c.what;
    EXPECT_THAT(error, HasSubstr("table 'things', page ")) << c.what;
    EXPECT_THAT(error, HasSubstr(c.error)) << c.what;
  }
}

TEST(CorruptLongValues, DoNotLoopOrEndEarly) {
  const auto error = [](const std::vector<std::string>& pieces, std::size_t length) {
    CorruptibleTable table;
    table.builder.PutLongValues(table.values, pieces);
    table.builder.PutRows(table.data, table.definition, {{table.Memo(0, length, 0)}});
    return ErrorOf(table.Finish());
  };
  const std::uint32_t values = CorruptibleTable().values;
  EXPECT_THAT(error({Pointer(values, 0) + "ab"}, 20000), HasSubstr("form a loop"));
  EXPECT_THAT(error({Pointer(values, 1) + "ab", Pointer(values, 2), Pointer(values, 1)}, 20000),
              HasSubstr("form a loop"));
  EXPECT_THAT(error({Pointer(values, 1) + "ab", Stored32(0) + "cd"}, 6), HasSubstr("truncated"));
  EXPECT_THAT(error({"ab"}, 6), HasSubstr("too short"));
  EXPECT_EQ(error({Pointer(values, 1) + "ab", Stored32(0) + "cd"}, 4), "");
}

TEST(CorruptDefinitions, AreRefusedWithoutMuchWork) {
  constexpr std::size_t kPage = 4096, kNext = 4, kColumns = 45, kLogical = 47, kPhysical = 51,
                        kOwned = 55;
  struct Case {
    const char* what;
    std::size_t at;
    std::string bytes;
    const char* error;
  };
  const std::uint32_t page = CorruptibleTable().definition;
  const std::vector<Case> cases{
      {"chain with a loop", kNext, Stored32(page), "does not end"},
      {"chain to a page of another type", kNext, Stored32(1), "expected a table definition"},
      {"too many columns", kColumns, Stored16(0xFFFF), "65535 columns"},
      {"more columns than bytes", kColumns, Stored16(255), "ends too early"},
      {"more logical indexes than bytes", kLogical, Stored32(0xFFFFFFFF), "ends too early"},
      {"more indexes than bytes", kPhysical, Stored32(0xFFFFFFFF), "ends too early"},
      {"usage map on a missing page", kOwned, Pointer(0xFFFFFF, 0), "beyond the end"},
      {"usage map in a missing row", kOwned, Pointer(3, 200), "row 200"},
  };
  for (const Case& c : cases) {
    CorruptibleTable table;
    table.builder.PutRows(table.data, table.definition, {});
    std::string file = table.Finish();
    file.replace(page * kPage + c.at, c.bytes.size(), c.bytes);
    EXPECT_THAT(ErrorOf(file), HasSubstr(c.error)) << c.what;
  }
}

TEST(CorruptUsageMaps, DoNotGiveATableTheRowsOfAnother) {
  constexpr std::uint32_t kCatalogueRows = 4;
  CorruptibleTable table;
  table.data = kCatalogueRows;
  EXPECT_THAT(ErrorOf(table.Finish()),
              HasSubstr("table 'things', page 4: the page belongs to the table defined on page 2"));
}

TEST(AFileTruncatedWhileOpen, RaisesAnErrorInsteadOfCrashing) {
  const test::ScratchFolder scratch;
  std::filesystem::copy_file(test::SampleDatabase(), scratch / "cut.mdb");
  const auto database = DatabaseFile::Open(scratch / "cut.mdb");
  const auto rows = database->FindTable("rent_periods")->Rows();
  ASSERT_TRUE(rows->Next());
  std::filesystem::resize_file(scratch / "cut.mdb", 100 * 1024);
  const std::string error = test::ErrorOf([&] {
    while (rows->Next()) {
    }
  });
  EXPECT_THAT(error, HasSubstr("truncated while it was open"));
  EXPECT_THAT(error, HasSubstr("table 'rent_periods'"));
}

TEST(AnyTruncation, GivesRowsOrAnError) {
  for (const int version : {0, 1, 6}) {
    const std::string good = test::Showcase(version);
    for (std::size_t size = 0; size < good.size(); size += 509) {
      EXPECT_NE(ErrorOf(good.substr(0, size)), "") << version << " at " << size;
    }
    for (std::size_t size = 0; size < good.size(); size += 2048) {
      EXPECT_NE(ErrorOf(good.substr(0, size)), "") << version << " at " << size;
    }
  }
}

// Changes `flips` bytes in each of `rounds` copies. Reading them must not crash, hang or raise any
// other kind of exception.
void FlipBytes(const std::string& good, int rounds, int flips) {
  std::mt19937 random(20261121);
  const std::size_t clean =
      test::ReadEverything(*DatabaseFile::OpenBytes(BytesOf(good), "good.mdb"), kMostRows).rows;
  int refused = 0, differing = 0;
  for (int round = 0; round < rounds; ++round) {
    std::string bad = good;
    for (int i = 0; i < flips; ++i) {
      const std::size_t at = random() % good.size();
      bad[at] = static_cast<char>(bad[at] ^ (1 + random() % 255));
    }
    try {
      const auto counts =
          test::ReadEverything(*DatabaseFile::OpenBytes(BytesOf(bad), "bad.mdb"), kMostRows);
      if (counts.first_error.empty() && counts.rows != clean) ++differing;
      refused += !counts.first_error.empty();
    } catch (const RuntimeError&) {
      ++refused;
    }
  }
  EXPECT_GT(refused, 0);
  // A change can delete a row by its flag or remove a page from a usage map; more differences would
  // mean that corruption goes unnoticed.
  EXPECT_LT(differing, rounds / 5);
}

TEST(FlippedBytes, EndInRowsOrAnErrorInEveryVersion) {
  for (const int version : {0, 1, 6}) FlipBytes(test::Showcase(version), 1000, 3);
}

TEST(FlippedBytes, EndInRowsOrAnErrorInTheSample) {
  FlipBytes(ReadWholeFile(test::SampleDatabase()), 150, 40);
}

}  // namespace
}  // namespace tenora::access
