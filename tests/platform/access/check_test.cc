// The checker: a sound file gives no finding, and every kind of damage is found and named.
#include "platform/access/check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "platform/access/file_builder.h"
#include "platform/access/format/row.h"
#include "platform/access/read/index_tree.h"
#include "platform/access/read/long_value.h"
#include "platform/access/read/row_cursor.h"
#include "platform/access/read/system_catalogue.h"
#include "platform/access/read/usage_map.h"
#include "platform/access/storage/page_file.h"
#include "platform/runtime/files.h"
#include "support/slow_build.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

using testing::HasSubstr;

constexpr std::size_t kPageSize = 4096, kFreeBytes = 2, kOwner = 4, kRowOffsets = 14;

// The sample database in memory, to be damaged.
class Patient {
 public:
  Patient() {
    const std::string content = ReadWholeFile(test::SampleDatabase());
    const auto* start = reinterpret_cast<const std::byte*>(content.data());
    bytes_.assign(start, start + content.size());
  }

  std::byte* Page(std::uint32_t page) { return &bytes_[page * kPageSize]; }
  std::byte* RowAt(RowPointer row) { return Page(row.page) + (Load16(OffsetOf(row)) & kRowOffset); }
  std::byte* OffsetOf(RowPointer row) { return Page(row.page) + kRowOffsets + 2 * row.row; }
  void Flag(RowPointer row, unsigned flags) {
    Store16(OffsetOf(row), Load16(OffsetOf(row)) | flags);
  }

  std::shared_ptr<const PageFile> File() const { return PageFile::OfBytes(bytes_, "sample.mdb"); }
  TableDefinition Table(std::string_view name) const {
    const auto file = File();
    const SystemCatalogue catalogue(file);
    const CatalogueEntry* const entry = catalogue.Find(name);
    if (entry == nullptr) throw std::out_of_range(std::string(name));
    return ReadTable(file, entry->name, entry->definition_page)->definition;
  }
  // The first page of a set.
  std::uint32_t FirstOf(RowPointer map) const { return UsageMap(*File(), map).NextFrom(0); }
  // Takes a page into a set or out of it; the map starts at page 0.
  void TurnOver(RowPointer map, std::uint32_t page) {
    std::byte* const row = RowAt(map);
    std::byte* const bits =
        Load8(row) == 0 ? row + kInlineMapBits : Page(Load32(row + 1)) + kBitmapPageBits;
    bits[page / 8] ^= std::byte{1} << (page % 8);
  }

  std::uint32_t FirstLeaf(const PhysicalIndex& index) const {
    return PathToLeaf(*File(), index.root_page, {}, {}).back();
  }
  // Changes an index page as a writer would.
  void Edit(std::uint32_t number, const std::function<void(IndexPage&)>& change) {
    PageBuffer buffer;
    IndexPage page;
    File()->Read(number, buffer);
    ReadIndexPage(kJet4Layout, buffer, page);
    change(page);
    ASSERT_TRUE(ComposeIndexPage(kJet4Layout, page, {Page(number), kPageSize}));
  }

  std::vector<Finding> Findings() const { return CheckDatabase(bytes_, "sample.mdb"); }

 private:
  std::vector<std::byte> bytes_;
};

std::string TextOf(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) text += finding.Text() + "\n";
  return text;
}

TEST(ChecksOfASoundFile, FindNothing) {
  EXPECT_EQ(TextOf(CheckDatabase(test::SampleDatabase())), "");
}

// Revenues has a unique index over its automatic numbers and a plain one; both have two levels.
struct Case {
  const char* what;
  std::function<void(Patient&, const TableDefinition& revenues)> damage;
  const char* place;
  const char* finding;
};

void ExpectFound(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    Patient patient;
    c.damage(patient, patient.Table("revenues"));
    const auto findings = patient.Findings();
    EXPECT_TRUE(std::any_of(findings.begin(), findings.end(),
                            [&](const Finding& finding) {
                              const std::string text = finding.Text();
                              return finding.kind == Finding::Kind::kFault &&
                                     !finding.remedy.empty() &&
                                     text.find(c.place) != std::string::npos &&
                                     text.find(c.finding) != std::string::npos;
                            }))
        << c.what << ":\n"
        << TextOf(findings);
  }
}

Case Leaf(const char* what, std::function<void(IndexPage&)> change, const char* finding) {
  return {what,
          [change](Patient& patient, const TableDefinition& table) {
            patient.Edit(patient.FirstLeaf(table.physical_indexes[0]), change);
          },
          "table 'revenues', index 'PrimaryKey'", finding};
}

Case Root(const char* what, std::function<void(IndexPage&)> change, const char* finding) {
  return {what,
          [change](Patient& patient, const TableDefinition& table) {
            patient.Edit(table.physical_indexes[0].root_page, change);
          },
          "table 'revenues', index 'PrimaryKey'", finding};
}

TEST(AChangedIndex, IsFoundAndNamed) {
  ExpectFound({
      Leaf(
          "a byte of a key", [](IndexPage& page) { page.entries[5].key[2] ^= 1; },
          "the key of an entry is not that of row"),
      Leaf(
          "two entries in each other's place",
          [](IndexPage& page) { std::swap(page.entries[5], page.entries[6]); }, "is out of order"),
      Leaf(
          "an entry too few", [](IndexPage& page) { page.entries.erase(page.entries.begin() + 3); },
          "the row has no entry in the index"),
      Leaf(
          "an entry twice",
          [](IndexPage& page) { page.entries.insert(page.entries.begin(), page.entries[0]); },
          "is there twice"),
      Leaf(
          "an entry that leads to another row",
          [](IndexPage& page) { page.entries[5].row = page.entries[6].row; },
          "the key of an entry is not that of row"),
      Leaf(
          "an entry that leads nowhere",
          [](IndexPage& page) {
            page.entries[5].row = {170, 250};
          },
          "where no row of the index is"),
      Leaf(
          "a wrong previous page", [](IndexPage& page) { page.previous = 100; },
          "page 0 comes before this one, but it names page 100"),
      Leaf(
          "no next page", [](IndexPage& page) { page.next = 0; },
          "comes next, but the page names page 0"),
      Leaf(
          "a page of another table", [](IndexPage& page) { page.owner = 24; },
          "belongs to the table defined on page 24"),
      Root(
          "no tail page", [](IndexPage& page) { page.tail = 0; }, "the node has no tail page"),
      Root(
          "a node's entry that is too low",
          [](IndexPage& page) { page.entries[0].key = std::string("\x7F\x80\0\0\0", 5); },
          "sorts before the last entry below that page"),
      Root(
          "a child twice", [](IndexPage& page) { page.entries[1].child = page.entries[0].child; },
          "the page is owned twice"),
      Root(
          "the tree in a circle", [](IndexPage& page) { page.tail = page.entries[0].child; },
          "the page is owned twice"),
      Root(
          "a child behind the end", [](IndexPage& page) { page.tail = 5000; },
          "the page lies behind the end of the file"),
      {"an index page's free bytes",
       [](Patient& patient, const TableDefinition& table) {
         std::byte* const page = patient.Page(table.physical_indexes[1].root_page);
         Store16(page + kFreeBytes, Load16(page + kFreeBytes) + 1);
       },
       "index 'tenant_code'", "bytes are free, but there are"},
      {"an index without one of its pages",
       [](Patient& patient, const TableDefinition& table) {
         const PhysicalIndex& index = table.physical_indexes[1];
         patient.TurnOver(index.owned_pages, patient.FirstLeaf(index));
       },
       "index 'tenant_code'", "does not own the page, but leads there"},
  });
}

RowPointer FirstRow(Patient& patient, const TableDefinition& table) {
  return {patient.FirstOf(table.owned_pages), 0};
}

TEST(AChangedTable, IsFoundAndNamed) {
  ExpectFound({
      {"a row too many in the definition",
       [](Patient& patient, const TableDefinition& table) {
         Store32(patient.Page(table.page) + kJet4Layout.tdef_rows, table.row_count + 1);
       },
       "table 'revenues', page 39", "says that the table has 1647 rows, but there are 1646"},
      {"an automatic number that was given already",
       [](Patient& patient, const TableDefinition& table) {
         Store32(patient.Page(table.page) + kJet4Layout.tdef_auto_number, 1000);
       },
       "table 'revenues'", "the last automatic number is 1000, but a row has 1646"},
      {"a page that the table lost",
       [](Patient& patient, const TableDefinition& table) {
         patient.TurnOver(table.owned_pages, patient.FirstOf(table.owned_pages));
       },
       "page ", "is in use, but nothing owns it"},
      {"a page of two tables",
       [](Patient& patient, const TableDefinition& table) {
         const TableDefinition owner = patient.Table("owner");
         patient.TurnOver(owner.owned_pages, patient.FirstOf(table.owned_pages));
       },
       "table 'revenues'", "owned twice: by the rows of table 'owner' and by the rows of table"},
      {"a page of rows that is called free",
       [](Patient& patient, const TableDefinition& table) {
         std::byte* const map = patient.RowAt(kFreePagesMap);
         Store32(map + 1, patient.FirstOf(table.owned_pages));
         map[kInlineMapBits] |= std::byte{1};
       },
       "page ", "is among the free ones, but is owned by the rows of table 'revenues'"},
      {"room on a page of another table",
       [](Patient& patient, const TableDefinition& table) {
         const TableDefinition owner = patient.Table("owner");
         patient.TurnOver(owner.free_pages, patient.FirstOf(table.owned_pages));
       },
       "table 'owner', page ", "said to have room for the table's rows"},
      {"two tables with one usage map",
       [](Patient& patient, const TableDefinition& table) {
         patient.Table("owner").owned_pages.Store(patient.Page(table.page) +
                                                  kJet4Layout.tdef_owned_pages);
       },
       "table 'revenues'", "serves something else already"},
      {"a data page's free bytes",
       [](Patient& patient, const TableDefinition& table) {
         Store16(patient.Page(patient.FirstOf(table.owned_pages)) + kFreeBytes, 7);
       },
       "table 'revenues', page ", "says that 7 bytes are free"},
      {"a data page of another table",
       [](Patient& patient, const TableDefinition& table) {
         Store32(patient.Page(patient.FirstOf(table.owned_pages)) + kOwner, 24);
       },
       "table 'revenues'", "belongs to the table defined on page 24"},
      {"a deleted row with its entries left",
       [](Patient& patient, const TableDefinition& table) {
         patient.Flag(FirstRow(patient, table), 0xC000);
       },
       "index 'PrimaryKey'", "where no row of the index is"},
      {"a row that moved to a page of another table",
       [](Patient& patient, const TableDefinition& table) {
         const RowPointer row = FirstRow(patient, table);
         patient.Flag(row, kRowOverflow);
         RowPointer{26, 0}.Store(patient.RowAt(row));
       },
       "table 'revenues'", "is on a page that the table does not own"},
      {"a row that moved onto another",
       [](Patient& patient, const TableDefinition& table) {
         const RowPointer row = FirstRow(patient, table);
         patient.Flag(row, kRowOverflow);
         RowPointer{row.page, 1}.Store(patient.RowAt(row));
       },
       "table 'revenues'", "stands there in its own right"},
      {"a row that moved in a circle",
       [](Patient& patient, const TableDefinition& table) {
         const RowPointer row = FirstRow(patient, table);
         patient.Flag(row, kRowOverflow);
         row.Store(patient.RowAt(row));
       },
       "table 'revenues'", "where another row moved to already"},
      {"a moved row that nothing leads to",
       [](Patient& patient, const TableDefinition& table) {
         patient.Flag(FirstRow(patient, table), kRowHidden);
       },
       "table 'revenues'", "moved here from another page, but none leads to it"},
      {"a column over another",
       [](Patient& patient, const TableDefinition& table) {
         std::byte* const records = patient.Page(table.page) + kJet4Layout.tdef_first_index + 24;
         Store16(records + kJet4Layout.column_size + kJet4Layout.column_fixed_offset, 1);
       },
       "table 'revenues'", "lies over another in the rows"},
      {"a key that is taken in a unique index",
       [](Patient& patient, const TableDefinition& table) {
         patient.Edit(patient.FirstLeaf(table.physical_indexes[0]), [&](IndexPage& page) {
           page.entries[1].key = page.entries[0].key;
           Store32(patient.RowAt(page.entries[1].row) + 2, 1);
         });
       },
       "index 'PrimaryKey'", "though the index is unique"},
  });
}

// A row of `table` whose memo is a long value of the kind, its bytes in the row.
std::byte* LongValueOf(Patient& patient, const char* table_name, const char* memo,
                       std::uint32_t kind) {
  const TableDefinition table = patient.Table(table_name);
  const auto file = patient.File();
  const auto column =
      static_cast<std::size_t>(std::find_if(table.columns.begin(), table.columns.end(),
                                            [&](const Column& c) { return c.name == memo; }) -
                               table.columns.begin());
  const auto rows = OpenCursor(std::make_shared<TableData>(TableData{file, table_name, table}));
  while (rows->Next()) {
    const RowPointer place = rows->place();
    PageBuffer page;
    file->Read(place.page, page);
    const Bytes bytes = DataPage(file->layout(), page).Row(place.row).bytes;
    const Bytes field = StoredBytes(Row(file->layout(), table, bytes, place.page), table, column);
    if (field.size() == kLongValueHead && Load32(field.data()) >> 30 == kind >> 30) {
      return patient.RowAt(place) + (field.data() - bytes.data());
    }
  }
  throw std::out_of_range(memo);
}

TEST(AChangedLongValue, IsFoundAndNamed) {
  const auto single = [](Patient& patient) {
    return LongValueOf(patient, "property", "details", kLongValueSingle);
  };
  const auto chain = [](Patient& patient) { return LongValueOf(patient, "owner", "notes", 0); };
  ExpectFound({
      {"a length that is not the piece's",
       [&](Patient& patient, const TableDefinition&) {
         Store32(single(patient), Load32(single(patient)) + 1);
       },
       "table 'property'", "column 'details' should have 1301 bytes, but 1300 are there"},
      {"a deleted piece",
       [&](Patient& patient, const TableDefinition&) {
         patient.Flag(RowPointer::Load(single(patient) + 4), 0xC000);
       },
       "table 'property'", "of a long value is deleted"},
      {"a value that its row lost",
       [&](Patient& patient, const TableDefinition&) {
         Store32(single(patient), kLongValueInline);
       },
       "table 'property'", "the piece of a long value belongs to no row"},
      {"a chain cut short",
       [&](Patient& patient, const TableDefinition&) {
         Store32(patient.RowAt(RowPointer::Load(chain(patient) + 4)), 0);
       },
       "table 'owner'", "column 'notes' should have 8000 bytes, but"},
      {"a chain in a circle",
       [&](Patient& patient, const TableDefinition&) {
         const RowPointer piece = RowPointer::Load(chain(patient) + 4);
         piece.Store(patient.RowAt(piece));
       },
       "table 'owner'", "is reached a second time"},
      {"a value on a page of rows",
       [&](Patient& patient, const TableDefinition& table) {
         FirstRow(patient, table).Store(single(patient) + 4);
       },
       "table 'property'", "is on a page that is not for the table's long values"},
  });
}

TEST(AnUnknownSortOrder, IsSaidAndIsNoFault) {
  Patient patient;
  const TableDefinition table = patient.Table("rentchanges");
  Store32(patient.Page(table.page) + kJet4Layout.tdef_first_index + kJet4Layout.index_head_size +
              kJet4Layout.column_sort_order,
          0x0000041D);
  const auto findings = patient.Findings();
  ASSERT_EQ(findings.size(), 1U) << TextOf(findings);
  EXPECT_EQ(findings[0].kind, Finding::Kind::kNotChecked);
  EXPECT_EQ(findings[0].Text(),
            "not checked: table 'rentchanges', index 'tenantcode': the keys: the sort order 1053 "
            "version 0 of column 'tenantcode' is not known.");
  // Its rows and entries are compared all the same.
  patient.Edit(patient.FirstLeaf(table.physical_indexes[0]),
               [](IndexPage& page) { page.entries.pop_back(); });
  EXPECT_THAT(TextOf(patient.Findings()), HasSubstr("the row has no entry in the index"));
}

// Two tables and a relationship between them.
std::string FileWithRelationship(std::int32_t child_refers_to, std::uint32_t flags) {
  test::FileBuilder builder(1);
  const auto number = [&](std::int32_t value) {
    return builder.FixedRow({true}, test::Stored(value));
  };
  builder.AddTable("parent", {.columns = {{"id", 4, 0, true, 0, 4}}}, {number(1), number(2)});
  builder.AddTable("child", {.columns = {{"parent", 4, 0, true, 0, 4}}},
                   {number(2), number(child_refers_to)});
  builder.AddRelationships({{"belongs", "child", "parent", "parent", "id", flags}});
  return builder.Finish();
}

TEST(ARowThatRefersToAMissingOne, IsFoundWhereTheRelationshipIsEnforced) {
  const auto findings = [](std::int32_t refers_to, std::uint32_t flags) {
    const std::string file = FileWithRelationship(refers_to, flags);
    const auto* bytes = reinterpret_cast<const std::byte*>(file.data());
    return TextOf(CheckDatabase({bytes, bytes + file.size()}, "related.mdb"));
  };
  const char* const missing =
      "row 1: relationship 'belongs': the row refers to a row of table 'parent' that is missing";
  EXPECT_THAT(findings(3, 0), HasSubstr(missing));
  EXPECT_THAT(findings(1, 0), testing::Not(HasSubstr("relationship")));
  EXPECT_THAT(findings(3, 2), testing::Not(HasSubstr("relationship")));
}

TEST(DamagedProperties, AreFoundWhereverTheyAreCut) {
  const std::string whole = test::FileBuilder(1).Properties({{"", "ValidationRule", 12, "x"},
                                                             {"id", "Required", 1, "\xFF"},
                                                             {"gone", "Caption", 10, {}}});
  const auto findings = [](const std::string& properties) {
    test::FileBuilder builder(1);
    builder.AddTable("t", {.columns = {{"id", 4, 0, true, 0, 4}}}, {}, properties);
    const std::string file = builder.Finish();
    const auto* bytes = reinterpret_cast<const std::byte*>(file.data());
    return TextOf(CheckDatabase({bytes, bytes + file.size()}, "properties.mdb"));
  };
  const auto fault = HasSubstr("table 't', page 4, row 0: the field LvProp of the table's row");
  EXPECT_THAT(findings(whole), testing::Not(HasSubstr("LvProp")));
  EXPECT_THAT(findings("XX" + whole.substr(2)), fault);
  // Behind the magic and between the chunks alone it may end.
  std::size_t sound = 0;
  for (std::size_t size = 1; size < whole.size(); ++size) {
    const std::string text = findings(whole.substr(0, size));
    sound += text.find("LvProp") == std::string::npos ? 1U : 0U;
  }
  EXPECT_EQ(sound, 4U);
}

TEST(ChecksOfADamagedFile, EndWithABoundedListWhateverItHolds) {
  std::mt19937 random(20261121);
  for (int round = 0; round < (test::kSlowBuild ? 24 : 120); ++round) {
    Patient patient;
    const std::uint32_t pages = patient.File()->page_count();
    for (int flip = 0; flip < 40; ++flip) {
      // Most of what matters is at the start of a page.
      const std::size_t at = random() % (round % 2 == 0 ? 64 : kPageSize);
      patient.Page(static_cast<std::uint32_t>(1 + random() % (pages - 1)))[at] =
          static_cast<std::byte>(random());
    }
    EXPECT_LE(patient.Findings().size(), 501U);
  }
}

TEST(CheckDatabase, RefusesWhatIsNoDatabase) {
  EXPECT_THROW(CheckDatabase(test::SourceDir() / "CMakeLists.txt"), RuntimeError);
  EXPECT_THROW(CheckDatabase(test::SourceDir() / "none.mdb"), RuntimeError);
}

}  // namespace
}  // namespace tenora::access
