// Fills the caches of tenants, owners, properties and account codes, the options and the custom
// fields from the rental database, for the window as it starts and after its settings changed.
#pragma once

#include <QObject>

#include "letters/custom_field_codes.h"
#include "rental/session.h"

namespace tenora {

class RentalDataLoad : public QObject {
  Q_OBJECT

 public:
  explicit RentalDataLoad(Session& session) : session_(session) {}

  // What fails is shown, and the rest goes on.
  void Load();

 signals:
  // For the status bar.
  void Told(const QString& message);
  void CustomFieldsRead(const tenora::CustomFieldCodes& codes);

 private:
  Session& session_;
};

}  // namespace tenora
