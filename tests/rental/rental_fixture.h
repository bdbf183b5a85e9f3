// A session on a machine for tests: over an engine with scripted answers, so that the rental room
// can be handed rows that no well-kept database would hold, or over the sample agency.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "data/fake_engine.h"
#include "rental/session.h"
#include "support/fake_platform.h"

namespace tenora::test {

inline Date Day(int year, int month, int day) { return Date::FromCalendar(year, month, day); }

// Amounts in tests are written in cents.
inline Currency Cents(std::int64_t cents) { return Currency::FromTenThousandths(cents * 100); }

class ScriptedRental : public testing::Test {
 protected:
  ScriptedRental() {
    WriteWholeFile(machine.ProgramFolder() / "property.mdb", "");
    session.database.OpenDatabase();
  }

  // The answer to a scalar look-up; null values are empty sets.
  void AnswerLookup(const std::string& sql, Value value) {
    FakeResult& result = script.results[sql] = {.fields = {"result"}};
    if (!IsNull(value)) result.rows = {{std::move(value)}};
  }

  FakeScript script;
  FakePlatform machine{std::make_unique<FakeWorkspace>(script)};
  Session session{machine.Parts()};
};

class SampleAgency : public testing::Test {
 protected:
  SampleAgency() {
    machine.InstallSampleDatabase();
    session.database.OpenDatabase();
  }
  TenantRecord& Tenant(std::string_view reference) {
    TenantRecord* tenant = session.caches.FindTenant(reference);
    if (tenant == nullptr) throw std::runtime_error("no tenancy " + std::string(reference));
    return *tenant;
  }

  FakePlatform machine;
  Session session{machine.Parts()};
};

}  // namespace tenora::test
