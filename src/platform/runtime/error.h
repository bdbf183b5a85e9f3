// The run-time errors of the system: a number, a description and the source that raised it. Every
// procedure that traps errors shows them as number, " - " and description.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace tenora {

// The numbers of the run-time system, which any module may raise. Two components have ranges of
// their own: the database engine (platform/access/engine_error.h) and the mail transport
// (platform/mail/smtp_client.h).
namespace error_number {
inline constexpr int kInvalidProcedureCall = 5;
inline constexpr int kOverflow = 6;
inline constexpr int kOutOfMemory = 7;
inline constexpr int kSubscriptOutOfRange = 9;
inline constexpr int kDivisionByZero = 11;
inline constexpr int kTypeMismatch = 13;
inline constexpr int kFileNotFound = 53;
inline constexpr int kDeviceIoError = 57;
inline constexpr int kFileAlreadyExists = 58;
inline constexpr int kDiskFull = 61;
inline constexpr int kPermissionDenied = 70;
inline constexpr int kPathFileAccess = 75;
inline constexpr int kPathNotFound = 76;
inline constexpr int kObjectNotSet = 91;
inline constexpr int kInvalidUseOfNull = 94;
inline constexpr int kInvalidFileFormat = 321;
inline constexpr int kLibraryFunctionNotFound = 453;
inline constexpr int kPrinterError = 482;
inline constexpr int kCancelled = 32755;
}  // namespace error_number

class RuntimeError : public std::runtime_error {
 public:
  // `source` names the component that raised the error, for example the engine's "DAO.Database".
  RuntimeError(int number, const std::string& description, std::string source = "Tenora");

  int number() const { return number_; }
  std::string_view description() const { return what(); }
  const std::string& source() const { return source_; }

 private:
  int number_;
  std::string source_;
};

// The error of a number the run-time system itself defines, with its standard description;
// `detail`, when given, is appended as ": detail" so that the message names the file or value
// concerned.
RuntimeError StandardError(int number, std::string_view detail = {});

// The same error with ": detail" after its description, in place of its full stop.
RuntimeError WithDetail(const RuntimeError& error, std::string_view detail);

// Runs `body`; an error it raises gets what `subject()` says as its detail.
template <typename Subject, typename Body>
decltype(auto) About(const Subject& subject, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const RuntimeError& error) {
    throw WithDetail(error, subject());
  }
}

// The text every message box shows: "13 - Type mismatch".
std::string ErrorText(int number, std::string_view description);
std::string ErrorText(const RuntimeError& error);

// Number and text of any exception in flight: a RuntimeError as it is, everything else as number 5
// with its what(). Call inside a catch block.
RuntimeError CurrentError();

}  // namespace tenora
