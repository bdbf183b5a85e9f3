// The working copies of the rental data brought up to date.
#pragma once

#include "rental/session.h"

namespace tenora {

// Opens the database, reloads the caches and the options and closes it. False when the database
// could not be opened or a query failed, which has been shown.
bool ReloadRentalData(Session& session);

}  // namespace tenora
