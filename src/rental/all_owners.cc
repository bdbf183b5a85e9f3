#include "rental/all_owners.h"

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "rental/code_groups.h"
#include "rental/custom_field_parents.h"
#include "rental/custom_field_table.h"
#include "rental/lookup_rows.h"
#include "rental/rent_account.h"
#include "rental/table_pass.h"

namespace tenora {
namespace {

void RequireRead(bool read) {
  if (!read) throw std::logic_error("a fact was asked for that was not read");
}

struct Balance {
  Currency owing = {};
  std::exception_ptr error = {};
};

}  // namespace

struct AllOwners::Data {
  class Owner : public OwnerDetails {
   public:
    Owner(const Data& data, std::size_t number, const OwnerRecord& record)
        : record_(record), data_(data), number_(number) {}

    const OwnerRecord& Record() const override { return record_; }
    int Properties() const override {
      RequireRead(data_.needs.properties);
      return data_.properties[Code()];
    }
    int Tenancies() const override {
      RequireRead(data_.needs.tenancies);
      return static_cast<int>(data_.tenancies_of[Code()].size());
    }
    Currency Arrears() const override {
      RequireRead(data_.needs.arrears);
      Currency arrears;
      for (const std::size_t tenancy : data_.tenancies_of[Code()]) {
        const Balance& balance = data_.balances[data_.tenancies.Of(tenancy)];
        if (balance.error) std::rethrow_exception(balance.error);
        if (balance.owing > Currency()) arrears += balance.owing;
      }
      return arrears;
    }
    std::string OwnerField(std::string_view code) const override {
      RequireRead(data_.needs.fields);
      return data_.fields->Get(Code(), code);
    }
    std::optional<Date> LastLetter() const override { return last_letter; }

    std::optional<Date> last_letter;

   private:
    std::size_t Code() const { return data_.owners.Of(number_); }

    OwnerRecord record_;
    const Data& data_;
    const std::size_t number_;
  };

  Data(Session& session, const OwnerNeeds& asked, const std::stop_token& stop)
      : needs(asked), owners(session.database.Texts()), tenancies(session.database.Texts()) {
    for (const OwnerRecord& owner : session.caches.Owners) {
      all.emplace_back(*this, all.size(), owner);
      owners.Add(owner.Code);
    }
    if (needs.properties) ReadProperties(session, stop);
    if (needs.tenancies || needs.arrears) ReadTenancies(session, stop);
    if (needs.arrears) ReadBalances(session, stop);
    if (needs.fields) fields.emplace(session.database, kOwnerParent, owners.codes(), stop);
  }

  void ReadProperties(Session& session, const std::stop_token& stop) {
    properties.resize(owners.codes().size());
    TablePass(session.database, owners.codes(), stop)
        .Each("select ownercode from property",
              [&](std::size_t owner, const query::Recordset&) { ++properties[owner]; });
  }

  void ReadTenancies(Session& session, const std::stop_token& stop) {
    tenancies_of.resize(owners.codes().size());
    std::size_t count = 0;
    TablePass(session.database, owners.codes(), stop)
        .Each(std::string("select property.ownercode, reference from ")
                  .append(kOpenTenanciesOfOwners),
              [&](std::size_t owner, const query::Recordset& row) {
                tenancies.Add(TextOf(row.Field(1)));
                tenancies_of[owner].push_back(count++);
              });
  }

  void ReadBalances(Session& session, const std::stop_token& stop) {
    balances.resize(tenancies.codes().size());
    ForEachRentAccount(session, tenancies.codes(), stop,
                       [&](std::size_t code, const ReadOneAccount& read) {
                         try {
                           balances[code].owing = read().account.BalanceOwing();
                         } catch (...) {
                           balances[code].error = std::current_exception();
                         }
                       });
  }

  const OwnerNeeds needs;
  std::vector<Owner> all;
  CodeGroups owners;
  std::vector<int> properties;                         // by owner's code
  CodeGroups tenancies;                                // open ones of these owners
  std::vector<std::vector<std::size_t>> tenancies_of;  // by owner's code
  std::vector<Balance> balances;                       // by tenancy's code
  std::optional<CustomFieldTable> fields;
};

AllOwners::AllOwners(Session& session, const OwnerNeeds& needs, const std::stop_token& stop)
    : data_(std::make_unique<Data>(session, needs, stop)) {}
AllOwners::~AllOwners() = default;
AllOwners::AllOwners(AllOwners&&) noexcept = default;
AllOwners& AllOwners::operator=(AllOwners&&) noexcept = default;

std::size_t AllOwners::size() const { return data_->all.size(); }

const OwnerDetails& AllOwners::operator[](std::size_t i) const { return data_->all.at(i); }

void AllOwners::SetLastLetter(std::size_t i, std::optional<Date> day) {
  data_->all.at(i).last_letter = day;
}

}  // namespace tenora
