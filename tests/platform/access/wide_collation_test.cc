// Index keys against those of the engine in two files that it has written: 93,129 texts each, every
// character of the basic plane alone, and Latin, Greek and Cyrillic letters beside signs, marks and
// one another. TENORA_COLLATION names their folder; without it the tests are skipped.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "platform/access/format/index_page.h"
#include "platform/access/storage/page_file.h"
#include "platform/access/writing_support.h"

namespace tenora::access {
namespace {

constexpr std::size_t kTexts = 93129;
constexpr const char* kTable = "probe";

class WideCollation : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    const char* const folder = std::getenv("TENORA_COLLATION");
    if (folder == nullptr) GTEST_SKIP() << "TENORA_COLLATION names no folder";
    const test::ProcessResult unpacked = test::RunProcess(
        {"xz", "--decompress", "--stdout", std::filesystem::path(folder) / GetParam()});
    ASSERT_EQ(unpacked.status, 0) << unpacked.errors;
    WriteWholeFile(path_, unpacked.output);
  }

  // The keys of all indexes of the table, in their order.
  std::vector<std::string> Keys() const {
    const auto file = PageFile::Open(path_);
    std::vector<std::string> keys;
    PageBuffer buffer;
    IndexPage page;
    for (std::uint32_t number = 1; number < file->page_count(); ++number) {
      file->Read(number, buffer);
      if (buffer.type() != PageType::kIndexLeaf) continue;
      ReadIndexPage(file->layout(), buffer, page);
      for (IndexEntry& entry : page.entries) keys.push_back(std::move(entry.key));
    }
    std::ranges::sort(keys);
    return keys;
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  test::ScratchFolder folder_;
  std::filesystem::path path_ = folder_ / "wide.mdb";
};

TEST_P(WideCollation, ChecksEveryKeyOfTheEngine) { test::ExpectHealthy(path()); }

TEST_P(WideCollation, WritesTheKeysThatTheEngineWrote) {
  const std::vector<std::string> before = Keys();
  const auto transaction = WriteTransaction::Begin(path());
  WritableTable& table = transaction->Table(kTable);
  std::vector<std::vector<ColumnValue>> rows;
  for (const RowId id : table.All()) {
    const std::vector<Value> fields = table.Read(id);
    std::vector<ColumnValue>& row = rows.emplace_back();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      row.push_back({table.columns()[i].name, fields[i]});
    }
    table.Delete(id);
  }
  EXPECT_EQ(rows.size(), kTexts);
  for (const std::vector<ColumnValue>& row : rows) table.Insert(row);
  transaction->Commit();
  EXPECT_EQ(Keys(), before);
  test::ExpectHealthy(path());
}

INSTANTIATE_TEST_SUITE_P(BothOrders, WideCollation,
                         testing::Values("collation-wide-2000.mdb.xz",
                                         "collation-wide-2010.accdb.xz"),
                         [](const auto& file) { return file.index == 0 ? "Legacy" : "General"; });

}  // namespace
}  // namespace tenora::access
