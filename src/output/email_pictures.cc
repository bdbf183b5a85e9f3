#include "output/email_pictures.h"

#include <cstdint>
#include <memory>

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

struct Shown {
  std::string source;
  std::shared_ptr<const Picture> picture;
};

void Collect(const std::vector<richtext::Block>& blocks, std::vector<Shown>& shown) {
  for (const richtext::Block& block : blocks) {
    if (const auto* table = std::get_if<std::shared_ptr<richtext::Table>>(&block)) {
      for (const richtext::Row& row : (*table)->rows) {
        for (const richtext::Cell& cell : row.cells) Collect(cell.blocks, shown);
      }
      continue;
    }
    for (const richtext::Run& run : std::get<richtext::Paragraph>(block).runs) {
      if (const auto* picture = std::get_if<std::shared_ptr<const Picture>>(&run.object)) {
        shown.push_back({(*picture)->source, *picture});
      }
      const auto* object = std::get_if<std::shared_ptr<const richtext::Verbatim>>(&run.object);
      if (object != nullptr && (*object)->shown_picture) {
        shown.push_back({(*object)->source, (*object)->shown_picture});
      }
    }
  }
}

// Two characters of the private-use area around the picture's number, as RTF and as the HTML
// converter writes them.
std::string RtfMark(std::size_t number) {
  return "\\u-8192?" + std::to_string(number) + "\\u-8191?";
}
std::string HtmlMark(std::size_t number) {
  return "&#57344;" + std::to_string(number) + "&#57345;";
}

}  // namespace

std::string EmailPictures::WithMarks(const richtext::Document& document, std::string source) {
  std::vector<Shown> shown;
  Collect(document.blocks, shown);
  std::string marked;
  std::size_t copied = 0;
  for (const Shown& one : shown) {
    const std::size_t at = one.source.empty() ? std::string::npos : source.find(one.source, copied);
    if (at == std::string::npos || one.picture->bytes.empty()) continue;
    const FileKind kind = KindOf(one.picture->kind);
    const std::string name = "picture" + std::to_string(parts.size() + 1);
    marked.append(source, copied, at - copied).append(RtfMark(parts.size()));
    copied = at + one.source.size();
    std::string size;
    if (one.picture->width > 0 && one.picture->height > 0) {
      size = " width=\"" + std::to_string(one.picture->width / kTwipsPerPixel) + "\" height=\"" +
             std::to_string(one.picture->height / kTwipsPerPixel) + "\"";
    }
    image_tags.push_back("<img src=\"cid:" + name + "\" alt=\"\"" + size + ">");
    parts.push_back({kind.type, name + kind.extension, name,
                     one.picture->kind == Picture::Kind::kDib ? BitmapFile(one.picture->bytes)
                                                              : one.picture->bytes});
  }
  return marked.append(source, copied);
}

std::string EmailPictures::WithTags(std::string_view html) const {
  std::string tagged;
  std::size_t copied = 0;
  // The marks stand in the order of the pictures.
  for (std::size_t i = 0; i < image_tags.size(); ++i) {
    const std::string mark = HtmlMark(i);
    const std::size_t at = html.find(mark, copied);
    if (at == std::string_view::npos) continue;
    tagged.append(html.substr(copied, at - copied)).append(image_tags[i]);
    copied = at + mark.size();
  }
  return tagged.append(html.substr(copied));
}

}  // namespace tenora
