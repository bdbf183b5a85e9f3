#include "output/html/text_box.h"

#include <algorithm>
#include <memory>
#include <tuple>

#include "platform/richtext/document_text.h"

namespace tenora::html {
namespace {

using richtext::Alignment;
using richtext::ShapeBox;

constexpr int kUsualHeight = 16'838;  // twips, of A4
constexpr double kBelow = 0.7;        // of the page's height
constexpr double kFullWidth = 0.8;    // of the text's
// A box whose middle is beyond this share of the text's width stands at the right.
constexpr double kMiddle = 0.4, kRight = 0.6;

}  // namespace

std::vector<TextBox> TextBoxesOf(const richtext::Paragraph& paragraph) {
  std::vector<TextBox> boxes;
  for (const richtext::Run& run : paragraph.runs) {
    const auto* const object = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object);
    if (object == nullptr || !(*object)->shape || run.format.hidden) continue;
    const std::size_t first = boxes.size();
    for (const auto& figure : (*object)->figures) {
      if (richtext::Shows(figure->blocks)) boxes.push_back({figure.get(), &*(*object)->shape});
    }
    // A drawing lists its figures as they cover each other.
    std::stable_sort(boxes.begin() + static_cast<std::ptrdiff_t>(first), boxes.end(),
                     [](const TextBox& one, const TextBox& other) {
                       return std::tie(one.figure->top, one.figure->left) <
                              std::tie(other.figure->top, other.figure->left);
                     });
  }
  return boxes;
}

bool StandsBelow(const TextBox& box, const richtext::PageSetup& page) {
  const ShapeBox& place = *box.place;
  if (place.y_from == ShapeBox::From::kText) return false;
  if (place.y_align != ShapeBox::Align::kAsSet) return place.y_align == ShapeBox::Align::kEnd;
  const int height = page.height > 0 ? page.height : kUsualHeight;
  const int start = place.y_from == ShapeBox::From::kMargin ? std::max(page.top, 0) : 0;
  return start + place.top + box.figure->top > kBelow * height;
}

Alignment SideOf(const TextBox& box, const richtext::PageSetup& page, int text_width) {
  const ShapeBox& place = *box.place;
  const int width = box.figure->right - box.figure->left;
  if (width > kFullWidth * text_width) return Alignment::kLeft;
  if (place.x_align == ShapeBox::Align::kCentre) return Alignment::kCentre;
  if (place.x_align == ShapeBox::Align::kEnd) return Alignment::kRight;
  if (place.x_align == ShapeBox::Align::kStart) return Alignment::kLeft;
  const int start = place.x_from == ShapeBox::From::kPage ? -std::max(page.left, 0) : 0;
  const int middle = start + place.left + box.figure->left + width / 2;
  if (middle > kRight * text_width) return Alignment::kRight;
  return middle > kMiddle * text_width ? Alignment::kCentre : Alignment::kLeft;
}

}  // namespace tenora::html
