#include "platform/richtext/write/format_writer.h"

#include "platform/richtext/border_kinds.h"
#include "platform/richtext/characters/code_page.h"
#include "platform/richtext/list_mark.h"
#include "platform/runtime/text.h"

namespace tenora::richtext {
namespace {

constexpr std::string_view kBulletFontName = "Symbol";
constexpr std::string_view kSymbolBullet = "•";

// Upper-case digits, as the classic control writes its bullet.
constexpr std::string_view kBulletByte = "\\'B7";

}  // namespace

bool IsBulletFont(const Font& font) {
  return font.charset == kSymbolCharset && EqualsNoCase(font.name, kBulletFontName);
}

Font BulletFont() {
  Font font;
  font.name = kBulletFontName;
  font.charset = kSymbolCharset;
  return font;
}

bool IsSymbolBullet(const Bullet& bullet) {
  return bullet.kind == Bullet::Kind::kBullet && bullet.before == kSymbolBullet;
}

FormatWriter::FormatWriter(const std::vector<Font>& fonts, int default_font, SourceText* out)
    : default_font_(default_font), out_(*out) {
  for (std::size_t i = 0; i < fonts.size() && symbol_font_ < 0; ++i) {
    if (IsBulletFont(fonts[i])) symbol_font_ = static_cast<int>(i);
  }
}

void FormatWriter::Switch(std::string_view word, bool from, bool to) {
  if (from == to) return;
  if (to)
    out_.Word(word);
  else
    out_.Word(word, 0);
}

void FormatWriter::UnderlineWord(Underline underline) {
  switch (underline) {
    case Underline::kNone:
      return out_.Word("ulnone");
    case Underline::kSingle:
      return out_.Word("ul");
    case Underline::kDouble:
      return out_.Word("uldb");
    case Underline::kDotted:
      return out_.Word("uld");
    case Underline::kDash:
      return out_.Word("uldash");
    case Underline::kWords:
      return out_.Word("ulw");
    case Underline::kWave:
      return out_.Word("ulwave");
    case Underline::kThick:
      return out_.Word("ulth");
  }
}

void FormatWriter::Change(const CharFormat* before, const CharFormat& to) {
  const CharFormat from = before == nullptr ? CharFormat() : *before;
  if (from.colour != to.colour) out_.Word("cf", to.colour);
  if (from.highlight != to.highlight) out_.Word("highlight", to.highlight);
  Switch("protect", from.protect, to.protect);
  Switch("v", from.hidden, to.hidden);
  Switch("caps", from.all_caps, to.all_caps);
  Switch("scaps", from.small_caps, to.small_caps);
  if (from.underline != to.underline) UnderlineWord(to.underline);
  Switch("b", from.bold, to.bold);
  Switch("i", from.italic, to.italic);
  Switch("strike", from.strike, to.strike);
  if (from.script != to.script) {
    out_.Word(to.script == Script::kSuper ? "super"
              : to.script == Script::kSub ? "sub"
                                          : "nosupersub");
  }
  if (from.raise_half_points != to.raise_half_points) {
    if (to.raise_half_points >= 0)
      out_.Word("up", to.raise_half_points);
    else
      out_.Word("dn", -to.raise_half_points);
  }
  if (from.kerned_from != to.kerned_from) out_.Word("kerning", to.kerned_from);
  if (before == nullptr || from.font != to.font) out_.Word("f", to.font);
  if (before == nullptr || from.half_points != to.half_points) out_.Word("fs", to.half_points);
}

bool FormatWriter::InSymbol(const Bullet& bullet) const {
  return symbol_font_ >= 0 && IsSymbolBullet(bullet);
}

void FormatWriter::BulletText(const Bullet& bullet, int number) {
  const int font = InSymbol(bullet) ? symbol_font_ : bullet.font.value_or(default_font_);
  out_.Raw("{\\pntext");
  out_.Word("f", font);
  if (InSymbol(bullet)) {
    out_.Raw(kBulletByte);
  } else {
    out_.Text(ListMark(bullet, number), nullptr);
  }
  if (bullet.gap == Bullet::Gap::kTab) out_.Word("tab");
  if (bullet.gap == Bullet::Gap::kSpace) out_.Text(" ", nullptr);
  out_.Raw("}");
}

void FormatWriter::ListWords(const Bullet& bullet) {
  const int font = InSymbol(bullet) ? symbol_font_ : bullet.font.value_or(default_font_);
  const bool is_bullet = bullet.kind == Bullet::Kind::kBullet;
  out_.Raw(is_bullet ? "{\\*\\pn\\pnlvlblt" : "{\\*\\pn\\pnlvlbody");
  out_.Word("pnf", font);
  out_.Word("pnindent", bullet.indent);
  if (bullet.alignment == Alignment::kCentre) out_.Word("pnqc");
  if (bullet.alignment == Alignment::kRight) out_.Word("pnqr");
  if (bullet.bold) Switch("pnb", !*bullet.bold, *bullet.bold);
  if (bullet.italic) Switch("pni", !*bullet.italic, *bullet.italic);
  if (bullet.half_points != 0) out_.Word("pnfs", bullet.half_points);
  if (bullet.colour) out_.Word("pncf", *bullet.colour);
  if (!is_bullet) {
    out_.Word("pnstart", bullet.start);
    out_.Word(bullet.kind == Bullet::Kind::kUpperRoman    ? "pnucrm"
              : bullet.kind == Bullet::Kind::kLowerRoman  ? "pnlcrm"
              : bullet.kind == Bullet::Kind::kUpperLetter ? "pnucltr"
              : bullet.kind == Bullet::Kind::kLowerLetter ? "pnlcltr"
                                                          : "pndec");
  }
  if (InSymbol(bullet))
    out_.Raw("{\\pntxtb\\'B7}");
  else
    ListText("pntxtb", bullet.before);
  ListText("pntxta", bullet.after);
  const auto own_word = [&](std::string_view word, int value) {
    if (value == 0) return;
    out_.Raw("{\\*");
    out_.Word(word, value);
    out_.Raw("}");
  };
  own_word(kListWord, bullet.list);
  own_word(kListGapWord, static_cast<int>(bullet.gap));
  out_.Raw("}");
}

void FormatWriter::ListText(std::string_view word, std::string_view text) {
  if (text.empty()) return;
  out_.Raw("{");
  out_.Word(word);
  // A full stop or bracket ends the word by itself, as the classic control writes it.
  if (text.front() == '.' || text.front() == '(' || text.front() == ')') {
    out_.Raw(text.substr(0, 1));
    text.remove_prefix(1);
  }
  out_.Text(text, nullptr);
  out_.Raw("}");
}

void WriteBorder(std::string_view edge, const Border& border, SourceText* out) {
  if (!border.present) return;
  out->Word(edge);
  out->Word(BorderKindWord(border.kind));
  if (border.width != 0) out->Word("brdrw", border.width);
  if (border.space != 0) out->Word("brsp", border.space);
  if (border.colour != 0) out->Word("brdrcf", border.colour);
}

void FormatWriter::TabWords(const TabStop& tab) {
  if (tab.kind == TabStop::Kind::kRight) out_.Word("tqr");
  if (tab.kind == TabStop::Kind::kCentre) out_.Word("tqc");
  if (tab.kind == TabStop::Kind::kDecimal) out_.Word("tqdec");
  if (!tab.leader.empty()) out_.Word("tl" + tab.leader);
  out_.Word(tab.kind == TabStop::Kind::kBar ? "tb" : "tx", tab.position);
}

void FormatWriter::LengthWords(const ParagraphFormat& format) {
  if (format.first_indent != 0) out_.Word("fi", format.first_indent);
  if (format.left_indent != 0) out_.Word("li", format.left_indent);
  if (format.right_indent != 0) out_.Word("ri", format.right_indent);
  if (format.space_before != 0) out_.Word("sb", format.space_before);
  if (format.space_after != 0) out_.Word("sa", format.space_after);
  if (format.automatic_before) out_.Word("sbauto", 1);
  if (format.automatic_after) out_.Word("saauto", 1);
  if (format.line_spacing != 0) out_.Word("sl", format.line_spacing);
  if (format.line_spacing_multiple) out_.Word("slmult", 1);
}

// What the frame's height is relative to is always written: it makes the frame one.
void FormatWriter::FrameWords(const FramePlace& frame) {
  using From = ShapeBox::From;
  using Align = ShapeBox::Align;
  const auto length = [&](std::string_view word, int twips) {
    if (twips != 0) out_.Word(word, twips);
  };
  length("absw", frame.width);
  length("absh", frame.height);
  if (frame.x_from != From::kText) out_.Word(frame.x_from == From::kPage ? "phpg" : "phmrg");
  length(frame.x < 0 ? "posnegx" : "posx", frame.x);
  if (frame.x_align != Align::kAsSet) {
    out_.Word(frame.x_align == Align::kStart    ? "posxl"
              : frame.x_align == Align::kCentre ? "posxc"
                                                : "posxr");
  }
  out_.Word(frame.y_from == From::kPage     ? "pvpg"
            : frame.y_from == From::kMargin ? "pvmrg"
                                            : "pvpara");
  length(frame.y < 0 ? "posnegy" : "posy", frame.y);
  if (frame.y_align != Align::kAsSet) {
    out_.Word(frame.y_align == Align::kStart    ? "posyt"
              : frame.y_align == Align::kCentre ? "posyc"
                                                : "posyb");
  }
  length("dfrmtxtx", frame.gap_x);
  length("dfrmtxty", frame.gap_y);
  if (!frame.text_beside) out_.Word("nowrap");
}

void FormatWriter::Paragraph(const ParagraphFormat& format, int number) {
  if (format.contextual_style >= 0) {
    out_.Word("s", format.contextual_style);
    out_.Word("contextualspace");
  }
  if (format.right_to_left) out_.Word("rtlpar");
  if (format.bullet.kind != Bullet::Kind::kNone) {
    BulletText(format.bullet, number);
    ListWords(format.bullet);
  }
  if (format.page_break_before) out_.Word("pagebb");
  if (format.keep_together) out_.Word("keep");
  if (format.keep_with_next) out_.Word("keepn");
  if (format.widow_control) out_.Word("widctlpar");
  if (format.frame) FrameWords(*format.frame);
  WriteBorder("brdrt", format.top, &out_);
  WriteBorder("brdrl", format.left, &out_);
  WriteBorder("brdrb", format.bottom, &out_);
  WriteBorder("brdrr", format.right, &out_);
  WriteBorder("brdrbtw", format.between, &out_);
  if (format.shading != 0) out_.Word("cbpat", format.shading);
  LengthWords(format);
  if (format.alignment == Alignment::kCentre) out_.Word("qc");
  if (format.alignment == Alignment::kRight) out_.Word("qr");
  if (format.alignment == Alignment::kJustified) out_.Word("qj");
  if (format.alignment == Alignment::kDistributed) out_.Word("qd");
  for (const TabStop& tab : format.tabs) TabWords(tab);
}

}  // namespace tenora::richtext
