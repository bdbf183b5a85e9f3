#include "ui/window/letter/insert_list.h"

#include <set>

#include "letters/template_library.h"
#include "merge/form_names.h"

namespace tenora {

TemplateKind ListFor(std::string_view letter_kind) {
  if (letter_kind == kTemplates || letter_kind == kTenantLetter) return TemplateKind::kTenant;
  if (letter_kind == kOwnerTemplates || letter_kind == kOwnerLetter) return TemplateKind::kOwner;
  return TemplateKind::kCheque;
}

std::string ListName(TemplateKind list, const std::string& cheque_word) {
  switch (list) {
    case TemplateKind::kTenant:
      return "Tenant";
    case TemplateKind::kOwner:
      return "Owner";
    default:
      return cheque_word;
  }
}

namespace {

// Beginnings and ends of conditions and repetitions, and what repetitions have.
template <typename Add>
void AddForms(TemplateKind list, Add&& add) {
  const std::string condition =
      list == TemplateKind::kTenant ? "If Balance Owing > 0" : "If Arrears > 0";
  add(condition);
  add("Else " + condition);
  for (const char* const form : {"Else", "End If", "End Each"}) add(form);
  for (const Collection& collection : Collections()) {
    if (!collection.of_tenancy && list != TemplateKind::kOwner) continue;
    add(std::string("Each ").append(collection.name));
    for (const std::string_view column : collection.Names().All()) add(column);
    add(collection.CountName());
    for (const std::string& total : collection.TotalNames()) add(total);
  }
  add(kOpeningBalance);
}

}  // namespace

QStringList CodesFor(TemplateKind list, const CustomFieldCodes& custom_fields) {
  QStringList names;
  for (const MergeCode& code : MergeCodesOf(list)) {
    names.append(QString::fromStdString(std::string(code.name)));
  }
  const auto add = [&names](std::string_view name) {
    const QString shown = QString::fromStdString(std::string(name));
    if (!names.contains(shown)) names.append(shown);
  };
  for (const std::string_view fact : PrintedFacts(list)) add(fact);
  if (list != TemplateKind::kCheque) AddForms(list, add);
  const auto add_fields = [&names](const std::set<std::string>& codes, std::string_view prefix) {
    for (const std::string& code : codes) {
      names.append(QString::fromStdString(std::string(prefix).append(code)));
    }
  };
  if (list == TemplateKind::kOwner) add_fields(custom_fields.owner, kOwnerCustomPrefix);
  if (list == TemplateKind::kTenant) {
    add_fields(custom_fields.tenant, kTenantCustomPrefix);
    add_fields(custom_fields.property, kPropertyCustomPrefix);
    names.append(QString::fromLatin1(kBuildingReceiptNumber.data()));
  }
  return names;
}

}  // namespace tenora
