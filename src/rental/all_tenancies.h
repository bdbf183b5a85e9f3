// What is known of all cached tenancies at once, for tables and filters of them: a few statements
// over whole tables instead of a dozen for each tenancy.
//
// Reading needs a session whose database is open and whose caches are loaded, on the thread that
// uses that session; beside a window that is a DetachedSession's. What has been read is a copy: it
// needs no session any more and may be handed to another thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

#include "rental/session.h"
#include "rental/tenancy_details.h"

namespace tenora {

// What is to be read besides the cached records.
struct TenancyNeeds {
  bool account = false;  // last payment, balance, paid-to dates, period
  bool inspections = false;
  bool rent_changes = false;
  bool owner_names = false;
  bool owner_accounts = false;
  bool tenant_fields = false;
  bool property_fields = false;

  bool operator==(const TenancyNeeds&) const = default;
};

class AllTenancies {
 public:
  // Raises 91 when a table cannot be read, which has been shown. When a stop is asked for, it ends
  // soon, and what is here is incomplete.
  AllTenancies(Session& session, const TenancyNeeds& needs, const std::stop_token& stop = {});
  ~AllTenancies();
  AllTenancies(AllTenancies&&) noexcept;
  AllTenancies& operator=(AllTenancies&&) noexcept;

  // In the order of the cache.
  std::size_t size() const;
  // Gives exactly what LookedUpTenancy gives of the same tenancy, and raises what that raises: a
  // row that cannot be read concerns one tenancy. To ask for what was not read is an error of the
  // program: std::logic_error.
  const TenancyDetails& operator[](std::size_t i) const;

  void SetLastLetter(std::size_t i, std::optional<Date> day);

 private:
  struct Data;
  std::unique_ptr<Data> data_;
};

}  // namespace tenora
