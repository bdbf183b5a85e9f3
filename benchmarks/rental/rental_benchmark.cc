// The rental room over a whole database (the first argument; else the sample agency): loading the
// tenant cache before and after the tables are in memory, and the payment look-up of every tenant,
// one by one and of all at once. What both give is compared.
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "rental/all_tenancies.h"
#include "rental/details_comparison.h"
#include "rental/rent_account.h"
#include "rental/session.h"
#include "rental/tenant_lookups.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

template <typename Action>
double Milliseconds(Action&& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

void Run(const std::filesystem::path& file) {
  test::FakePlatform machine;
  std::filesystem::create_symlink(std::filesystem::absolute(file),
                                  machine.ProgramFolder() / "property.mdb");
  Session session(machine.Parts());
  std::vector<TenantRecord>& tenants = session.caches.Tenants;
  const auto load = [&] { session.caches.CacheTenants(session.database); };
  const auto look_up = [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) LastPayment(session, tenants[i], 0);
  };

  std::printf("%-44s %9.3f ms\n", "open", Milliseconds([&] { session.database.OpenDatabase(); }));
  std::printf("%-44s %9.3f ms\n", "CacheTenants, tables not in memory", Milliseconds(load));
  std::printf("%-44s %9.3f ms\n", "CacheTenants again", Milliseconds(load));
  if (tenants.empty()) return;
  std::printf("%-44s %9.3f ms\n", "LastPayment, tables not in memory",
              Milliseconds([&] { look_up(0, 1); }));
  const auto count = static_cast<double>(tenants.size());
  const double all = Milliseconds([&] { look_up(0, tenants.size()); });
  std::printf("%-44s %9.3f ms each of %zu\n", "LastPayment", all / count, tenants.size());
  const double accounts = Milliseconds([&] {
    for (const TenantRecord& tenant : tenants) RentAccount(session, tenant.Reference).PaidToDate(0);
  });
  // What reading the account anew for each of its three answers would add.
  std::printf("%-44s %9.3f ms each, %.2f times LastPayment if read thrice\n", "RentAccount",
              accounts / count, (all + 2 * accounts) / all);
  const auto read_all = [&](const TenancyNeeds& needs) {
    return Milliseconds([&] { const AllTenancies read(session, needs); });
  };
  std::printf("%-44s %9.3f ms\n", "AllTenancies, accounts", read_all({.account = true}));
  std::printf("%-44s %9.3f ms\n", "AllTenancies, everything",
              read_all({true, true, true, true, true, true}));
  session.caches.Load(session.database);
  std::size_t differences = 0;
  const double compared =
      Milliseconds([&] { differences = test::Differences(session, {}).size(); });
  std::printf("%-44s %9.3f ms, %zu differences\n", "compared with the look-ups of each", compared,
              differences);
}

}  // namespace
}  // namespace tenora

int main(int argc, char** argv) {
  tenora::Run(argc > 1 ? argv[1] : tenora::test::SampleDatabase());
  return 0;
}
