#include "ui/window/letter/insert_list.h"

#include <set>

#include "letters/template_library.h"

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

QStringList CodesFor(TemplateKind list, const CustomFieldCodes& custom_fields) {
  QStringList names;
  for (const MergeCode& code : MergeCodesOf(list)) {
    names.append(QString::fromStdString(std::string(code.name)));
  }
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
