#include "platform/richtext/notes.h"

#include <memory>
#include <string_view>

namespace tenora::richtext {
namespace {

// Empty for runs without carried source.
std::string_view SourceOf(const Run& run) {
  const auto* const object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object);
  return object == nullptr ? std::string_view() : (*object)->source;
}

}  // namespace

const std::vector<Block>* BlocksOfNote(const Run& run) {
  if (!SourceOf(run).starts_with("{\\footnote")) return nullptr;
  const auto& figures = std::get<std::shared_ptr<const Verbatim>>(run.object)->figures;
  return figures.empty() ? nullptr : &figures.front()->blocks;
}

bool IsEndnote(const Run& run) { return SourceOf(run).starts_with("{\\footnote\\ftnalt"); }

bool IsNoteMark(const Run& run) { return SourceOf(run) == "{\\chftn}"; }

}  // namespace tenora::richtext
