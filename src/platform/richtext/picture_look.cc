#include "platform/richtext/picture_look.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

#include "platform/richtext/read/picture_size.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_tokenizer.h"

namespace tenora::richtext {
namespace {

constexpr int kLeast = 15;                                // twips
constexpr double kMostWidth = 9072, kMostHeight = 13608;  // twips: 16 cm by 24 cm, as new pictures
constexpr std::string_view kPicture = "{\\pict";

const Verbatim* ShapeOf(const Run& run) {
  const auto* object = std::get_if<std::shared_ptr<const Verbatim>>(&run.object);
  if (object == nullptr || !(*object)->shape || (*object)->figures.size() != 1) return nullptr;
  const Figure& figure = *(*object)->figures.front();
  const bool only_picture = figure.picture != nullptr && figure.blocks.empty();
  return only_picture && (*object)->source.starts_with("{\\shp{") ? object->get() : nullptr;
}

const Picture* PictureOf(const Run& run) {
  if (const auto* own = std::get_if<std::shared_ptr<const Picture>>(&run.object)) return own->get();
  const Verbatim* shape = ShapeOf(run);
  return shape == nullptr ? nullptr : shape->figures.front()->picture.get();
}

PicturePlace PlaceOf(const ShapeBox& box) {
  if (box.in_line) return PicturePlace::kInLine;
  const bool beside = box.wrap == ShapeBox::Wrap::kAround && !box.behind && box.top == 0 &&
                      box.x_from == ShapeBox::From::kText && box.y_from == ShapeBox::From::kText;
  if (beside && box.x_align == ShapeBox::Align::kStart) return PicturePlace::kLeft;
  if (beside && box.x_align == ShapeBox::Align::kEnd) return PicturePlace::kRight;
  return PicturePlace::kAsSet;
}

// The group of the picture in a source; empty where there is none.
std::string_view GroupIn(std::string_view source) {
  const std::size_t start = source.find(kPicture);
  if (start == std::string_view::npos) return {};
  return source.substr(start, EndOfGroup(source, start + 1) - start);
}

// The words at the head of a picture's group that say how large it is.
struct Measures {
  int own_width = 0, own_height = 0;
};

struct HeadWord {
  std::string_view name;
  int Measures::*number;
  bool replaced;  // by the words of another size
};
constexpr std::array kHeadWords{
    HeadWord{"picw", &Measures::own_width, false}, HeadWord{"pich", &Measures::own_height, false},
    HeadWord{"picwgoal", nullptr, true},           HeadWord{"pichgoal", nullptr, true},
    HeadWord{"picscalex", nullptr, true},          HeadWord{"picscaley", nullptr, true},
    HeadWord{"piccropl", nullptr, true},           HeadWord{"piccropt", nullptr, true},
    HeadWord{"piccropr", nullptr, true},           HeadWord{"piccropb", nullptr, true},
};

// A picture's group cut into its head, without the words of its size, and its data.
struct PictureGroup {
  explicit PictureGroup(std::string_view group) {
    Tokenizer tokens(group);
    std::size_t from = 0;
    int depth = 0;
    for (Token token = tokens.Next(); token.kind != Token::Kind::kEnd; token = tokens.Next()) {
      const std::string_view written = group.substr(from, tokens.position() - from);
      if (token.kind == Token::Kind::kOpen) ++depth;
      if (token.kind == Token::Kind::kClose) --depth;
      const bool content = token.kind == Token::Kind::kText || token.kind == Token::Kind::kBinary;
      if (depth == 0 || (depth == 1 && content)) break;
      const HeadWord* word = nullptr;
      for (const HeadWord& known : kHeadWords) {
        if (token.IsWord(known.name)) word = &known;
      }
      if (word != nullptr && word->number != nullptr)
        measures.*word->number = std::clamp(token.param, -kLargestPage, kLargestPage);
      if (word == nullptr || !word->replaced) head.append(written);
      from = tokens.position();
    }
    while (head.ends_with(' ')) head.pop_back();
    data = group.substr(from);
    while (data.starts_with(' ')) data.remove_prefix(1);
  }

  std::string head;
  std::string_view data;
  Measures measures;
};

std::string Resized(const Picture& picture, const PictureLook& look) {
  const PictureGroup group(GroupIn(picture.source));
  std::string source = group.head;
  const auto word = [&](std::string_view name, int value) {
    source.append("\\").append(name).append(std::to_string(value));
  };
  // What is cut off keeps its share.
  const Picture::Crop& crop = picture.crop;
  const double width = look.width / (1 - crop.left - crop.right);
  const double height = look.height / (1 - crop.top - crop.bottom);
  const int left = static_cast<int>(std::lround(crop.left * width));
  const int right = static_cast<int>(std::lround(crop.right * width));
  const int top = static_cast<int>(std::lround(crop.top * height));
  const int bottom = static_cast<int>(std::lround(crop.bottom * height));
  word("picwgoal", look.width + left + right);
  word("pichgoal", look.height + top + bottom);
  if (left != 0) word("piccropl", left);
  if (top != 0) word("piccropt", top);
  if (right != 0) word("piccropr", right);
  if (bottom != 0) word("piccropb", bottom);
  return source.append(" ").append(group.data);
}

std::string Property(std::string_view name, std::string_view value) {
  return std::string("{\\sp{\\sn ").append(name).append("}{\\sv ").append(value).append("}}");
}

std::string NewShape(const std::string& picture, const PictureLook& look, int left) {
  constexpr const char* kGap = "73025";   // to the text, in 360,000ths of a centimetre: 115 twips
  constexpr const char* kFromText = "2";  // of the column and of the paragraph
  std::string source = "{\\shp{\\*\\shpinst\\shpleft" + std::to_string(left) +
                       "\\shptop0\\shpright" + std::to_string(left + look.width) + "\\shpbottom" +
                       std::to_string(look.height) +
                       "\\shpfhdr0\\shpbxcolumn\\shpbxignore\\shpbypara\\shpbyignore"
                       "\\shpwr2\\shpwrk0\\shpfblwtxt0\\shpz0";
  source += Property("shapeType", "75") + Property("fLockAspectRatio", "1") +
            Property("pib", picture) + Property("fLine", "0") +
            Property("posh", look.place == PicturePlace::kRight ? "3" : "1") +
            Property("posrelh", kFromText) + Property("posrelv", kFromText) +
            Property("dxWrapDistLeft", kGap) + Property("dxWrapDistRight", kGap) +
            Property("fLayoutInCell", "1");
  return source + "}}";
}

// The number of a word in a source, where it first occurs.
void SetNumber(std::string_view word, int number, std::string* source) {
  const std::size_t at = source->find(word);
  if (at == std::string::npos) return;
  const std::size_t from = at + word.size();
  const std::size_t to = std::min(source->find_first_not_of("-0123456789", from), source->size());
  source->replace(from, to - from, std::to_string(number));
}

std::string ResizedShape(const Verbatim& shape, const Picture& picture, const PictureLook& look,
                         int left) {
  std::string source = shape.source;
  if (const std::string_view group = GroupIn(source); !group.empty()) {
    const auto at = static_cast<std::size_t>(group.data() - source.data());
    source.replace(at, group.size(), Resized(picture, look));
  }
  SetNumber("\\shpleft", left, &source);
  SetNumber("\\shpright", left + look.width, &source);
  SetNumber("\\shpbottom", shape.shape->top + look.height, &source);
  return source;
}

}  // namespace

std::optional<PictureLook> LookOf(const Run& run) {
  const Picture* picture = PictureOf(run);
  if (picture == nullptr || GroupIn(picture->source).empty()) return std::nullopt;
  const Verbatim* shape = ShapeOf(run);
  if (shape == nullptr) return PictureLook{picture->width, picture->height};
  const ShapeBox& box = *shape->shape;
  return PictureLook{box.right - box.left, box.bottom - box.top, PlaceOf(box)};
}

PictureLook OwnLookOf(const Run& run) {
  const Picture& picture = *PictureOf(run);
  PictureLook look = *LookOf(run);
  double width = 0, height = 0;
  if (const std::optional<PictureSize> size = SizeOf(picture)) {
    width = size->width;
    height = size->height;
  } else if (picture.kind == Picture::Kind::kWmf || picture.kind == Picture::Kind::kEmf) {
    constexpr double kTwipsPerHundredth = 1440 / 2540.0;  // of a millimetre
    const Measures measures = PictureGroup(GroupIn(picture.source)).measures;
    width = measures.own_width * kTwipsPerHundredth;
    height = measures.own_height * kTwipsPerHundredth;
  }
  width *= 1 - picture.crop.left - picture.crop.right;
  height *= 1 - picture.crop.top - picture.crop.bottom;
  if (width < 1 || height < 1) return look;
  const double scale = std::min({1.0, kMostWidth / width, kMostHeight / height});
  look.width = std::max(static_cast<int>(std::lround(width * scale)), kLeast);
  look.height = std::max(static_cast<int>(std::lround(height * scale)), kLeast);
  return look;
}

Run WithLook(const Run& run, const PictureLook& wanted, int text_width) {
  const PictureLook now = *LookOf(run);
  PictureLook look = wanted;
  look.width = std::clamp(look.width, kLeast, kLargestPage);
  look.height = std::clamp(look.height, kLeast, kLargestPage);
  if (look.place == PicturePlace::kAsSet) look.place = now.place;
  const Picture& picture = *PictureOf(run);
  const Verbatim* shape = ShapeOf(run);
  const bool placed = look.place == PicturePlace::kAsSet && shape != nullptr;
  const int left = placed                               ? shape->shape->left
                   : look.place == PicturePlace::kRight ? std::max(text_width - look.width, 0)
                                                        : 0;
  std::string source;
  if (shape != nullptr && look.place == now.place) {
    source = ResizedShape(*shape, picture, look, left);
  } else {
    source = Resized(picture, look);
    if (look.place != PicturePlace::kInLine) source = NewShape(source, look, left);
  }
  // Read like any other, so that it is as if it had been loaded.
  const Document read = ReadRtf("{\\rtf1 " + source + "}");
  Run result = run;
  const auto& runs = std::get<Paragraph>(read.blocks.front()).runs;
  if (!runs.empty() && runs.front().object.index() != 0) result.object = runs.front().object;
  return result;
}

}  // namespace tenora::richtext
