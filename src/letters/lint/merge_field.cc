#include "letters/lint/merge_field.h"

#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::string_view kWord = "MERGEFIELD";

}  // namespace

bool IsMergeField(const richtext::Field& field) { return ContainsNoCase(field.instruction, kWord); }

std::string MergeFieldName(std::string_view instruction) {
  const std::size_t word = FindNoCase(instruction, kWord);
  if (word == std::string::npos) return {};
  std::string_view name = TrimBlanks(instruction.substr(word + kWord.size()));
  name = name.substr(0, name.find_first_of("\\\n"));
  if (name.starts_with('"')) name = name.substr(1, name.find('"', 1) - 1);
  return std::string(TrimBlanks(name));
}

}  // namespace tenora
