// Any arguments give a line, and any line gives a value for every name: the default, or one that
// holds no quote and is in the line. A line that holds its own quotes passes through one argument
// unchanged.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/runtime/text.h"
#include "startup/command_line.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

void ReadAll(const tenora::CommandLine& line) {
  for (const char* name : {"PRINTRECEIPT", "FORMAT", "DEFAULT", "TOPRINTER", "REPRINT", "VALUE"}) {
    const std::string value = line.GetCommandParameter(name, "\"default\"");
    if (value == "\"default\"") continue;
    Require(line.Contains(name));
    Require(value.find('"') == std::string::npos);
    Require(line.text().find(value) != std::string::npos);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const tenora::CommandLine whole = tenora::CommandLine::FromArguments({text});
  if (text.find('"') != std::string::npos) Require(whole.text() == text);
  ReadAll(whole);
  ReadAll(tenora::CommandLine(text));
  const std::vector<std::string> arguments = tenora::Split(text, "\n");
  const std::string line = tenora::CommandLine::FromArguments(arguments).text();
  // Putting back adds two quotes for each parameter at the most.
  const auto parameters = static_cast<std::size_t>(std::ranges::count(text, '='));
  Require(line.size() <= text.size() + 2 * parameters);
  ReadAll(tenora::CommandLine(line));
  return 0;
}
