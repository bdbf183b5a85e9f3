// Which headers and footers the pages of a section have.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"
#include "platform/richtext/document_sections.h"

namespace tenora::richtext {

// The parameter of a control word of the page set-up, 1 where it has none; nothing without the
// word.
std::optional<int> PageWord(const PageSetup& page, std::string_view word);

// The page with the section's gutter, where its sheets are bound, as a part of a margin.
PageSetup WithGutter(PageSetup page, const PageSetup& first);

enum class PageSide { kCommon, kFirst, kEven };
inline constexpr std::size_t kPageSides = 3;

struct PageHeads {
  using Blocks = const std::vector<Block>*;  // null where there is none; it may show nothing

  bool first_differs = false, even_differs = false;
  Bullet::Kind number_style = Bullet::Kind::kDecimal;
  std::optional<int> first_number;  // that the first page shows, unless the count goes on
  std::array<Blocks, kPageSides> headers{}, footers{};

  Blocks Header(PageSide side) const { return headers[static_cast<std::size_t>(side)]; }
  Blocks Footer(PageSide side) const { return footers[static_cast<std::size_t>(side)]; }
  // Of a page of the section, 1 the first, that shows this number.
  PageSide SideOf(int page, int number) const;
};

// Points into the document, whose section it is.
PageHeads PageHeadsOf(const Document& document, const DocumentSection& section);

}  // namespace tenora::richtext
