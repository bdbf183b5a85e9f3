#include "ui/window/main/rental_data_load.h"

#include "data/database.h"
#include "platform/dialogs/guard.h"

namespace tenora {

void RentalDataLoad::Load() {
  Database& database = session_.database;
  const OpenedDatabase opened(database);
  // The error has been shown; each of the loads below would only fail again.
  if (!database.IsOpen()) {
    emit Told(
        tr("The rental database could not be read: tenants and owners are "
           "missing."));
    return;
  }
  ResumeNext step(session_.platform.dialogs, "frmMain - MDIForm_Load");
  session_.caches.Load(database, [&step](const Caches::LoadStep& load) { step(load); });
  step([&] { session_.options.LoadOptions(); });
  step([&] { emit CustomFieldsRead(ReadCustomFieldCodes(database)); });
}

}  // namespace tenora
