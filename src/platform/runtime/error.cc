#include "platform/runtime/error.h"

#include <array>
#include <new>
#include <utility>

namespace tenora {
namespace {

struct StandardDescription {
  int number;
  std::string_view text;
};

constexpr std::array kStandardDescriptions{
    StandardDescription{error_number::kInvalidProcedureCall, "Invalid procedure call or argument"},
    StandardDescription{error_number::kOverflow, "Overflow"},
    StandardDescription{error_number::kOutOfMemory, "Out of memory"},
    StandardDescription{error_number::kSubscriptOutOfRange, "Subscript out of range"},
    StandardDescription{error_number::kTypeMismatch, "Type mismatch"},
    StandardDescription{error_number::kFileNotFound, "File not found"},
    StandardDescription{error_number::kDeviceIoError, "Device I/O error"},
    StandardDescription{error_number::kFileAlreadyExists, "File already exists"},
    StandardDescription{error_number::kDiskFull, "Disk full"},
    StandardDescription{error_number::kPermissionDenied, "Permission denied"},
    StandardDescription{error_number::kPathFileAccess, "Path/File access error"},
    StandardDescription{error_number::kPathNotFound, "Path not found"},
    StandardDescription{error_number::kObjectNotSet,
                        "Object variable or With block variable not set"},
    StandardDescription{error_number::kInvalidUseOfNull, "Invalid use of Null"},
    StandardDescription{error_number::kInvalidFileFormat, "Invalid file format"},
    StandardDescription{error_number::kLibraryFunctionNotFound, "Specified DLL function not found"},
    StandardDescription{error_number::kPrinterError, "Printer error"},
    StandardDescription{error_number::kCancelled, "Cancel was selected"},
};

}  // namespace

RuntimeError::RuntimeError(int number, const std::string& description, std::string source)
    : std::runtime_error(description), number_(number), source_(std::move(source)) {}

RuntimeError StandardError(int number, std::string_view detail) {
  std::string text = "Application-defined or object-defined error";
  for (const StandardDescription& entry : kStandardDescriptions) {
    if (entry.number == number) text = entry.text;
  }
  if (!detail.empty()) text.append(": ").append(detail);
  return RuntimeError(number, text);
}

RuntimeError WithDetail(const RuntimeError& error, std::string_view detail) {
  std::string text(error.description());
  if (text.ends_with('.')) text.pop_back();
  return RuntimeError(error.number(), text.append(": ").append(detail), error.source());
}

std::string ErrorText(int number, std::string_view description) {
  return std::to_string(number).append(" - ").append(description);
}

std::string ErrorText(const RuntimeError& error) {
  return ErrorText(error.number(), error.description());
}

RuntimeError CurrentError() {
  try {
    throw;
  } catch (const RuntimeError& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return StandardError(error_number::kOutOfMemory);
  } catch (const std::exception& error) {
    return RuntimeError(error_number::kInvalidProcedureCall, error.what());
  }
}

}  // namespace tenora
