#include "output/html/document_html.h"

#include <span>
#include <tuple>
#include <utility>

#include "output/html/block_html.h"
#include "output/html/document_parts.h"
#include "output/html/html_characters.h"
#include "output/html/html_context.h"
#include "output/html/text_lengths.h"
#include "platform/richtext/document_text.h"

namespace tenora::html {
namespace {

constexpr std::size_t kUsualHtml = 2;  // bytes of HTML for each of text, with the tags

TextLengths LengthsIn(const richtext::Document& document) {
  TextLengths lengths;
  richtext::ForEachParagraph(document.blocks, [&](const richtext::Paragraph& paragraph, auto) {
    for (const richtext::Run& run : paragraph.runs) {
      if (!run.format.hidden)
        lengths.Add({run.format.font, run.format.half_points}, run.text.size());
    }
  });
  return lengths;
}

// The font and size of most of the text, which the element around the letter states.
Inherited MostOf(const TextLengths& lengths, const Looks& looks) {
  Inherited most;
  if (lengths.empty()) return most;
  richtext::CharFormat text;
  std::tie(text.font, text.half_points) = lengths.Most();
  const TextLook look = looks.Of(text);
  most.font = look.font;
  most.half_points = look.half_points;
  return most;
}

void WritePart(HtmlContext& context, const Surroundings& around,
               std::span<const richtext::Block> blocks, std::string_view space) {
  if (blocks.empty()) return;
  if (!space.empty()) {
    context.html.append("<div style=\"").append(space).append("\">").append(context.line_end);
  }
  BlockHtml(context, around, 0).Write(blocks);
  if (!space.empty()) context.html.append("</div>").append(context.line_end);
}

// Below a short line, as on paper.
void WriteNotes(HtmlContext& context, const Surroundings& around) {
  context.html.append("<div style=\"margin-top:12pt\">").append(context.line_end);
  context.html.append("<hr width=\"33%\" size=\"1\" align=\"left\">").append(context.line_end);
  for (const auto& note : context.parts.notes) BlockHtml(context, around, 0).Write(note);
  context.html.append("</div>").append(context.line_end);
}

}  // namespace

std::string DocumentHtml(const richtext::Document& document, const DocumentHtmlOptions& options,
                         const PictureSource& pictures) {
  const DocumentParts parts = PartsOf(document);
  HtmlContext context{parts, Looks(document, options.font_faces), pictures, options.line_end, {}};
  if (parts.header.empty() && parts.text.empty() && parts.footer.empty()) return {};
  Surroundings around;
  const TextLengths lengths = LengthsIn(document);
  context.html.reserve(kUsualHtml * lengths.all());
  around.inherited = MostOf(lengths, context.looks);
  const TextArea area = TextAreaOf(parts);
  around.width = area.width;
  around.left = area.left;
  around.right = area.right;
  // Lines as long as on paper; in a window narrower than that they break earlier.
  std::string style =
      "max-width:" + std::to_string(Pixels(area.width - area.left - area.right)) + "px;";
  if (around.inherited.half_points > 0)
    AppendFontStyle(style, context.looks, {}, around.inherited.font, around.inherited.half_points);
  style.pop_back();
  context.html.append("<div style=\"").append(style).append("\">").append(options.line_end);
  WritePart(context, around, parts.header, "margin-bottom:12pt");
  WritePart(context, around, parts.text, {});
  for (const TextBox& box : parts.below) BlockHtml(context, around, 0).WriteBox(box);
  if (!parts.notes.empty()) WriteNotes(context, around);
  WritePart(context, around, parts.footer, "margin-top:12pt");
  context.html.append("</div>").append(options.line_end);
  return options.references ? WithReferences(context.html) : std::move(context.html);
}

}  // namespace tenora::html
