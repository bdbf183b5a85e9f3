// What is known of one tenancy, or of one owner, wherever it is read from: by a query each for one
// letter, or with those of all others for a table of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/runtime/currency.h"
#include "rental/session.h"
#include "rental/tenant_lookups.h"

namespace tenora {

class TenancyDetails {
 public:
  virtual ~TenancyDetails() = default;
  virtual const TenantRecord& Record() const = 0;
  // The same with its fields of the last payment, the balance, the paid-to dates and the period.
  virtual const TenantRecord& WithAccount() const = 0;
  // False: the fields of the last payment are empty.
  virtual bool HasPayment() const = 0;
  virtual std::optional<Date> Inspection(bool next) const = 0;
  virtual std::optional<RentChange> NextRentChange() const = 0;
  virtual std::string OwnerName() const = 0;
  // The number of the bank account of the property's owner.
  virtual std::string OwnerAccount() const = 0;
  // Fields of the office's own; empty for one that the record does not have.
  virtual std::string TenantField(std::string_view code) const = 0;
  virtual std::string PropertyField(std::string_view code) const = 0;
  // Of the present template; none where none is known.
  virtual std::optional<Date> LastLetter() const { return std::nullopt; }
};

class OwnerDetails {
 public:
  virtual ~OwnerDetails() = default;
  virtual const OwnerRecord& Record() const = 0;
  virtual int Properties() const = 0;
  // Tenancies of those that are not closed, and what those that owe something owe together.
  virtual int Tenancies() const = 0;
  virtual Currency Arrears() const = 0;
  virtual std::string OwnerField(std::string_view code) const = 0;
  virtual std::optional<Date> LastLetter() const { return std::nullopt; }
};

// Days since rent should have been paid: from the paid-to date to today; 0 for a tenancy that owes
// nothing, has paid ahead or has no periods.
std::int64_t DaysBehind(const TenantRecord& with_account, Date today);

// By queries when something is asked for, the account once. The session's database is open; it and
// the record outlive this. `receipt_number` as LastPayment's.
class LookedUpTenancy : public TenancyDetails {
 public:
  LookedUpTenancy(Session& session, TenantRecord& tenant, std::int32_t receipt_number)
      : session_(session), tenant_(tenant), receipt_number_(receipt_number) {}

  const TenantRecord& Record() const override { return tenant_; }
  const TenantRecord& WithAccount() const override;
  bool HasPayment() const override;
  std::optional<Date> Inspection(bool next) const override;
  std::optional<RentChange> NextRentChange() const override;
  std::string OwnerName() const override;
  std::string OwnerAccount() const override;
  std::string TenantField(std::string_view code) const override;
  std::string PropertyField(std::string_view code) const override;
  // Where the account has been read, HasPayment; none else. The record then has what LastPayment
  // fills, which need not be looked up again.
  const std::optional<bool>& PaymentIfRead() const { return has_payment_; }

 private:
  Session& session_;
  TenantRecord& tenant_;
  const std::int32_t receipt_number_;
  mutable std::optional<bool> has_payment_;  // none before the account has been read
};

// As LookedUpTenancy.
class LookedUpOwner : public OwnerDetails {
 public:
  LookedUpOwner(Session& session, const OwnerRecord& owner) : session_(session), owner_(owner) {}

  const OwnerRecord& Record() const override { return owner_; }
  int Properties() const override;
  int Tenancies() const override;
  Currency Arrears() const override;
  std::string OwnerField(std::string_view code) const override;

 private:
  Session& session_;
  const OwnerRecord& owner_;
};

}  // namespace tenora
