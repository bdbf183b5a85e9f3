// What is known of all cached owners at once, as all_tenancies.h has it of tenancies.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>

#include "rental/session.h"
#include "rental/tenancy_details.h"

namespace tenora {

// What is to be read besides the cached records.
struct OwnerNeeds {
  bool properties = false;  // how many
  bool tenancies = false;   // how many
  bool arrears = false;
  bool fields = false;

  bool operator==(const OwnerNeeds&) const = default;
};

class AllOwners {
 public:
  // As AllTenancies.
  AllOwners(Session& session, const OwnerNeeds& needs, const std::stop_token& stop = {});
  ~AllOwners();
  AllOwners(AllOwners&&) noexcept;
  AllOwners& operator=(AllOwners&&) noexcept;

  // In the order of the cache.
  std::size_t size() const;
  // Gives what LookedUpOwner gives of the same owner, and raises what that raises.
  const OwnerDetails& operator[](std::size_t i) const;

  void SetLastLetter(std::size_t i, std::optional<Date> day);

 private:
  struct Data;
  std::unique_ptr<Data> data_;
};

}  // namespace tenora
