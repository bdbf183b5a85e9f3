#include "platform/richtext/read/shape_words.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace tenora::richtext {
namespace {

constexpr int kFarthest = 31'680;  // twips: 22 inches, the largest page word processors know

}  // namespace

void ApplyShapeWord(const Token& word, ShapeBox* box) {
  using From = ShapeBox::From;
  static const std::unordered_map<std::string_view, int ShapeBox::*> kEdges{
      {"shpleft", &ShapeBox::left},
      {"shptop", &ShapeBox::top},
      {"shpright", &ShapeBox::right},
      {"shpbottom", &ShapeBox::bottom}};
  static const std::unordered_map<std::string_view, From> kX{
      {"shpbxpage", From::kPage}, {"shpbxmargin", From::kMargin}, {"shpbxcolumn", From::kText}};
  static const std::unordered_map<std::string_view, From> kY{
      {"shpbypage", From::kPage}, {"shpbymargin", From::kMargin}, {"shpbypara", From::kText}};
  if (!word.text.starts_with("shp")) return;
  if (const auto edge = kEdges.find(word.text); edge != kEdges.end()) {
    box->*edge->second = std::clamp(word.param, -kFarthest, kFarthest);
  } else if (const auto x = kX.find(word.text); x != kX.end()) {
    box->x_from = x->second;
  } else if (const auto y = kY.find(word.text); y != kY.end()) {
    box->y_from = y->second;
  } else if (word.text == "shpwr") {
    box->wrap = word.param == 1   ? ShapeBox::Wrap::kAboveAndBelow
                : word.param == 3 ? ShapeBox::Wrap::kNone
                                  : ShapeBox::Wrap::kAround;
  }
}

}  // namespace tenora::richtext
