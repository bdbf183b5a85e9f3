#include "ui/editor/commands/letter_search.h"

#include <QTextDocument>
#include <algorithm>
#include <utility>

#include "ui/editor/codes/merge_code_spans.h"
#include "ui/editor/text/protected_text.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

constexpr QChar kPlain(u' ');

// As a text in a letter can be: without line ends and what Qt's documents have meanings for.
QString OneLine(QString text) {
  for (QChar& c : text) {
    const char16_t code = c.unicode();
    if ((code < 0x20 && code != '\t') || code == 0x2028 || code == 0x2029 || code == 0xFDD0 ||
        code == 0xFDD1 || code == QChar::ObjectReplacementCharacter) {
      c = kPlain;
    }
  }
  return text;
}

bool IsMark(const QTextCharFormat& format) {
  const auto object = SharedProperty<InlineObject>(format, kObjectProperty);
  return object != nullptr && object->kind == InlineObject::Kind::kMark;
}

// The text of a paragraph without its bookmarks, and where each character is.
struct BlockText {
  explicit BlockText(const QTextBlock& block) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const QTextFragment fragment = it.fragment();
      if (IsMark(fragment.charFormat())) continue;
      text += fragment.text();
      for (int i = 0; i < fragment.length(); ++i) positions.push_back(fragment.position() + i);
    }
    text.replace(QChar::Nbsp, kPlain);
  }

  bool IsWord(qsizetype start, qsizetype length) const {
    const auto joins = [this](qsizetype at) {
      return at >= 0 && at < text.size() && (text[at].isLetterOrNumber() || text[at].isMark());
    };
    return !joins(start - 1) && !joins(start + length);
  }

  QString text;
  std::vector<int> positions;
};

}  // namespace

void LetterSearch::FindInBlock(const QTextBlock& block, const Wanted& wanted,
                               std::vector<Place>& places) {
  const Qt::CaseSensitivity sensitivity =
      wanted.match_case ? Qt::CaseSensitive : Qt::CaseInsensitive;
  const QString part = OneLine(wanted.text).replace(QChar::Nbsp, kPlain);
  if (part.isEmpty() || block.length() <= part.size()) return;
  const BlockText shown(block);
  std::vector<CodeSpan> codes;
  if (!part.contains(QLatin1String("<<")) && !part.contains(QLatin1String(">>"))) {
    codes = FindCodes(shown.text, {});
    // A "<<" that is never closed is no code.
    std::erase_if(codes, [](const CodeSpan& code) { return code.length <= 2; });
  }
  auto code = codes.begin();
  for (qsizetype at = 0; (at = shown.text.indexOf(part, at, sensitivity)) >= 0;) {
    if (wanted.whole_words && !shown.IsWord(at, part.size())) {
      ++at;
      continue;
    }
    const auto first = shown.positions.begin() + at;
    while (code != codes.end() && code->start + code->length <= at) ++code;
    const bool in_code = code != codes.end() && code->start < at + part.size();
    places.push_back({std::vector<int>(first, first + part.size()), in_code});
    at += part.size();
  }
}

std::vector<LetterSearch::Place> LetterSearch::FindAll(const Wanted& wanted) {
  letter_.ShowBox();
  std::vector<Place> places;
  const QTextDocument& document = *letter_.control().document();
  for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
    FindInBlock(block, wanted, places);
  }
  std::erase_if(places, [this](const Place& place) { return !InLimits(place); });
  return places;
}

bool LetterSearch::InLimits(const Place& place) const {
  return !limits_ ||
         (place.start() >= limits_->selectionStart() && place.end() <= limits_->selectionEnd());
}

LetterSearch::Found LetterSearch::Find(const Wanted& wanted, Direction direction, bool wrap) {
  const std::vector<Place> places = FindAll(wanted);
  if (places.empty()) return Found::kNo;
  QTextCursor cursor = letter_.control().textCursor();
  const bool forward = direction == Direction::kForward;
  auto place = places.end();
  if (forward) {
    place = std::ranges::find_if(
        places, [&](const Place& each) { return each.start() >= cursor.selectionEnd(); });
  } else {
    const auto after = std::ranges::find_if(
        places, [&](const Place& each) { return each.end() > cursor.selectionStart(); });
    if (after != places.begin()) place = std::prev(after);
  }
  const bool wrapped = place == places.end();
  if (wrapped && !wrap) return Found::kNo;
  if (wrapped) place = forward ? places.begin() : std::prev(places.end());
  cursor.setPosition(place->start());
  cursor.setPosition(place->end(), QTextCursor::KeepAnchor);
  letter_.control().setTextCursor(cursor);
  letter_.control().ensureCursorVisible();
  return wrapped ? Found::kPastTheEnd : Found::kYes;
}

// The bookmarks within it stay, behind what is put in.
void LetterSearch::Put(QTextCursor& cursor, const Place& place, const QString& with) {
  const auto format_at = [&](int position) {
    cursor.setPosition(position);
    cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
    return cursor.charFormat();
  };
  QTextCharFormat format = format_at(place.start());
  const auto field = SharedProperty<richtext::Field>(format, kFieldProperty);
  // What is only partly in a field is not in it afterwards.
  if (field != nullptr &&
      SharedProperty<richtext::Field>(format_at(place.end() - 1), kFieldProperty) != field) {
    LetterFormats& formats = letter_.formats();
    format = formats.Char(formats.CharOf(format));
  }
  const std::vector<int>& at = place.positions;
  for (std::size_t end = at.size(); end > 0;) {
    std::size_t start = end - 1;
    while (start > 0 && at[start - 1] + 1 == at[start]) --start;
    cursor.setPosition(at[start]);
    cursor.setPosition(at[end - 1] + 1, QTextCursor::KeepAnchor);
    if (start > 0) {
      cursor.removeSelectedText();
    } else {
      cursor.insertText(with, format);
    }
    end = start;
  }
}

LetterSearch::Replaced LetterSearch::Replace(const Wanted& wanted, const QString& with) {
  letter_.ShowBox();
  const QTextCursor selected = letter_.control().textCursor();
  if (!selected.hasSelection()) return Replaced::kNo;
  std::vector<Place> places;
  FindInBlock(selected.document()->findBlock(selected.selectionStart()), wanted, places);
  const auto place = std::ranges::find_if(places, [&](const Place& each) {
    return each.start() == selected.selectionStart() && each.end() == selected.selectionEnd();
  });
  if (place == places.end() || !InLimits(*place)) return Replaced::kNo;
  if (place->in_code) return Replaced::kInCode;
  if (!letter_.MayChange(place->start(), place->end())) return Replaced::kNo;
  QTextCursor cursor(selected.document());
  cursor.beginEditBlock();
  Put(cursor, *place, OneLine(with));
  cursor.endEditBlock();
  letter_.control().setTextCursor(cursor);
  return Replaced::kYes;
}

LetterSearch::Count LetterSearch::ReplaceAll(const Wanted& wanted, const QString& with) {
  std::vector<Place> places = FindAll(wanted);
  const QTextDocument& document = *letter_.control().document();
  Count count;
  count.in_code =
      static_cast<int>(std::erase_if(places, [](const Place& place) { return place.in_code; }));
  count.kept = static_cast<int>(std::erase_if(places, [&](const Place& place) {
    return TouchesProtected(document, place.start(), place.end());
  }));
  count.replaced = static_cast<int>(places.size());
  if (places.empty()) return count;
  const QString text = OneLine(with);
  QTextCursor cursor(letter_.control().document());
  cursor.beginEditBlock();
  // From the end, so that the places before it stay true.
  for (auto place = places.rbegin(); place != places.rend(); ++place) Put(cursor, *place, text);
  cursor.endEditBlock();
  return count;
}

bool LetterSearch::ReplaceText(int start, int end, const QString& with) {
  letter_.ShowBox();
  if (start >= end || !letter_.MayChange(start, end)) return false;
  Place place;
  for (int position = start; position < end; ++position) place.positions.push_back(position);
  QTextCursor cursor(letter_.control().document());
  cursor.beginEditBlock();
  Put(cursor, place, OneLine(with));
  cursor.endEditBlock();
  letter_.control().setTextCursor(cursor);
  return true;
}

bool LetterSearch::LimitToSelection() {
  letter_.ShowBox();
  QTextEdit& control = letter_.control();
  QTextCursor selected = control.textCursor();
  if (!selected.hasSelection()) return false;
  limits_.emplace(selected.document());
  limits_->setPosition(selected.selectionEnd());
  limits_->setPosition(selected.selectionStart(), QTextCursor::KeepAnchor);
  // What is put in at the very start is within. Of a cursor's two ends only its position can stay.
  limits_->setKeepPositionOnInsert(true);
  QTextEdit::ExtraSelection shown;
  shown.cursor = *limits_;
  QColor colour = control.palette().color(QPalette::Highlight);
  colour.setAlpha(60);
  shown.format.setBackground(colour);
  control.setExtraSelections({shown});
  selected.setPosition(selected.selectionStart());
  control.setTextCursor(selected);
  return true;
}

void LetterSearch::Unlimit() {
  if (!limits_) return;
  QTextCursor selected = letter_.control().textCursor();
  if (!selected.hasSelection()) {
    selected.setPosition(limits_->selectionStart());
    selected.setPosition(limits_->selectionEnd(), QTextCursor::KeepAnchor);
    letter_.control().setTextCursor(selected);
  }
  limits_.reset();
  letter_.control().setExtraSelections({});
}

}  // namespace tenora
