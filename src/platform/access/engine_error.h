// Error numbers of the database engine, as RuntimeError::number() reports them.
#pragma once

namespace tenora::access::engine_error {

inline constexpr int kNoCurrentRecord = 3021;
inline constexpr int kDuplicateKey = 3022;
inline constexpr int kFileNotFound = 3024;
inline constexpr int kDiskFull = 3026;
inline constexpr int kReadOnly = 3027;
inline constexpr int kNotAValidPassword = 3031;
inline constexpr int kTransactionOrder = 3034;
inline constexpr int kOutOfResources = 3035;
inline constexpr int kDiskOrNetworkError = 3043;
inline constexpr int kRecordTooLarge = 3047;
inline constexpr int kCorruptFile = 3049;
inline constexpr int kCannotLock = 3050;
inline constexpr int kCannotOpenFile = 3051;
inline constexpr int kNullInKey = 3058;
inline constexpr int kTimedOut = 3059;
inline constexpr int kTooFewParameters = 3061;
inline constexpr int kExecutedSelect = 3065;
inline constexpr int kNotUpdatable = 3073;
inline constexpr int kSyntax = 3075;
inline constexpr int kNoSuchTable = 3078;
inline constexpr int kAmbiguousName = 3079;
inline constexpr int kUnknownFunction = 3085;
inline constexpr int kOrderConflict = 3093;
inline constexpr int kAggregateInCriteria = 3096;
inline constexpr int kNoReadPermission = 3112;
inline constexpr int kNotGrouped = 3122;
inline constexpr int kNoSuchColumn = 3127;
inline constexpr int kNotASelect = 3129;
inline constexpr int kFieldTooSmall = 3163;
inline constexpr int kRecordDeleted = 3167;
inline constexpr int kChangedByAnother = 3197;
inline constexpr int kRelatedRecordsExist = 3200;
inline constexpr int kRelatedRecordRequired = 3201;
inline constexpr int kCurrentlyLocked = 3218;
inline constexpr int kInvalidOperation = 3219;
inline constexpr int kLockedByUser = 3260;
inline constexpr int kTableLockedByUser = 3261;
inline constexpr int kItemNotFound = 3265;
inline constexpr int kSubqueryColumns = 3306;
inline constexpr int kUnionColumns = 3307;
inline constexpr int kValueRequired = 3314;
inline constexpr int kZeroLength = 3315;
inline constexpr int kUnrecognizedFormat = 3343;
inline constexpr int kNumericOverflow = 3349;
inline constexpr int kTooComplex = 3360;
inline constexpr int kObjectClosed = 3420;
inline constexpr int kTypeConversion = 3421;
inline constexpr int kCriteriaType = 3464;

}  // namespace tenora::access::engine_error
