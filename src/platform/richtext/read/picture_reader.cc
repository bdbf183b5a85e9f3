#include "platform/richtext/read/picture_reader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "platform/richtext/read/picture_size.h"

namespace tenora::richtext {
namespace {

constexpr int kTwipsPerPixel = 15;  // at 96 dots to the inch
constexpr int kTwipsPerInch = 1440;
constexpr int kHundredthsOfMillimetrePerInch = 2540;
constexpr std::int64_t kLargest = 100'000;

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

int OnPaper(std::int64_t goal, int scale) {
  return static_cast<int>(std::clamp<std::int64_t>(goal * scale / 100, 0, kLargest));
}

}  // namespace

bool PictureReader::Word(const Token& token) {
  using Kind = Picture::Kind;
  static const std::unordered_map<std::string_view, Kind> kKinds{
      {"pngblip", Kind::kPng},    {"jpegblip", Kind::kJpeg}, {"dibitmap", Kind::kDib},
      {"wbitmap", Kind::kBitmap}, {"wmetafile", Kind::kWmf}, {"emfblip", Kind::kEmf}};
  static const std::unordered_map<std::string_view, int PictureReader::*> kNumbers{
      {"picw", &PictureReader::width_},          {"pich", &PictureReader::height_},
      {"picwgoal", &PictureReader::goal_width_}, {"pichgoal", &PictureReader::goal_height_},
      {"picscalex", &PictureReader::scale_x_},   {"picscaley", &PictureReader::scale_y_}};
  static const std::unordered_map<std::string_view, int PictureReader::*> kCrops{
      {"piccropl", &PictureReader::crop_left_},
      {"piccropt", &PictureReader::crop_top_},
      {"piccropr", &PictureReader::crop_right_},
      {"piccropb", &PictureReader::crop_bottom_}};
  if (const auto kind = kKinds.find(token.text); kind != kKinds.end()) {
    picture_.kind = kind->second;
    return true;
  }
  const int value = static_cast<int>(std::clamp<std::int64_t>(token.param, -kLargest, kLargest));
  if (const auto number = kNumbers.find(token.text); number != kNumbers.end()) {
    this->*number->second = std::max(value, 0);
    return true;
  }
  const auto crop = kCrops.find(token.text);
  if (crop == kCrops.end()) return false;
  this->*crop->second = value;
  return true;
}

void PictureReader::Property(std::string_view name, std::string_view value) {
  int number = 0;
  std::from_chars(value.data(), value.data() + value.size(), number);
  if (name == "fHorizRule") is_rule_ = number != 0;
  if (name == "pctHR") across_.share = std::clamp(number / 1000.0, 0.0, 1.0);
  if (name == "alignHR") {
    across_.alignment = number == 0   ? Alignment::kLeft
                        : number == 2 ? Alignment::kRight
                                      : Alignment::kCentre;
  }
}

void PictureReader::Hex(std::string_view digits) {
  for (const char c : digits) {
    const int value = HexValue(c);
    if (value < 0) continue;
    if (pending_digit_ < 0)
      pending_digit_ = value;
    else
      picture_.bytes += static_cast<char>(std::exchange(pending_digit_, -1) * 16 + value);
  }
}

// A length that the source does not name follows from the picture's own size.
void PictureReader::CompleteGoal() {
  const std::optional<PictureSize> own = SizeOf(picture_);
  if (!own) {
    const bool metafile =
        picture_.kind == Picture::Kind::kWmf || picture_.kind == Picture::Kind::kEmf;
    const auto twips = [&](std::int64_t length) {
      length = metafile ? length * kTwipsPerInch / kHundredthsOfMillimetrePerInch
                        : length * kTwipsPerPixel;
      return static_cast<int>(std::min(length, kLargest));
    };
    if (goal_width_ <= 0) goal_width_ = twips(width_);
    if (goal_height_ <= 0) goal_height_ = twips(height_);
    return;
  }
  const double scale = goal_width_ > 0    ? double(goal_width_) / own->width
                       : goal_height_ > 0 ? double(goal_height_) / own->height
                                          : 1;
  const auto length = [&](int twips) {
    return static_cast<int>(std::clamp(twips * scale, 1.0, double(kLargest)));
  };
  if (goal_width_ <= 0) goal_width_ = length(own->width);
  if (goal_height_ <= 0) goal_height_ = length(own->height);
}

// A picture of which nothing would be left is not cropped.
void PictureReader::Crop() {
  const auto cut = [](int* goal, int from_start, int from_end, double* start, double* end) {
    constexpr double kLeastShare = 0.01;
    const int left = *goal - from_start - from_end;
    if (*goal <= 0 || left < *goal * kLeastShare) return;
    *start = double(from_start) / *goal;
    *end = double(from_end) / *goal;
    *goal = left;
  };
  Picture::Crop& crop = picture_.crop;
  cut(&goal_width_, crop_left_, crop_right_, &crop.left, &crop.right);
  cut(&goal_height_, crop_top_, crop_bottom_, &crop.top, &crop.bottom);
}

Picture PictureReader::Take() {
  // Some writers name another kind than the bytes are of.
  const std::string_view bytes = picture_.bytes;
  if (bytes.starts_with("\x89PNG\r\n")) picture_.kind = Picture::Kind::kPng;
  if (bytes.starts_with("\xff\xd8\xff")) picture_.kind = Picture::Kind::kJpeg;
  if (scale_x_ == 0) scale_x_ = 100;
  if (scale_y_ == 0) scale_y_ = 100;
  if (goal_width_ <= 0 || goal_height_ <= 0) CompleteGoal();
  Crop();
  picture_.width = OnPaper(goal_width_, scale_x_);
  picture_.height = OnPaper(goal_height_, scale_y_);
  if (is_rule_) picture_.across = across_;
  return std::move(picture_);
}

}  // namespace tenora::richtext
