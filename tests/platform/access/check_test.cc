// The integrity checker: no findings for a healthy file; every kind of corruption is found and
// named.
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
#include "platform/runtime/text.h"
#include "support/slow_build.h"
#include "support/test_files.h"

namespace tenora::access {
namespace {

using testing::HasSubstr;

constexpr std::size_t kPageSize = 4096, kFreeBytes = 2, kOwner = 4, kRowOffsets = 14;

// A copy of the sample database in memory, to be corrupted.
class CorruptibleSample {
 public:
  CorruptibleSample() {
    const std::string content = ReadWholeFile(test::SampleDatabase());
    const auto* start = reinterpret_cast<const std::byte*>(content.data());
    bytes_.assign(start, start + content.size());
  }

  // A page of zeros at the end.
  std::uint32_t AddPage() {
    bytes_.resize(bytes_.size() + kPageSize);
    return static_cast<std::uint32_t>(bytes_.size() / kPageSize - 1);
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
  // Toggles a page in a usage map that starts at page 0.
  void Toggle(RowPointer map, std::uint32_t page) {
    std::byte* const row = RowAt(map);
    std::byte* const bits =
        Load8(row) == 0 ? row + kInlineMapBits : Page(Load32(row + 1)) + kBitmapPageBits;
    bits[page / 8] ^= std::byte{1} << (page % 8);
  }

  std::uint32_t FirstLeaf(const PhysicalIndex& index) const {
    return PathToLeaf(*File(), index.root_page, {}, {}).back();
  }
  // Changes an index page through its parsed form.
  void Edit(std::uint32_t number, const std::function<void(IndexPage&)>& change) {
    PageBuffer buffer;
    IndexPage page;
    File()->Read(number, buffer);
    ReadIndexPage(kJet4Layout, buffer, page);
    change(page);
    ASSERT_TRUE(ComposeIndexPage(kJet4Layout, page, {Page(number), kPageSize}));
  }

  std::vector<Finding> Findings(const access::CheckMemory& memory = {}) const {
    return CheckDatabase(bytes_, "sample.mdb", memory);
  }

 private:
  std::vector<std::byte> bytes_;
};

std::string TextOf(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) text += finding.Text() + "\n";
  return text;
}

// As if every table were too large for memory.
constexpr access::CheckMemory kLittle{.pages_with_keys = 0, .rows_of_part = 100};

TEST(CheckOfAHealthyFile, FindsNothing) {
  EXPECT_EQ(TextOf(CheckDatabase(test::SampleDatabase())), "");
  EXPECT_EQ(TextOf(CorruptibleSample().Findings(kLittle)), "");
}

std::vector<std::string> Sorted(const std::vector<Finding>& findings) {
  std::vector<std::string> texts;
  for (const Finding& finding : findings) texts.push_back(finding.Text());
  std::ranges::sort(texts);
  return texts;
}

// Revenues has a unique index over its AutoNumber column and one that is not; both have two levels.
struct Case {
  const char* what;
  std::function<void(CorruptibleSample&, const TableDefinition& revenues)> corrupt;
  const char* place;
  const char* finding;
};

void ExpectFound(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    CorruptibleSample sample;
    c.corrupt(sample, sample.Table("revenues"));
    const auto findings = sample.Findings();
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
    // Which of very many are shown depends on their order.
    if (TextOf(findings).find("more findings are not shown") != std::string::npos) continue;
    EXPECT_EQ(Sorted(sample.Findings(kLittle)), Sorted(findings)) << c.what;
  }
}

Case Leaf(const char* what, std::function<void(IndexPage&)> change, const char* finding) {
  return {what,
          [change](CorruptibleSample& sample, const TableDefinition& table) {
            sample.Edit(sample.FirstLeaf(table.physical_indexes[0]), change);
          },
          "table 'revenues', index 'PrimaryKey'", finding};
}

Case Root(const char* what, std::function<void(IndexPage&)> change, const char* finding) {
  return {what,
          [change](CorruptibleSample& sample, const TableDefinition& table) {
            sample.Edit(table.physical_indexes[0].root_page, change);
          },
          "table 'revenues', index 'PrimaryKey'", finding};
}

TEST(ACorruptIndex, IsFoundAndNamed) {
  ExpectFound({
      Leaf(
          "a byte of a key", [](IndexPage& page) { page.entries[5].key[2] ^= 1; },
          "the key of an entry is not that of row"),
      Leaf(
          "two entries swapped",
          [](IndexPage& page) { std::swap(page.entries[5], page.entries[6]); }, "is out of order"),
      Leaf(
          "a missing entry", [](IndexPage& page) { page.entries.erase(page.entries.begin() + 3); },
          "the row has no entry in the index"),
      Leaf(
          "a duplicate entry",
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
          "a loop in the tree", [](IndexPage& page) { page.tail = page.entries[0].child; },
          "the page is owned twice"),
      Root(
          "a child beyond the end of the file", [](IndexPage& page) { page.tail = 5000; },
          "the page is beyond the end of the file"),
      {"an index page's free bytes",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         std::byte* const page = sample.Page(table.physical_indexes[1].root_page);
         Store16(page + kFreeBytes, Load16(page + kFreeBytes) + 1);
       },
       "index 'tenant_code'", "bytes are free, but there are"},
      {"an index without one of its pages",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         const PhysicalIndex& index = table.physical_indexes[1];
         sample.Toggle(index.owned_pages, sample.FirstLeaf(index));
       },
       "index 'tenant_code'", "does not own the page, but leads there"},
  });
}

RowPointer FirstRow(CorruptibleSample& sample, const TableDefinition& table) {
  return {sample.FirstOf(table.owned_pages), 0};
}

TEST(ACorruptTable, IsFoundAndNamed) {
  ExpectFound({
      {"a row too many in the definition",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         Store32(sample.Page(table.page) + kJet4Layout.tdef_rows, table.row_count + 1);
       },
       "table 'revenues', page 39", "says that the table has 1647 rows, but there are 1646"},
      {"an AutoNumber value that is already in use",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         Store32(sample.Page(table.page) + kJet4Layout.tdef_auto_number, 1000);
       },
       "table 'revenues'", "the last AutoNumber value is 1000, but a row has 1646"},
      {"a page that the table lost",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         sample.Toggle(table.owned_pages, sample.FirstOf(table.owned_pages));
       },
       "page ", "is in use, but nothing owns it"},
      {"a page of two tables",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         const TableDefinition owner = sample.Table("owner");
         sample.Toggle(owner.owned_pages, sample.FirstOf(table.owned_pages));
       },
       "table 'revenues'", "owned twice: by the rows of table 'owner' and by the rows of table"},
      {"a page of rows that is listed as free",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         std::byte* const map = sample.RowAt(kFreePagesMap);
         Store32(map + 1, sample.FirstOf(table.owned_pages));
         map[kInlineMapBits] |= std::byte{1};
       },
       "page ", "is listed as free, but is owned by the rows of table 'revenues'"},
      {"free space on a page of another table",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         const TableDefinition owner = sample.Table("owner");
         sample.Toggle(owner.free_pages, sample.FirstOf(table.owned_pages));
       },
       "table 'owner', page ", "listed as having free space for the table's rows"},
      {"two tables with one usage map",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         sample.Table("owner").owned_pages.Store(sample.Page(table.page) +
                                                 kJet4Layout.tdef_owned_pages);
       },
       "table 'revenues'", "is already used for something else"},
      {"a data page's free bytes",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         Store16(sample.Page(sample.FirstOf(table.owned_pages)) + kFreeBytes, 7);
       },
       "table 'revenues', page ", "says that 7 bytes are free"},
      {"a data page of another table",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         Store32(sample.Page(sample.FirstOf(table.owned_pages)) + kOwner, 24);
       },
       "table 'revenues'", "belongs to the table defined on page 24"},
      {"a deleted row with its entries left",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         sample.Flag(FirstRow(sample, table), 0xC000);
       },
       "index 'PrimaryKey'", "where no row of the index is"},
      {"a row that moved to a page of another table",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         const RowPointer row = FirstRow(sample, table);
         sample.Flag(row, kRowOverflow);
         RowPointer{26, 0}.Store(sample.RowAt(row));
       },
       "table 'revenues'", "is on a page that the table does not own"},
      {"a row that moved onto another",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         const RowPointer row = FirstRow(sample, table);
         sample.Flag(row, kRowOverflow);
         RowPointer{row.page, 1}.Store(sample.RowAt(row));
       },
       "table 'revenues'", "is a row of its own"},
      {"a row that points to itself",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         const RowPointer row = FirstRow(sample, table);
         sample.Flag(row, kRowOverflow);
         row.Store(sample.RowAt(row));
       },
       "table 'revenues'", "is already the target of another row"},
      {"a moved row to which nothing points",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         sample.Flag(FirstRow(sample, table), kRowHidden);
       },
       "table 'revenues'", "was moved here from another page, but no row points to it"},
      {"overlapping columns",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         std::byte* const records = sample.Page(table.page) + kJet4Layout.tdef_first_index + 24;
         Store16(records + kJet4Layout.column_size + kJet4Layout.column_fixed_offset, 1);
       },
       "table 'revenues'", "overlaps another in the rows"},
      {"a duplicate key in a unique index",
       [](CorruptibleSample& sample, const TableDefinition& table) {
         sample.Edit(sample.FirstLeaf(table.physical_indexes[0]), [&](IndexPage& page) {
           page.entries[1].key = page.entries[0].key;
           Store32(sample.RowAt(page.entries[1].row) + 2, 1);
         });
       },
       "index 'PrimaryKey'", "though the index is unique"},
  });
}

// The bytes in the row of the first long value of that kind in a memo column.
std::byte* LongValueOf(CorruptibleSample& sample, const char* table_name, const char* memo,
                       std::uint32_t kind) {
  const TableDefinition table = sample.Table(table_name);
  const auto file = sample.File();
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
      return sample.RowAt(place) + (field.data() - bytes.data());
    }
  }
  throw std::out_of_range(memo);
}

TEST(ACorruptLongValue, IsFoundAndNamed) {
  const auto single = [](CorruptibleSample& sample) {
    return LongValueOf(sample, "property", "details", kLongValueSingle);
  };
  const auto chain = [](CorruptibleSample& sample) {
    return LongValueOf(sample, "owner", "notes", 0);
  };
  ExpectFound({
      {"a length that is not the piece's",
       [&](CorruptibleSample& sample, const TableDefinition&) {
         Store32(single(sample), Load32(single(sample)) + 1);
       },
       "table 'property'", "column 'details' should have 1301 bytes, but 1300 are there"},
      {"a deleted piece",
       [&](CorruptibleSample& sample, const TableDefinition&) {
         sample.Flag(RowPointer::Load(single(sample) + 4), 0xC000);
       },
       "table 'property'", "of a long value is deleted"},
      {"a piece to which no row refers",
       [&](CorruptibleSample& sample, const TableDefinition&) {
         Store32(single(sample), kLongValueInline);
       },
       "table 'property'", "the piece of a long value belongs to no row"},
      {"a truncated chain",
       [&](CorruptibleSample& sample, const TableDefinition&) {
         Store32(sample.RowAt(RowPointer::Load(chain(sample) + 4)), 0);
       },
       "table 'owner'", "column 'notes' should have 8000 bytes, but"},
      {"a loop in a chain",
       [&](CorruptibleSample& sample, const TableDefinition&) {
         const RowPointer piece = RowPointer::Load(chain(sample) + 4);
         piece.Store(sample.RowAt(piece));
       },
       "table 'owner'", "is referenced a second time"},
      {"a value on a page of rows",
       [&](CorruptibleSample& sample, const TableDefinition& table) {
         FirstRow(sample, table).Store(single(sample) + 4);
       },
       "table 'property'", "is on a page that does not hold the table's long values"},
  });
}

TEST(AnUnknownSortOrder, IsReportedButNotAsAFault) {
  CorruptibleSample sample;
  const TableDefinition table = sample.Table("rentchanges");
  Store32(sample.Page(table.page) + kJet4Layout.tdef_first_index + kJet4Layout.index_head_size +
              kJet4Layout.column_sort_order,
          0x0000041D);
  const auto findings = sample.Findings();
  ASSERT_EQ(findings.size(), 1U) << TextOf(findings);
  EXPECT_EQ(findings[0].kind, Finding::Kind::kNotChecked);
  EXPECT_EQ(findings[0].Text(),
            "not checked: table 'rentchanges', index 'tenantcode': the keys: the sort order 1053 "
            "version 0 of column 'tenantcode' is not known.");
  // Rows and entries are still compared.
  sample.Edit(sample.FirstLeaf(table.physical_indexes[0]),
              [](IndexPage& page) { page.entries.pop_back(); });
  EXPECT_THAT(TextOf(sample.Findings()), HasSubstr("the row has no entry in the index"));
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

// What other programs leave behind.
TEST(ASoundFile, MayHaveUncountedRowsBlankPagesAndUnusedLongValues) {
  CorruptibleSample sample;
  const TableDefinition table = sample.Table("revenues");
  Store32(sample.Page(table.page) + kJet4Layout.tdef_rows, table.row_count - 1);
  const std::uint32_t blank = sample.AddPage(), unused = sample.AddPage();
  // The map of free pages lists all beyond the end.
  for (const std::uint32_t page : {blank, unused}) sample.Toggle(kFreePagesMap, page);
  Store16(sample.Page(unused), 0x0101);
  Store32(sample.Page(unused) + kOwner, kLongValueOwner);
  Store16(sample.Page(unused) + 12, 1);
  Store16(sample.Page(unused) + kRowOffsets, 4000);
  std::string notes;
  for (const Finding& finding : sample.Findings()) {
    EXPECT_EQ(finding.kind, Finding::Kind::kNote) << finding.Text();
    notes += finding.Text() + "\n";
  }
  EXPECT_EQ(notes,
            "note: table 'revenues', page 39: the definition says that the table has 1645 rows, "
            "but there are 1646; no rows are concerned.\n"
            "note: page " +
                std::to_string(unused) +
                ": the page is space that nobody uses; no rows are concerned.\n");
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

// Every third row refers to none, every fortieth of the others to a missing one. However few keys
// fit into memory, exactly those are found, as long as the rows need not be read too often.
TEST(ARowThatRefersToAMissingOne, IsFoundAmongMoreKeysThanFitIntoMemory) {
  constexpr int kRows = 240;
  test::FileBuilder builder(1);
  std::vector<std::string> parents, children;
  for (std::int32_t i = 0; i < kRows; ++i) {
    parents.push_back(builder.FixedRow({true}, test::Stored(i)));
    const std::int32_t refers_to = i % 40 == 39 ? kRows + i : i / 2;
    children.push_back(builder.FixedRow({i % 3 != 0}, test::Stored(refers_to)));
  }
  builder.AddTable("parent", {.columns = {{"id", 4, 0, true, 0, 4}}}, parents);
  builder.AddTable("child", {.columns = {{"parent", 4, 0, true, 0, 4}}}, children);
  builder.AddRelationships({{"belongs", "child", "parent", "parent", "id", 0},
                            {"whole", "parent", "id", "parent", "id", 0}});
  const std::string file = builder.Finish();
  const auto* bytes = reinterpret_cast<const std::byte*>(file.data());
  const auto findings = [&](std::size_t keys) {
    std::string text;
    for (const Finding& finding :
         CheckDatabase({bytes, bytes + file.size()}, "related.mdb", {.related_keys = keys})) {
      if (finding.what.find("relationship") != std::string::npos) text += finding.Text() + "\n";
    }
    return text;
  };
  const std::string all = findings(10000);
  EXPECT_EQ(std::ranges::count(all, '\n'), 4) << all;
  const auto sorted = [](const std::string& text) {
    std::vector<std::string> lines = Split(text, "\n");
    std::ranges::sort(lines);
    return lines;
  };
  for (const std::size_t keys : {300U, 100U, 40U}) EXPECT_EQ(sorted(findings(keys)), sorted(all));
  EXPECT_THAT(findings(0), HasSubstr("relationship 'belongs': the tables have too many keys"));
}

TEST(CorruptProperties, AreFoundWhereverTheyAreTruncated) {
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
  // Only truncation after the signature and between chunks leaves valid properties.
  std::size_t valid = 0;
  for (std::size_t size = 1; size < whole.size(); ++size) {
    const std::string text = findings(whole.substr(0, size));
    valid += text.find("LvProp") == std::string::npos ? 1U : 0U;
  }
  EXPECT_EQ(valid, 4U);
}

TEST(CheckOfACorruptFile, GivesABoundedListOfFindings) {
  std::mt19937 random(20261121);
  for (int round = 0; round < (test::kSlowBuild ? 24 : 120); ++round) {
    CorruptibleSample sample;
    const std::uint32_t pages = sample.File()->page_count();
    for (int flip = 0; flip < 40; ++flip) {
      // Half the rounds hit the headers at the start of pages.
      const std::size_t at = random() % (round % 2 == 0 ? 64 : kPageSize);
      sample.Page(static_cast<std::uint32_t>(1 + random() % (pages - 1)))[at] =
          static_cast<std::byte>(random());
    }
    EXPECT_LE(sample.Findings().size(), 501U);
    EXPECT_LE(sample.Findings(kLittle).size(), 501U);
  }
}

TEST(CheckDatabase, RefusesAFileThatIsNotADatabase) {
  EXPECT_THROW(CheckDatabase(test::SourceDir() / "CMakeLists.txt"), RuntimeError);
  EXPECT_THROW(CheckDatabase(test::SourceDir() / "none.mdb"), RuntimeError);
}

}  // namespace
}  // namespace tenora::access
