// Running numbers that the server issues for a branch, a series for each name. Either the server
// issues them or the branch's file; who hands them over sees to it that never both do.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/server/server_connection.h"

namespace tenora::server {

struct NumberSeries {
  std::string name;
  std::int64_t last = 0;  // issued; 0: none yet
};

// Names that the engine takes for equal are one series. Not thread-safe; the connection outlives
// it. All functions raise ServerError.
class RunningNumbers {
 public:
  RunningNumbers(Connection& connection, std::int64_t branch)
      : connection_(connection), branch_(branch) {}
  // Of a branch by its name; raises 3151 where there is none that the login may see.
  static RunningNumbers Of(Connection& connection, const std::string& service,
                           const std::string& branch);

  // Whether the server issues them now, and whether this login may take them.
  bool IssuedHere();
  bool MayTake();
  std::optional<std::int64_t> Last(std::string_view name);
  // The next number, which nobody gets again; 1000 for a new series. Raises 70 where the file
  // issues them, or the login may not take them.
  std::int64_t Issue(std::string_view name);

  // What follows is for the owner of the database, who holds the branch's ImportTransaction in
  // another connection: so no other hand-over is under way.

  // What the last hand-over is called; empty: there was none.
  std::string Mark();
  // Whether the numbers of the hand-over of this name were handed back; none where it was not made
  // to this branch.
  std::optional<bool> HandedBack(const std::string& mark);
  // Takes the series over from the file; a number that was issued here before is not gone back to.
  // Nothing is issued yet.
  void Keep(const std::string& mark, const std::vector<NumberSeries>& series);
  void BeginIssuing();
  // After it, and after numbers being issued meanwhile, none is.
  void EndIssuing();
  // The file has the numbers of the last hand-over again.
  void CloseHandOver();
  std::vector<NumberSeries> All();

 private:
  ResultPtr Ask(const std::string& sql, std::vector<Parameter> more = {});

  Connection& connection_;
  std::int64_t branch_;
};

}  // namespace tenora::server
