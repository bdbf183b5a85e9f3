// How long every row and field of an Access-format file takes to read, the opening included, beside
// mdb-export printing the same tables. TENORA_BENCH_DB names the file.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "platform/access/database_file.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using access::ColumnType;

struct Counts {
  std::size_t rows = 0, fields = 0, bytes = 0;
};

double SecondsOf(const auto& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The size of the field's content, so that it has to be decoded.
std::size_t ReadField(access::RowCursor& rows, ColumnType type, std::size_t i) {
  switch (type) {
    case ColumnType::kBoolean:
      return rows.Boolean(i);
    case ColumnType::kCurrency:
      return rows.TenThousandths(i) != 0 ? 8 : 0;
    case ColumnType::kSingle:
    case ColumnType::kDouble:
    case ColumnType::kDateTime:
    case ColumnType::kDateTimeExtended:
      return rows.Double(i) != 0 ? 8 : 0;
    case ColumnType::kText:
    case ColumnType::kMemo:
    case ColumnType::kGuid:
    case ColumnType::kDecimal:
      return rows.Text(i).size();
    case ColumnType::kBinary:
    case ColumnType::kOle:
      return rows.Bytes(i).size();
    default:
      return rows.Integer(i) != 0 ? 4 : 0;
  }
}

Counts ReadAll(const char* path) {
  Counts counts;
  const auto database = access::DatabaseFile::Open(path);
  for (const std::string& name : database->TableNames()) {
    const access::Table& table = *database->FindTable(name);
    for (const auto rows = table.Rows(); rows->Next(); ++counts.rows) {
      for (std::size_t i = 0; i < table.columns().size(); ++i, ++counts.fields) {
        counts.bytes += ReadField(*rows, table.columns()[i].type, i);
      }
    }
  }
  return counts;
}

void Export(const char* path) {
  for (const std::string& name : access::DatabaseFile::Open(path)->TableNames()) {
    test::RunProcess({"mdb-export", path, name});
  }
}

int Run(const char* path) {
  constexpr int kRounds = 5;
  Counts counts;
  double best = 1e9;
  for (int i = 0; i < kRounds; ++i) {
    best = std::min(best, SecondsOf([&] { counts = ReadAll(path); }));
  }
  std::printf("read: %.4f s for %zu rows, %zu fields, %zu bytes of content (best of %d)\n", best,
              counts.rows, counts.fields, counts.bytes, kRounds);
  if (test::RunProcess({"mdb-export", "--version"}).status != 0) {
    std::printf("mdb-export is not installed: no ratio\n");
    return 0;
  }
  const double peer = SecondsOf([&] { Export(path); });
  std::printf("mdb-export: %.2f s, %.0f times as long\n", peer, peer / best);
  return 0;
}

}  // namespace
}  // namespace tenora

int main() {
  const char* path = std::getenv("TENORA_BENCH_DB");
  if (path == nullptr) {
    std::printf("skipped: TENORA_BENCH_DB does not name a database\n");
    return 0;
  }
  try {
    return tenora::Run(path);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
