#include "data/options.h"

#include <algorithm>

#include "data/sql_text.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// No account has the code in it; it keeps the list of an "in" clause from being empty.
const std::string kNoCodes = "('xydhgus')";

}  // namespace

std::int16_t Options::WhatPaysFirst() {
  return ToInt16(database_.LookupText("WhatPaysFirst", "Options", "", "0"));
}

const std::string& Options::RentGroup() {
  if (rent_group_.empty()) rent_group_ = database_.LookupText("rent_group", "Options", "", "");
  return rent_group_;
}

const std::string& Options::ExtraChargeCodes() {
  if (!extra_charge_codes_.empty()) return extra_charge_codes_;
  RecordsetPtr set;
  database_.CreateSet(set, "select gl_code from glcodes where type = 1 and pay_extra_charges <> 0",
                      query::kForwardOnly, query::kReadOnly);
  // A failed read says nothing about the accounts: it is tried again at the next call.
  if (!set) return kNoCodes;
  std::string codes(kNoCodes, 0, kNoCodes.size() - 1);
  while (!database_.DataEOF(set)) {
    codes.append(",").append(SQLText(TextOf(set->Field("gl_code"))));
    database_.MoveNext(set);
  }
  database_.DataClose(set);
  extra_charge_codes_ = codes.append(")");
  return extra_charge_codes_;
}

void Options::LoadOptions() {
  RecordsetPtr set;
  database_.CreateSet(set, "select * from options", query::kForwardOnly, query::kReadOnly);
  if (database_.DataIsEmpty(set)) return;
  ResumeNext step(database_.platform().dialogs, "General - LoadOptions");
  // A field left empty in the package's own window is null: no, 0 or an empty text.
  const auto number = [&](std::string_view name) { return NullTo(set->Field(name), Value(false)); };
  const auto text = [&](std::string_view name) { return TextOf(set->Field(name)); };
  step([&] { SmtpSend = ToBool(number("SmtpSend")); });
  step([&] { SmtpAddress = text("SmtpAddress"); });
  step([&] { SmtpPort = ToInt16(number("SmtpPort")); });
  step([&] { SmtpSSL = ToBool(number("SmtpSSL")); });
  step([&] { SmtpUsername = text("SmtpUsername"); });
  // Of a branch on a server not every login may read it: there the column is missing.
  const bool withheld =
      database_.Origin() && std::ranges::none_of(set->FieldNames(), [](const std::string& name) {
        return EqualsNoCase(name, "SmtpPassword");
      });
  step([&] { SmtpPassword = withheld ? "" : text("SmtpPassword"); });
  step([&] { SmtpSender = text("SmtpSender"); });
  step([&] { SmtpRecipient = text("SmtpRecipient"); });
  database_.DataClose(set);
}

}  // namespace tenora
