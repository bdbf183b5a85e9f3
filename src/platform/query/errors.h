// The engine's errors, with the statement or name concerned in the description.
#pragma once

#include <string>
#include <string_view>

#include "platform/runtime/error.h"

namespace tenora::query {

namespace engine_error {
inline constexpr int kNoCurrentRecord = 3021;
inline constexpr int kTimedOut = 3059;
inline constexpr int kTooFewParameters = 3061;
inline constexpr int kSyntax = 3075;
inline constexpr int kNoSuchTable = 3078;
inline constexpr int kAmbiguousName = 3079;
inline constexpr int kUnknownFunction = 3085;
inline constexpr int kOutOfResources = 3035;
inline constexpr int kOrderConflict = 3093;
inline constexpr int kAggregateInCriteria = 3096;
inline constexpr int kNotGrouped = 3122;
inline constexpr int kNotASelect = 3129;
inline constexpr int kInvalidOperation = 3219;
inline constexpr int kItemNotFound = 3265;
inline constexpr int kSubqueryColumns = 3306;
inline constexpr int kUnionColumns = 3307;
inline constexpr int kTooComplex = 3360;
inline constexpr int kObjectClosed = 3420;
inline constexpr int kCriteriaType = 3464;
}  // namespace engine_error

// An error of the database object; the statement is put behind the description.
RuntimeError StatementError(int number, std::string_view description, std::string_view statement);

// An error of a record set.
RuntimeError RecordsetError(int number, std::string_view description);

}  // namespace tenora::query
