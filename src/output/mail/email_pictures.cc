#include "output/mail/email_pictures.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>

#include "platform/richtext/document_text.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using richtext::Picture;

constexpr int kTwipsPerPixel = 15;  // 96 pixels to the inch

std::uint32_t LittleEndian(std::string_view bytes, std::size_t at, std::size_t count) {
  std::uint32_t value = 0;
  for (std::size_t i = count; i-- > 0;) {
    value = (value << 8) | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
  }
  return value;
}

void AppendLittleEndian(std::string& text, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) text += static_cast<char>((value >> (8 * i)) & 0xFF);
}

// A device-independent bitmap as a file: rich text leaves the file header out.
std::string BitmapFile(std::string_view dib) {
  constexpr std::uint32_t kFileHeader = 14;
  const std::uint32_t header = LittleEndian(dib, 0, 4);
  const std::uint32_t bits = LittleEndian(dib, 14, 2);
  const bool masks = header == 40 && LittleEndian(dib, 16, 4) == 3;
  std::uint32_t colours = LittleEndian(dib, 32, 4);
  if (colours == 0 && bits <= 8) colours = 1U << bits;
  std::string file = "BM";
  AppendLittleEndian(file, kFileHeader + static_cast<std::uint32_t>(dib.size()), 4);
  AppendLittleEndian(file, 0, 4);
  AppendLittleEndian(file, kFileHeader + header + (masks ? 12 : 0) + colours * 4, 4);
  return file.append(dib);
}

struct FileKind {
  const char* type;
  const char* extension;
};

FileKind KindOf(Picture::Kind kind) {
  switch (kind) {
    case Picture::Kind::kPng:
      return {"image/png", ".png"};
    case Picture::Kind::kJpeg:
      return {"image/jpeg", ".jpg"};
    case Picture::Kind::kDib:
      return {"image/bmp", ".bmp"};
    case Picture::Kind::kWmf:
      return {"image/wmf", ".wmf"};
    case Picture::Kind::kEmf:
      return {"image/emf", ".emf"};
    default:
      return {"application/octet-stream", ".bin"};
  }
}

mail::Part PartOf(const Picture& picture, std::size_t number) {
  const FileKind kind = KindOf(picture.kind);
  const std::string name = "picture" + std::to_string(number);
  // A content identifier must be unique across messages.
  std::array<char, 32> digest{};
  std::snprintf(digest.data(), digest.size(), ".%016zx", std::hash<std::string>()(picture.bytes));
  return {kind.type, name + kind.extension, name + digest.data() + "@tenora",
          picture.kind == Picture::Kind::kDib ? BitmapFile(picture.bytes) : picture.bytes};
}

std::string ImageTag(const Picture& picture, const std::string& content_id) {
  std::string size;
  if (picture.width > 0 && picture.height > 0) {
    const auto pixels = [](int twips) {
      return std::to_string(std::max(twips / kTwipsPerPixel, 1));
    };
    size = " width=\"" + pixels(picture.width) + "\" height=\"" + pixels(picture.height) + "\"";
  }
  return "<img src=\"cid:" + content_id + "\" alt=\"\"" + size + ">";
}

constexpr char32_t kMarkBegin = 0xE000, kMarkEnd = 0xE001;

std::string TextMark(std::size_t number) {
  std::string mark;
  AppendUtf8(mark, kMarkBegin);
  mark += std::to_string(number);
  AppendUtf8(mark, kMarkEnd);
  return mark;
}

std::string HtmlMark(std::size_t number) {
  const auto reference = [](char32_t c) {
    return "&#" + std::to_string(static_cast<std::uint32_t>(c)) + ";";
  };
  return reference(kMarkBegin) + std::to_string(number) + reference(kMarkEnd);
}

// The text with mark N replaced by replacements[N]. The marks are in order.
std::string ReplaceMarks(std::string_view text, std::string (*mark_of)(std::size_t),
                         const std::vector<std::string>& replacements) {
  std::string replaced;
  std::size_t copied = 0;
  for (std::size_t i = 0; i < replacements.size(); ++i) {
    const std::string mark = mark_of(i);
    const std::size_t at = text.find(mark, copied);
    if (at == std::string_view::npos) continue;
    replaced.append(text.substr(copied, at - copied)).append(replacements[i]);
    copied = at + mark.size();
  }
  return replaced.append(text.substr(copied));
}

}  // namespace

void EmailPictures::Take(richtext::Document& document) {
  richtext::ForEachParagraph(
      document.blocks, [this](richtext::Paragraph& paragraph, richtext::ParagraphEnd) {
        for (richtext::Run& run : paragraph.runs) {
          const auto* held = std::get_if<std::shared_ptr<const Picture>>(&run.object);
          if (held == nullptr) continue;
          const std::shared_ptr<const Picture> picture = *held;
          run.object = std::monostate();
          run.text.clear();
          if (picture->bytes.empty()) continue;
          run.text = TextMark(parts.size());
          parts.push_back(PartOf(*picture, parts.size() + 1));
          image_tags.push_back(ImageTag(*picture, parts.back().content_id));
        }
      });
}

std::string EmailPictures::WithTags(std::string_view html) const {
  return ReplaceMarks(html, HtmlMark, image_tags);
}

std::string EmailPictures::WithoutMarks(std::string_view text) const {
  return ReplaceMarks(text, TextMark, std::vector<std::string>(parts.size()));
}

}  // namespace tenora
