// The engine's errors, with the statement or name concerned in the description.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "platform/access/engine_error.h"
#include "platform/runtime/error.h"

namespace tenora::query {

namespace engine_error = access::engine_error;

// An error of the database object; the statement is appended to the description.
RuntimeError StatementError(int number, std::string_view description, std::string_view statement);

// The description of an error about names that are no fields: they would be parameters.
std::string TooFewParameters(std::span<const std::string> unknown_names);

}  // namespace tenora::query
