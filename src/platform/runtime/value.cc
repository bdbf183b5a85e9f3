#include "platform/runtime/value.h"

#include <utility>

#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"

namespace tenora {
namespace {

struct TextOfVisitor {
  std::string operator()(const Null&) const { return ""; }
  std::string operator()(bool value) const { return value ? "True" : "False"; }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
  std::string operator()(double value) const { return NumberText(value); }
  std::string operator()(Currency value) const { return value.ToText(); }
  std::string operator()(Date value) const {
    return FormatDate(value, value.SecondOfDay() == 0 ? "yyyy-mm-dd" : "yyyy-mm-dd hh:nn:ss");
  }
  std::string operator()(const std::string& value) const { return value; }
  std::string operator()(const std::vector<std::byte>& value) const {
    return std::string(reinterpret_cast<const char*>(value.data()), value.size());
  }
};

}  // namespace

bool IsNull(const Value& value) { return std::holds_alternative<Null>(value); }

Value NullTo(Value value, Value replacement) {
  return IsNull(value) ? std::move(replacement) : std::move(value);
}

std::string TextOf(const Value& value) { return std::visit(TextOfVisitor{}, value); }

}  // namespace tenora
