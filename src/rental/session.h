// The state of one run of the program: settings, database, options, caches. Main makes one and
// passes it on; a test can have several.
#pragma once

#include <memory>
#include <string>

#include "data/database.h"
#include "data/options.h"
#include "data/program.h"
#include "data/settings.h"
#include "platform/runtime/scratch_cleanup.h"
#include "rental/caches.h"

namespace tenora {

class DetachedSession;

struct Session {
  // With kLook nothing that is done with the session changes the database: a merge shows the next
  // receipt number without taking it.
  explicit Session(const Platform& parts, DatabaseUse use = DatabaseUse::kChange)
      : platform(parts), settings(parts), database(parts, settings, use), options(database) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Opens the database, reloads the caches and the options and closes it. False when the database
  // could not be opened or a query failed, which has been shown.
  bool ReloadRentalData();

  // Sets the cheque word: "Cheque" where the short date of 22 December 2000 begins with "2", the
  // day (or the year) first; else "Check". It is the name of the folder of cheque templates too.
  // Errors are ignored.
  void SetChequeWord();

  // The session for threads beside the windows', kept from one work to the next; another one after
  // the settings have named another file. Called on this session's thread. Raises what
  // Database::Location raises.
  std::shared_ptr<DetachedSession> Beside();

  // Removes, as long as the result lives, what killed processes have left in the data folder, the
  // folder of the user's settings and the system's folder for temporary files.
  ScratchSweep SweepScratchFiles();

  Platform platform;
  Settings settings;
  Database database;
  Options options;
  Caches caches;
  // The day up to which schedules are extended; the empty date (year 1899) means not set, and
  // nothing sets it yet.
  Date as_at_date;
  std::string cheque_word = "Cheque";

 private:
  std::shared_ptr<DetachedSession> beside_;
};

}  // namespace tenora
