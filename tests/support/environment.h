// Environment variables of a test.
#pragma once

#include <cstdlib>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>

namespace tenora::test {

// Sets variables, or takes those without a value away, and puts back what was there.
class Environment {
 public:
  struct Variable {
    std::string name;
    std::optional<std::string> value;
  };

  explicit Environment(std::initializer_list<Variable> values) {
    for (const auto& [name, value] : values) {
      const char* const before = std::getenv(name.c_str());
      before_[name] = before == nullptr ? std::nullopt : std::optional<std::string>(before);
      Set(name, value);
    }
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() {
    for (const auto& [name, value] : before_) Set(name, value);
  }

 private:
  static void Set(const std::string& name, const std::optional<std::string>& value) {
    value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
  }

  std::map<std::string, std::optional<std::string>> before_;
};

}  // namespace tenora::test
