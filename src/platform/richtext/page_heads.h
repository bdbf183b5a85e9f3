// Which headers and footers the pages of a document have.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/richtext/document.h"

namespace tenora::richtext {

// The parameter of a control word of the page set-up, 1 where it has none; nothing without the
// word.
std::optional<int> PageWord(const PageSetup& page, std::string_view word);

enum class PageSide { kCommon, kFirst, kEven };
inline constexpr std::size_t kPageSides = 3;

struct PageHeads {
  using Blocks =
      const std::vector<Block>*;  // null where there is none, or none that shows anything

  bool first_differs = false, even_differs = false;
  int first_number = 1;  // that the first page shows
  std::array<Blocks, kPageSides> headers{}, footers{};

  Blocks Header(PageSide side) const { return headers[static_cast<std::size_t>(side)]; }
  Blocks Footer(PageSide side) const { return footers[static_cast<std::size_t>(side)]; }
  // Of a page, 1 the first.
  PageSide SideOf(int page) const;
};

// Points into the document.
PageHeads PageHeadsOf(const Document& document);

}  // namespace tenora::richtext
