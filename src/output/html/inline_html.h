// The text of one paragraph as HTML: runs, links, breaks, tabs and pictures.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "output/html/html_context.h"
#include "output/html/shown_text.h"
#include "platform/richtext/document.h"

namespace tenora::html {

// The look that an element states for the text in it, so that its runs need not.
struct CarriedLook {
  int font = TextLook::kNoFont;
  int half_points = 0;
  std::optional<Rgb> colour;  // only what all of the text has
};
CarriedLook CarriedBy(const Looks& looks, const ShownText& text, const richtext::Paragraph& source);

class InlineHtml {
 public:
  // Appends to the context's HTML. `width` is the room for text in twips.
  InlineHtml(HtmlContext& context, const Inherited& inherited, int width)
      : context_(context), inherited_(inherited), width_(width) {}

  // A list mark that stands in the text, ahead of a tab to `target`, twips from the left edge.
  void SetMark(std::string_view mark, double target) {
    mark_ = mark;
    mark_target_ = target;
  }
  // A paragraph that shows nothing becomes a non-breaking space: its line has height.
  void Write(const richtext::Paragraph& paragraph, const ShownText& text);

 private:
  struct Tag {
    std::string opening;
    std::string_view closing;

    bool operator==(const Tag&) const = default;
  };

  void WriteMark(const richtext::CharFormat& format);
  void Write(const ShownPiece& piece);
  void WriteText(const ShownPiece& piece);
  void Advance(const ShownPiece& piece);
  void WriteWords(std::string_view text, const TextLook& look, std::string_view link);
  void WriteTab(const std::vector<ShownPiece>& pieces, std::size_t index);
  void WritePicture(const ShownPiece& piece);
  void WriteEscaped(std::string_view text);
  void WriteFilling(double width, char leader, const richtext::CharFormat& format);
  void ShowAs(const TextLook& look, std::string_view link);
  std::vector<Tag> TagsOf(const TextLook& look, std::string_view link) const;
  void AppendStyle(std::string& css, const TextLook& look) const;
  void CloseTags(std::size_t kept);
  double WidthOf(std::string_view text, const richtext::CharFormat& format) const;

  HtmlContext& context_;
  Inherited inherited_;
  int width_;
  std::string_view mark_;
  double mark_target_ = 0;

  const richtext::ParagraphFormat* format_ = nullptr;
  std::vector<Tag> open_;
  TextLook look_;  // of the open tags
  std::string_view link_;
  bool at_line_start_ = true, behind_blank_ = false;
  bool measure_ = false;  // the paragraph has tabs
  double x_ = 0;          // about where the text has come, twips from the left edge
};

}  // namespace tenora::html
