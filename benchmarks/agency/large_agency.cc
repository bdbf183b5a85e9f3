// Makes a large rental database: a copy of an agency's, filled with tenancies, each with years of
// weekly rent periods and payments, until the file has about the given size.
//
//   large_agency examples/agency/property.mdb /tmp/large.mdb 1000
//
// The tenancies of a group pay in the same weeks, as they do in an office's file, so that the
// payments of one are spread over many pages.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "agency/bulk_table.h"
#include "platform/access/database_writer.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using access::ColumnValue;

constexpr int kTenanciesOfGroup = 100;
constexpr int kWeeks = 110;
constexpr std::int64_t kFirstCode = 100000;  // beyond those of the sample agency
constexpr double kFirstMonday = 45236;       // 6 November 2023
constexpr std::size_t kNotes = 3000;         // characters of a tenancy's comments

std::string Code(const char* letters, std::int64_t number) {
  return letters + std::to_string(number);
}

Date Day(double serial) { return Date::FromSerial(serial); }

class Agency {
 public:
  explicit Agency(const fs::path& path) : path_(path) {}

  // Adds a group of tenancies with all that belongs to them.
  void AddGroup() {
    AddTenancies();
    InPages([this] { AddWeeks(); });
    next_ += kTenanciesOfGroup;
  }

  void BuildIndexes() {
    InPages([this] { periods_.BuildIndexes(); });
    InPages([this] { payments_.BuildIndexes(); });
  }

  std::int64_t tenancies() const { return next_ - kFirstCode; }

 private:
  std::int64_t Random(std::int64_t least, std::int64_t most) {
    return std::uniform_int_distribution<std::int64_t>(least, most)(random_);
  }
  static Currency RentOf(std::int64_t number) {
    return Currency::FromUnits(static_cast<std::int32_t>(300 + number % 50 * 10));
  }
  static std::string PropertyOf(std::int64_t number) { return Code("PR", number / 2); }

  void AddTenancies() {
    const auto transaction = access::WriteTransaction::Begin(path_);
    access::WritableTable& owners = transaction->Table("owner");
    access::WritableTable& properties = transaction->Table("property");
    access::WritableTable& tenancies = transaction->Table("tenancy");
    access::WritableTable& inspections = transaction->Table("insp_schedule");
    const std::string owner = Code("OW", next_ / kTenanciesOfGroup);
    owners.Insert({{"code", owner},
                   {"name", "Owner " + owner},
                   {"postal1", "PO Box " + std::to_string(next_)},
                   {"fee_percent", 7.5},
                   {"fee_value", 0.0},
                   {"closedstatus", false}});
    for (std::int64_t number = next_; number < next_ + kTenanciesOfGroup; number += 2) {
      properties.Insert({{"code", PropertyOf(number)},
                         {"address1", std::to_string(number % 400) + " Karaka Street"},
                         {"address2", std::string("Northcote")},
                         {"ownercode", owner}});
    }
    for (std::int64_t number = next_; number < next_ + kTenanciesOfGroup; ++number) {
      const std::string code = Code("T", number);
      tenancies.Insert({{"reference", code},
                        {"name", "Tenant " + std::to_string(Random(1, 1'000'000))},
                        {"property code", PropertyOf(number)},
                        {"monthly_day", std::int64_t{1}},
                        {"when started", Day(kFirstMonday)},
                        {"when ended", Day(0)},
                        {"last_inspection", Day(kFirstMonday + 700)},
                        {"lastrentrise", Day(kFirstMonday + 360)},
                        {"rentreviewdate", Day(kFirstMonday + 1100)},
                        {"email", code + "@example.test"},
                        {"bond", RentOf(number)},
                        {"closed_yn", number % 10 == 0},
                        {"current rent", RentOf(number)},
                        {"every_amt", std::int64_t{1}},
                        {"every_freq", std::string("Week")},
                        {"comments", std::string(kNotes, 'n')}});
      inspections.Insert(
          {{"tenant_code", code},
           {"inspection_date", Day(kFirstMonday + static_cast<double>(800 + number % 200))}});
    }
    transaction->Commit();
  }

  // Runs `work` in a transaction of the two large tables.
  template <typename Work>
  void InPages(const Work& work) {
    access::DiskStorage disk;
    access::ExclusiveAccess access(disk, path_, std::chrono::seconds(10));
    const auto pages = std::make_shared<access::ChangedPages>(access.path(), access.database());
    for (BulkTable* const table : {&periods_, &payments_}) table->Begin(pages);
    work();
    for (BulkTable* const table : {&periods_, &payments_}) table->End();
    pages->Commit(access, {});
  }

  void AddWeeks() {
    for (int week = 0; week < kWeeks; ++week) {
      const double monday = kFirstMonday + 7 * week;
      for (std::int64_t number = next_; number < next_ + kTenanciesOfGroup; ++number) {
        const std::string code = Code("T", number);
        const Currency rent = RentOf(number);
        periods_.Add({code, Day(monday), Day(monday + 6), rent, Currency(), rent, Currency()});
        if (Random(1, 100) == 1) continue;  // not paid
        payments_.Add({Null(), Day(monday + static_cast<double>(Random(0, 6))), "Direct Credit",
                       1.0, rent, Day(monday + 6), PropertyOf(number), Currency(), "RENT", code,
                       "Rēti " + std::to_string(week) + ", by the bank's file of " +
                           std::to_string(Random(100, 999))});
      }
    }
  }

  fs::path path_;
  BulkTable periods_{"rent_periods"}, payments_{"revenues"};
  std::int64_t next_ = kFirstCode;
  std::mt19937_64 random_{20261122};  // the same file each time
};

int Make(const fs::path& seed, const fs::path& target, std::uintmax_t megabytes) {
  const auto start = std::chrono::steady_clock::now();
  fs::copy_file(seed, target);
  fs::permissions(target, fs::perms::owner_write, fs::perm_options::add);
  Agency agency(target);
  // The indexes, built at the end, take a fifth.
  while (fs::file_size(target) < megabytes * 800'000) agency.AddGroup();
  agency.BuildIndexes();
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  std::printf("%s: %ju bytes, %lld tenancies, %.0f s\n", target.c_str(), fs::file_size(target),
              static_cast<long long>(agency.tenancies()), time.count());
  return 0;
}

}  // namespace
}  // namespace tenora

int main(int argc, char** argv) {
  const std::uintmax_t megabytes = argc == 4 ? std::strtoull(argv[3], nullptr, 10) : 0;
  // The format ends at 2 GB.
  if (megabytes == 0 || megabytes > 2100) {
    std::printf("Usage: large_agency DATABASE NEW_FILE MEGABYTES\n");
    return 2;
  }
  try {
    return tenora::Make(argv[1], argv[2], megabytes);
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    return 1;
  }
}
