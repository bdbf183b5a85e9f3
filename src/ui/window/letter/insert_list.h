// The insert lists: the merge codes that fit a letter, one list for each kind of template.
#pragma once

#include <QStringList>
#include <string>
#include <string_view>

#include "letters/custom_field_codes.h"
#include "merge/merge_codes.h"

namespace tenora {

// The list for a letter of this kind; cheque templates have the cheque word for their kind.
TemplateKind ListFor(std::string_view letter_kind);

// "Tenant", "Owner" or the cheque word.
std::string ListName(TemplateKind list, const std::string& cheque_word);

// Every code that the merge of such a letter fills, those of the custom fields included, for the
// editor to mark and complete.
QStringList CodesFor(TemplateKind list, const CustomFieldCodes& custom_fields);

}  // namespace tenora
