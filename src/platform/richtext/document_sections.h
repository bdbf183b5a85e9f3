// The sections of a document, each with what is in force on its pages.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

struct DocumentSection {
  Section::Begin begin = Section::Begin::kPage;
  const PageSetup* page = nullptr;
  // Headers and footers: its own and, of the kinds it has none of, those of the sections before.
  std::vector<const HeadGroup*> head_groups;
  std::size_t end_block = 0;  // the first of Document::blocks after it
};

// At least one. Points into the document.
std::vector<DocumentSection> SectionsOf(const Document& document);

// The headers, footers and the like of all sections, in their order.
std::vector<const HeadGroup*> HeadGroupsOf(const Document& document);
// The sections after the first, which the document then shares with no other: they may be changed.
std::vector<Section*> OwnSections(Document* document);

}  // namespace tenora::richtext
