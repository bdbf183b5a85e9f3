#include <cmath>
#include <cstdint>

#include "platform/query/functions/functions.h"
#include "platform/query/sql/statement_error.h"
#include "platform/query/values/decimal.h"
#include "platform/runtime/currency.h"

namespace tenora::query {
namespace {

// SQLite allocates the state zeroed and frees it.
struct Kept {
  sqlite3_value* value;
};

void KeepFirst(sqlite3_context* context, int, sqlite3_value** values) {
  auto* const kept = static_cast<Kept*>(sqlite3_aggregate_context(context, sizeof(Kept)));
  if (kept != nullptr && kept->value == nullptr) kept->value = sqlite3_value_dup(values[0]);
}

void KeepLast(sqlite3_context* context, int, sqlite3_value** values) {
  auto* const kept = static_cast<Kept*>(sqlite3_aggregate_context(context, sizeof(Kept)));
  if (kept == nullptr) return;
  sqlite3_value_free(kept->value);
  kept->value = sqlite3_value_dup(values[0]);
}

void GiveKept(sqlite3_context* context) {
  auto* const kept = static_cast<Kept*>(sqlite3_aggregate_context(context, 0));
  if (kept == nullptr || kept->value == nullptr) return sqlite3_result_null(context);
  sqlite3_result_value(context, kept->value);
  sqlite3_value_free(kept->value);
  kept->value = nullptr;
}

struct MoneySum {
  std::int64_t sum;
  std::int64_t count;
  bool overflow;
};

void AddMoney(sqlite3_context* context, int, sqlite3_value** values) {
  auto* const money = static_cast<MoneySum*>(sqlite3_aggregate_context(context, sizeof(MoneySum)));
  if (money == nullptr || sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  money->overflow |=
      __builtin_add_overflow(money->sum, sqlite3_value_int64(values[0]), &money->sum);
  ++money->count;
}

void GiveAverageMoney(sqlite3_context* context) {
  const auto* const money = static_cast<MoneySum*>(sqlite3_aggregate_context(context, 0));
  if (money == nullptr || money->count == 0) return sqlite3_result_null(context);
  if (money->overflow) return sqlite3_result_error(context, "integer overflow", -1);
  sqlite3_result_int64(
      context, Currency::FromTenThousandths(money->sum).Scaled(1, money->count).ten_thousandths());
}

struct DecimalSum {
  Decimal sum;
  std::int64_t count;
  bool overflow;
};

void AddDecimal(sqlite3_context* context, int, sqlite3_value** values) {
  auto* const total =
      static_cast<DecimalSum*>(sqlite3_aggregate_context(context, sizeof(DecimalSum)));
  if (total == nullptr || sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  const auto* const key = static_cast<const char*>(sqlite3_value_blob(values[0]));
  try {
    total->sum = total->sum +
                 Decimal::FromKey({key, static_cast<std::size_t>(sqlite3_value_bytes(values[0]))});
  } catch (const RuntimeError&) {
    total->overflow = true;
  }
  ++total->count;
}

template <bool kAverage>
void GiveDecimal(sqlite3_context* context) {
  const auto* const total = static_cast<DecimalSum*>(sqlite3_aggregate_context(context, 0));
  if (total == nullptr || total->count == 0) return sqlite3_result_null(context);
  if (total->overflow) return sqlite3_result_error(context, "integer overflow", -1);
  const std::string key = (kAverage ? total->sum / Decimal::Of(total->count) : total->sum).Key();
  sqlite3_result_blob64(context, key.data(), key.size(), SQLITE_TRANSIENT);
}

// Running mean and sum of squared distances from it (Welford's method), which stays accurate where
// the plain sum of squares would not.
struct Spread {
  std::int64_t count;
  double mean;
  double squares;
};

void AddToSpread(sqlite3_context* context, int, sqlite3_value** values) {
  auto* const spread = static_cast<Spread*>(sqlite3_aggregate_context(context, sizeof(Spread)));
  if (spread == nullptr || sqlite3_value_type(values[0]) == SQLITE_NULL) return;
  const double number = sqlite3_value_double(values[0]);
  const double distance = number - spread->mean;
  ++spread->count;
  spread->mean += distance / static_cast<double>(spread->count);
  spread->squares += distance * (number - spread->mean);
}

// Of a sample (kSample: divided by count - 1) or the population, as variance or standard deviation.
template <bool kSample, bool kRoot>
void GiveSpread(sqlite3_context* context) {
  const auto* const spread = static_cast<Spread*>(sqlite3_aggregate_context(context, 0));
  const std::int64_t divisor = (spread == nullptr ? 0 : spread->count) - (kSample ? 1 : 0);
  if (divisor <= 0) return sqlite3_result_null(context);
  const double variance = spread->squares / static_cast<double>(divisor);
  if (!std::isfinite(variance)) return sqlite3_result_error(context, "integer overflow", -1);
  sqlite3_result_double(context, kRoot ? std::sqrt(variance) : variance);
}

using Step = void (*)(sqlite3_context*, int, sqlite3_value**);
using Final = void (*)(sqlite3_context*);

void Register(sqlite3* connection, const char* name, Step step, Final final) {
  RequireDone(sqlite3_create_function_v2(connection, name, 1, SQLITE_UTF8, nullptr, nullptr, step,
                                         final, nullptr));
}

}  // namespace

void RegisterAggregates(sqlite3* connection) {
  Register(connection, "e_first", KeepFirst, GiveKept);
  Register(connection, "e_last", KeepLast, GiveKept);
  Register(connection, "e_avg_money", AddMoney, GiveAverageMoney);
  Register(connection, "e_sum_decimal", AddDecimal, GiveDecimal<false>);
  Register(connection, "e_avg_decimal", AddDecimal, GiveDecimal<true>);
  Register(connection, "e_stdev", AddToSpread, GiveSpread<true, true>);
  Register(connection, "e_stdevp", AddToSpread, GiveSpread<false, true>);
  Register(connection, "e_var", AddToSpread, GiveSpread<true, false>);
  Register(connection, "e_varp", AddToSpread, GiveSpread<false, false>);
}

}  // namespace tenora::query
