#include "rental/all_tenancies.h"

#include <compare>
#include <exception>
#include <memory>
#include <stdexcept>
#include <utility>

#include "data/sql_text.h"
#include "platform/query/text_match.h"
#include "rental/code_groups.h"
#include "rental/custom_field_parents.h"
#include "rental/custom_field_table.h"
#include "rental/lookup_rows.h"
#include "rental/rent_account.h"
#include "rental/table_pass.h"

namespace tenora {
namespace {

// Conversions that may fail are made when the value is asked for, as a look-up makes them.
struct Inspections {
  std::optional<Value> last, next;
};
struct StoredRentChange {
  Value date, rent;
};

void RequireRead(bool read) {
  if (!read) throw std::logic_error("a fact was asked for that was not read");
}

}  // namespace

struct AllTenancies::Data {
  class Tenancy : public TenancyDetails {
   public:
    Tenancy(const Data& data, std::size_t number, const TenantRecord& record)
        : record_(record), data_(data), number_(number) {
      // The cached record may hold the payment of a letter that was made.
      if (data.needs.account) ClearPayment(record_);
    }

    const TenantRecord& Record() const override { return record_; }
    const TenantRecord& WithAccount() const override {
      RequireRead(data_.needs.account);
      if (account_error_) std::rethrow_exception(account_error_);
      return record_;
    }
    bool HasPayment() const override {
      WithAccount();
      return has_payment_;
    }
    std::optional<Date> Inspection(bool next) const override {
      RequireRead(data_.needs.inspections);
      const Inspections& found = data_.inspections[data_.tenants.Of(number_)];
      const std::optional<Value>& date = next ? found.next : found.last;
      if (!date || IsNull(*date)) return std::nullopt;
      return ToDate(*date);
    }
    std::optional<RentChange> NextRentChange() const override {
      RequireRead(data_.needs.rent_changes);
      const auto& change = data_.rent_changes[data_.tenants.Of(number_)];
      if (!change || IsNull(change->date)) return std::nullopt;
      return RentChangeOf(change->date, change->rent);
    }
    std::string OwnerName() const override {
      RequireRead(data_.needs.owner_names);
      return data_.owner_names[data_.properties.Of(number_)];
    }
    std::string OwnerAccount() const override {
      RequireRead(data_.needs.owner_accounts);
      return data_.owner_accounts[data_.properties.Of(number_)];
    }
    std::string TenantField(std::string_view code) const override {
      RequireRead(data_.needs.tenant_fields);
      return data_.tenant_fields->Get(data_.tenants.Of(number_), code);
    }
    std::string PropertyField(std::string_view code) const override {
      RequireRead(data_.needs.property_fields);
      return data_.property_fields->Get(data_.properties.Of(number_), code);
    }
    std::optional<Date> LastLetter() const override { return last_letter; }

    // A payment of the tenancy; those of rent come before the others.
    void TakePayment(PaymentRow row) {
      if (!latest_) {
        latest_ = std::make_unique<PaymentRow>(std::move(row));
        return;
      }
      const std::partial_ordering order = CompareLateness(row, *latest_);
      if (order > 0) *latest_ = std::move(row);
      if (order == std::partial_ordering::unordered) undecided_ = true;
    }
    void EndOfRent(Session& session, const std::string& rent_group) {
      rent_payment_ = undecided_ ? FindRentPayment(session, record_, rent_group)
                      : latest_  ? RentPaymentOf(latest_->amount)
                                 : 0;
    }
    void EndOfPayments(Session& session, const std::string& rent_group) {
      try {
        if (undecided_) {
          has_payment_ = FindLastPayment(session, record_, rent_group, 0);
        } else if (latest_) {
          has_payment_ = true;
          ReadPayment(*latest_, record_);
        }
      } catch (...) {
        payment_error_ = std::current_exception();
      }
      latest_.reset();
    }
    // The steps of LastPayment, the payments read before: the first of its errors counts.
    void TakeAccount(const ReadOneAccount& read) {
      try {
        const ReadAccount one = read();
        record_.BalanceOwing = one.account.BalanceOwing().ToDouble();
        record_.LastPeriodFrom = one.latest_from;
        record_.LastPeriodTo = one.latest_to;
        if (payment_error_) std::rethrow_exception(payment_error_);
        FillPaidTo(one.account, rent_payment_, record_);
      } catch (...) {
        account_error_ = std::current_exception();
      }
    }

    std::optional<Date> last_letter;

   private:
    TenantRecord record_;
    const Data& data_;
    const std::size_t number_;
    bool has_payment_ = false;
    double rent_payment_ = 0;
    std::unique_ptr<PaymentRow> latest_;
    bool undecided_ = false;  // which is the latest
    std::exception_ptr payment_error_, account_error_;
  };

  Data(Session& session, const TenancyNeeds& asked, const std::stop_token& stop)
      : needs(asked), tenants(session.database.Texts()), properties(session.database.Texts()) {
    for (const TenantRecord& tenant : session.caches.Tenants) {
      all.emplace_back(*this, all.size(), tenant);
      tenants.Add(tenant.Reference);
      properties.Add(tenant.PropertyCode);
    }
    if (needs.account) ReadAccounts(session, stop);
    if (needs.inspections) ReadInspections(session, stop);
    if (needs.rent_changes) ReadRentChanges(session, stop);
    if (needs.owner_names) {
      ReadOfOwners(session, "owner.name", &OwnerNameOfProperty, &owner_names, stop);
    }
    if (needs.owner_accounts) {
      ReadOfOwners(session, "owner.account_number", &OwnerAccountOfProperty, &owner_accounts, stop);
    }
    Database& database = session.database;
    if (needs.tenant_fields) tenant_fields.emplace(database, kTenantParent, tenants.codes(), stop);
    if (needs.property_fields)
      property_fields.emplace(database, kPropertyParent, properties.codes(), stop);
  }

  void ReadAccounts(Session& session, const std::stop_token& stop) {
    ReadPayments(session, stop);
    ForEachRentAccount(session, tenants.codes(), stop,
                       [&](std::size_t code, const ReadOneAccount& read) {
                         for (const std::size_t i : tenants.Members(code)) all[i].TakeAccount(read);
                       });
  }

  // In no order: sorting all payments would take longer than all else.
  void ReadPayments(Session& session, const std::stop_token& stop) {
    const std::string rent_group = session.database.LookupText("rent_group", "Options", "", "");
    const query::TextMatch equal = session.database.Texts();
    TablePass pass(session.database, tenants.codes(), stop);
    const auto read = [&](const std::string& which) {
      pass.Each(
          "select tenant_code, [property code], date, recordnumber, tender, amount, tax from "
          "revenues where " +
              which,
          [&](std::size_t code, const query::Recordset& row) {
            const Value property = row.Field(1);
            const auto* const property_code = std::get_if<std::string>(&property);
            if (property_code == nullptr) return;
            for (const std::size_t i : tenants.Members(code)) {
              const std::string& own = all[i].Record().PropertyCode;
              if (own != *property_code && !equal(own, *property_code)) continue;
              all[i].TakePayment(
                  {row.Field(2), row.Field(3), row.Field(4), row.Field(5), row.Field(6)});
            }
          });
    };
    read(PaysRent(rent_group));
    for (Tenancy& tenancy : all) tenancy.EndOfRent(session, rent_group);
    read(std::string(kPaysExtraCharges) + " and not " + PaysRent(rent_group));
    for (Tenancy& tenancy : all) tenancy.EndOfPayments(session, rent_group);
  }

  void ReadInspections(Session& session, const std::stop_token& stop) {
    inspections.resize(tenants.codes().size());
    TablePass pass(session.database, tenants.codes(), stop);
    for (const bool next : {false, true}) {
      pass.Each("select tenant_code, inspection_date from insp_schedule where " +
                    InspectionCondition(session, next),
                [&](std::size_t code, const query::Recordset& row) {
                  std::optional<Value>& first =
                      next ? inspections[code].next : inspections[code].last;
                  if (!first) first = row.Field(1);
                });
    }
  }

  void ReadRentChanges(Session& session, const std::stop_token& stop) {
    rent_changes.resize(tenants.codes().size());
    TablePass(session.database, tenants.codes(), stop)
        .Each("select tenantcode, changedate, changevalue from rentchanges where " +
                  RentChangeCondition(session),
              [&](std::size_t code, const query::Recordset& row) {
                if (!rent_changes[code]) rent_changes[code] = {row.Field(1), row.Field(2)};
              });
  }

  // A column of the properties' owners. Of several rows for one property a query for it alone says
  // which is the first.
  void ReadOfOwners(Session& session, std::string_view column,
                    std::string (*look_up)(Session& session, std::string_view property_code),
                    std::vector<std::string>* texts, const std::stop_token& stop) {
    const std::vector<std::string>& codes = properties.codes();
    texts->resize(codes.size());
    std::vector<int> rows(codes.size());
    TablePass pass(session.database, codes, stop);
    pass.Each(std::string("select property.code, ")
                  .append(column)
                  .append(" from ")
                  .append(kOwnersOfProperties),
              [&](std::size_t code, const query::Recordset& row) {
                if (++rows[code] == 1) (*texts)[code] = TextOf(row.Field(1));
              });
    for (std::size_t i = 0; i < codes.size() && !pass.Stopped(); ++i) {
      if (rows[i] > 1) (*texts)[i] = look_up(session, codes[i]);
    }
  }

  const TenancyNeeds needs;
  std::vector<Tenancy> all;
  CodeGroups tenants, properties;
  std::vector<Inspections> inspections;                       // by tenancy's code
  std::vector<std::optional<StoredRentChange>> rent_changes;  // likewise
  std::vector<std::string> owner_names, owner_accounts;       // by property's code
  std::optional<CustomFieldTable> tenant_fields, property_fields;
};

AllTenancies::AllTenancies(Session& session, const TenancyNeeds& needs, const std::stop_token& stop)
    : data_(std::make_unique<Data>(session, needs, stop)) {}
AllTenancies::~AllTenancies() = default;
AllTenancies::AllTenancies(AllTenancies&&) noexcept = default;
AllTenancies& AllTenancies::operator=(AllTenancies&&) noexcept = default;

std::size_t AllTenancies::size() const { return data_->all.size(); }

const TenancyDetails& AllTenancies::operator[](std::size_t i) const { return data_->all.at(i); }

void AllTenancies::SetLastLetter(std::size_t i, std::optional<Date> day) {
  data_->all.at(i).last_letter = day;
}

}  // namespace tenora
