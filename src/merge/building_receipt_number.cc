#include "merge/building_receipt_number.h"

#include <string>

#include "merge/catalogue.h"
#include "merge/replace_code.h"
#include "platform/dialogs/dialogs.h"

namespace tenora {

bool InsertBuildingReceiptNumber(const MergeTarget& target, std::string_view property_code) {
  Session& session = target.session;
  const std::string building = session.database.LookupText(
      "parent_property", "property", " where code = '" + std::string(property_code) + "'", "");
  if (building.empty()) {
    ReplaceCode(target, kBuildingReceiptNumber, "");
    return true;
  }
  session.platform.dialogs.Say("The letter '" + target.letter.LetterTitle +
                               "' asks for a building receipt number (building '" + building +
                               "'), which this version cannot issue.\r\n"
                               "The code stays in the letter.");
  return false;
}

}  // namespace tenora
