// Loads the caches of tenants, owners, properties and account codes, the options and the custom
// fields from the rental database, at start-up and after the settings have changed.
#pragma once

#include <QObject>

#include "letters/custom_field_codes.h"
#include "rental/session.h"

namespace tenora {

class RentalDataLoad : public QObject {
  Q_OBJECT

 public:
  explicit RentalDataLoad(Session& session) : session_(session) {}

  // A step that fails shows its error, and the rest runs.
  void Load();

 signals:
  // For the status bar.
  void Told(const QString& message);
  void CustomFieldsRead(const tenora::CustomFieldCodes& codes);

 private:
  Session& session_;
};

}  // namespace tenora
