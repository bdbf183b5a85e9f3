#include "rental/all_properties.h"

#include <exception>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "rental/code_groups.h"
#include "rental/lookup_rows.h"
#include "rental/rent_account.h"
#include "rental/table_pass.h"

namespace tenora {
namespace {

void RequireRead(bool read) {
  if (!read) throw std::logic_error("a fact was asked for that was not read");
}

struct Sums {
  int tenancies = 0;
  Currency rent = {}, arrears = {};
  std::exception_ptr error = {};  // of an account
};

}  // namespace

struct AllProperties::Data {
  Data(Session& session, const PropertyNeeds& asked, const std::stop_token& stop)
      : needs(asked), properties(session.database.Texts()), tenancies(session.database.Texts()) {
    for (const PropertyRecord& property : session.caches.Properties) properties.Add(property.Code);
    if (needs.addresses) ReadAddresses(session, stop);
    if (needs.tenancies || needs.arrears) ReadTenancies(session, stop);
    if (needs.arrears) ReadArrears(session, stop);
  }

  void ReadAddresses(Session& session, const std::stop_token& stop) {
    addresses.resize(properties.codes().size());
    TablePass(session.database, properties.codes(), stop)
        .Each("select code, address1, address2, address3 from property",
              [&](std::size_t property, const query::Recordset& row) {
                std::string address;
                for (const int column : {1, 2, 3}) {
                  const std::string line = TextOf(row.Field(column));
                  if (!line.empty()) address += (address.empty() ? "" : ", ") + line;
                }
                addresses[property] = address;
              });
  }

  void ReadTenancies(Session& session, const std::stop_token& stop) {
    std::map<std::string_view, double> rents;
    for (const TenantRecord& tenant : session.caches.Tenants) {
      rents.emplace(tenant.Reference, tenant.CurrentRent);
    }
    sums.resize(properties.codes().size());
    TablePass(session.database, properties.codes(), stop)
        .Each(std::string("select property.code, reference from ").append(kOpenTenanciesOfOwners),
              [&](std::size_t property, const query::Recordset& row) {
                const std::string tenancy = TextOf(row.Field(1));
                tenancies.Add(tenancy);
                property_of.push_back(property);
                ++sums[property].tenancies;
                const auto rent = rents.find(tenancy);
                if (rent != rents.end()) sums[property].rent += Currency::FromDouble(rent->second);
              });
  }

  void ReadArrears(Session& session, const std::stop_token& stop) {
    ForEachRentAccount(session, tenancies.codes(), stop,
                       [&](std::size_t code, const ReadOneAccount& read) {
                         Currency owing;
                         std::exception_ptr error;
                         try {
                           owing = read().account.BalanceOwing();
                         } catch (...) {
                           error = std::current_exception();
                         }
                         for (const std::size_t tenancy : tenancies.Members(code)) {
                           Sums& sum = sums[property_of[tenancy]];
                           if (owing > Currency()) sum.arrears += owing;
                           if (error) sum.error = error;
                         }
                       });
  }

  const PropertyNeeds needs;
  CodeGroups properties;
  std::vector<std::string> addresses;  // by property's code
  std::vector<Sums> sums;              // likewise
  CodeGroups tenancies;                // open ones
  std::vector<std::size_t> property_of;
};

AllProperties::AllProperties(Session& session, const PropertyNeeds& needs,
                             const std::stop_token& stop)
    : data_(std::make_unique<Data>(session, needs, stop)) {}
AllProperties::~AllProperties() = default;
AllProperties::AllProperties(AllProperties&&) noexcept = default;
AllProperties& AllProperties::operator=(AllProperties&&) noexcept = default;

const std::string& AllProperties::Code(std::size_t i) const {
  return data_->properties.codes()[data_->properties.Of(i)];
}

const std::string& AllProperties::Address(std::size_t i) const {
  RequireRead(data_->needs.addresses);
  return data_->addresses[data_->properties.Of(i)];
}

int AllProperties::Tenancies(std::size_t i) const {
  RequireRead(data_->needs.tenancies);
  return data_->sums[data_->properties.Of(i)].tenancies;
}

Currency AllProperties::Rent(std::size_t i) const {
  RequireRead(data_->needs.tenancies);
  return data_->sums[data_->properties.Of(i)].rent;
}

Currency AllProperties::Arrears(std::size_t i) const {
  RequireRead(data_->needs.arrears);
  const Sums& sums = data_->sums[data_->properties.Of(i)];
  if (sums.error) std::rethrow_exception(sums.error);
  return sums.arrears;
}

}  // namespace tenora
