// The error that a step of a test raises.
#pragma once

#include <optional>
#include <string>

#include "platform/runtime/error.h"

namespace tenora::test {

// Nothing when the step goes through. Any other exception than a RuntimeError is a fault and ends
// the test.
template <typename Step>
std::optional<RuntimeError> RaisedBy(Step&& step) {
  try {
    step();
  } catch (const RuntimeError& error) {
    return error;
  }
  return std::nullopt;
}

// Its number, 0 without an error.
template <typename Step>
int NumberOf(Step&& step) {
  const std::optional<RuntimeError> error = RaisedBy(step);
  return error ? error->number() : 0;
}

// As a box shows it: "53 - File not found: …"; empty without an error.
template <typename Step>
std::string ErrorOf(Step&& step) {
  const std::optional<RuntimeError> error = RaisedBy(step);
  return error ? ErrorText(*error) : std::string();
}

}  // namespace tenora::test
