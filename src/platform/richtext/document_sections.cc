#include "platform/richtext/document_sections.h"

#include <algorithm>

#include "platform/richtext/document_text.h"

namespace tenora::richtext {
namespace {

// Of each kind one: the first that shows anything.
void AddHeads(const std::vector<HeadGroup>& own, std::vector<const HeadGroup*>* heads) {
  std::erase_if(*heads, [&](const HeadGroup* inherited) {
    return std::ranges::any_of(
        own, [&](const HeadGroup& group) { return group.word == inherited->word; });
  });
  const std::size_t inherited = heads->size();
  for (const HeadGroup& group : own) {
    if (group.word.empty()) continue;
    const auto same =
        std::find_if(heads->begin() + static_cast<std::ptrdiff_t>(inherited), heads->end(),
                     [&](const HeadGroup* other) { return other->word == group.word; });
    if (same == heads->end())
      heads->push_back(&group);
    else if (!Shows((*same)->blocks))
      *same = &group;
  }
}

}  // namespace

std::vector<DocumentSection> SectionsOf(const Document& document) {
  std::vector<DocumentSection> sections(1);
  sections.front().page = &document.page;
  AddHeads(document.head_groups, &sections.front().head_groups);
  for (std::size_t i = 0; i < document.blocks.size(); ++i) {
    const auto* paragraph = std::get_if<Paragraph>(&document.blocks[i]);
    if (paragraph == nullptr || paragraph->next_section == nullptr) continue;
    sections.back().end_block = i + 1;
    DocumentSection next = sections.back();
    next.begin = paragraph->next_section->begin;
    next.page = &paragraph->next_section->page;
    AddHeads(paragraph->next_section->head_groups, &next.head_groups);
    sections.push_back(std::move(next));
  }
  sections.back().end_block = document.blocks.size();
  return sections;
}

std::vector<const HeadGroup*> HeadGroupsOf(const Document& document) {
  std::vector<const HeadGroup*> groups;
  for (const HeadGroup& group : document.head_groups) groups.push_back(&group);
  for (const Block& block : document.blocks) {
    const auto* paragraph = std::get_if<Paragraph>(&block);
    if (paragraph == nullptr || paragraph->next_section == nullptr) continue;
    for (const HeadGroup& group : paragraph->next_section->head_groups) groups.push_back(&group);
  }
  return groups;
}

std::vector<Section*> OwnSections(Document* document) {
  std::vector<Section*> sections;
  for (Block& block : document->blocks) {
    auto* paragraph = std::get_if<Paragraph>(&block);
    if (paragraph == nullptr || paragraph->next_section == nullptr) continue;
    auto own = std::make_shared<Section>(*paragraph->next_section);
    sections.push_back(own.get());
    paragraph->next_section = std::move(own);
  }
  return sections;
}

}  // namespace tenora::richtext
