// What is known of all cached properties at once, as all_tenancies.h has it of tenancies.
#pragma once

#include <cstddef>
#include <memory>
#include <stop_token>
#include <string>

#include "rental/session.h"

namespace tenora {

// What is to be read besides the cached records.
struct PropertyNeeds {
  bool addresses = false;
  bool tenancies = false;  // how many, and their rents
  bool arrears = false;
};

class AllProperties {
 public:
  // As AllTenancies.
  AllProperties(Session& session, const PropertyNeeds& needs, const std::stop_token& stop = {});
  ~AllProperties();
  AllProperties(AllProperties&&) noexcept;
  AllProperties& operator=(AllProperties&&) noexcept;

  // In the order of the cache. What was not read is an error of the program: std::logic_error.
  const std::string& Code(std::size_t i) const;
  const std::string& Address(std::size_t i) const;  // in one line
  // Open tenancies, the sum of their rents whatever the frequency, and what those that owe
  // something owe together, which raises what RentAccount raises.
  int Tenancies(std::size_t i) const;
  Currency Rent(std::size_t i) const;
  Currency Arrears(std::size_t i) const;

 private:
  struct Data;
  std::unique_ptr<Data> data_;
};

}  // namespace tenora
