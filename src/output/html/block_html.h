// A sequence of blocks as HTML: the text of a letter, of a header, or of a table's cell.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "output/html/html_context.h"
#include "output/html/inline_html.h"
#include "platform/richtext/document.h"
#include "platform/richtext/list_counter.h"

namespace tenora::html {

// Deeper tables are not shown, as on paper.
inline constexpr int kDeepestTable = 16;

class BlockHtml {
 public:
  // Appends to the context's HTML; `depth` counts the tables around.
  BlockHtml(HtmlContext& context, const Surroundings& around, int depth)
      : context_(context), around_(around), depth_(depth) {}

  void Write(std::span<const richtext::Block> blocks);
  void WriteBox(const TextBox& box);

 private:
  // A list that is open, with its last item.
  struct OpenList {
    richtext::Bullet bullet;
    int left_indent = 0;
    int text_left = 0;  // of its items
    int number = 0;     // of its last item
    bool ordered = false;
  };

  void Write(const richtext::Paragraph& paragraph, const richtext::Block* next);
  void WriteItem(const richtext::Paragraph& paragraph, int number, const richtext::Block* next);
  void WriteElement(std::string_view tag, const richtext::Paragraph& paragraph, std::string margins,
                    std::string_view mark);
  void WriteBoxes(const std::vector<TextBox>& boxes, const Inherited& inherited);
  void OpenListFor(const richtext::ParagraphFormat& format, int number);
  void CloseLists(std::size_t kept);
  void OpenFrame(const richtext::ParagraphFormat& format);
  void CloseFrame();
  struct Spaces {
    int above = 0, below = 0;
  };
  Spaces SpacesOf(const richtext::ParagraphFormat& format, const richtext::Block* next);

  HtmlContext& context_;
  Surroundings around_;
  int depth_;
  richtext::ListCounter counter_;
  std::vector<OpenList> lists_;  // outermost first
  bool framed_ = false;          // a frame is open
  Surroundings outside_frame_;
  int space_below_ = 0;       // of the paragraph before
  bool joins_above_ = false;  // there is no space to that paragraph
};

// Declarations for alignment, line height, font, size and colour; `text` is what the paragraph
// shows. `inside` becomes what its text inherits.
std::string ParagraphStyle(const HtmlContext& context, const richtext::Paragraph& paragraph,
                           const ShownText& text, const Inherited& around, Inherited* inside);

}  // namespace tenora::html
