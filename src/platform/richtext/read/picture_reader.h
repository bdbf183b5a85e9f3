// A \pict group while it is read: its kind, its size on paper and its bytes.
#pragma once

#include <string_view>

#include "platform/richtext/document.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {

class PictureReader {
 public:
  // True for a word about the picture.
  bool Word(const Token& token);
  // Of those that word processors keep with a picture.
  void Property(std::string_view name, std::string_view value);
  void Hex(std::string_view digits);
  void Binary(std::string_view bytes) { picture_.bytes.append(bytes); }
  // The picture, without its source.
  Picture Take();

 private:
  void CompleteGoal();
  void Crop();

  Picture picture_;
  int width_ = 0, height_ = 0;            // in the picture's own units
  int goal_width_ = 0, goal_height_ = 0;  // twips
  int scale_x_ = 100, scale_y_ = 100;
  int crop_left_ = 0, crop_top_ = 0, crop_right_ = 0, crop_bottom_ = 0;  // twips
  int pending_digit_ = -1;
  bool is_rule_ = false;
  Picture::Across across_;
};

}  // namespace tenora::richtext
