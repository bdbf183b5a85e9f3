#include "ui/editor/commands/picture_commands.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextTable>
#include <cmath>
#include <utility>

#include "ui/editor/commands/picture_dialog.h"
#include "ui/editor/document/letter_loader.h"
#include "ui/editor/text/protected_text.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

QTextCharFormat FormatOf(const QTextDocument& document, int position) {
  QTextCursor cursor(document.findBlock(position));
  cursor.setPosition(position);
  cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
  return cursor.charFormat();
}

// As large as in the text, which a word processor's own place does not go by.
richtext::PictureLook Fitted(richtext::PictureLook look, int text_width) {
  if (look.place == richtext::PicturePlace::kAsSet || look.width <= text_width) return look;
  look.height =
      static_cast<int>(std::lround(static_cast<double>(look.height) * text_width / look.width));
  look.width = text_width;
  return look;
}

}  // namespace

std::shared_ptr<const InlineObject> PictureCommands::ObjectAt(int position) const {
  const QTextDocument& document = *letter_.control().document();
  if (position < 0 || position + 1 >= document.characterCount() ||
      document.characterAt(position) != QChar::ObjectReplacementCharacter)
    return nullptr;
  auto object = SharedProperty<InlineObject>(FormatOf(document, position), kObjectProperty);
  const bool one = object != nullptr && object->runs.size() == 1 &&
                   (object->kind == InlineObject::Kind::kPicture ||
                    object->kind == InlineObject::Kind::kVerbatim);
  return one ? object : nullptr;
}

int PictureCommands::Selected() const {
  const QTextCursor cursor = letter_.control().textCursor();
  const bool one = cursor.selectionEnd() - cursor.selectionStart() == 1;
  return one && LookAt(cursor.selectionStart()) ? cursor.selectionStart() : -1;
}

std::optional<richtext::PictureLook> PictureCommands::LookAt(int position) const {
  const auto object = ObjectAt(position);
  auto look = object == nullptr ? std::nullopt : richtext::LookOf(object->runs.front());
  if (look && look->place == richtext::PicturePlace::kInLine) look = Fitted(*look, page_width_());
  return look;
}

int PictureCommands::TextWidth() const {
  const QTextCursor cursor = letter_.control().textCursor();
  if (cursor.currentTable() == nullptr) return page_width_();
  const QAbstractTextDocumentLayout& layout = *letter_.control().document()->documentLayout();
  const QPaintDevice* device = layout.paintDevice();
  const double dpi = device == nullptr ? 96 : device->logicalDpiX();
  return static_cast<int>(
      std::lround(layout.blockBoundingRect(cursor.block()).width() * 1440 / dpi));
}

void PictureCommands::Change(const richtext::PictureLook& look) {
  letter_.ShowBox();
  int position = Selected();
  if (position < 0 || look == LookAt(position)) return;
  if (!letter_.MayChange(position, position + 1)) return;
  QTextEdit& control = letter_.control();
  const QTextCharFormat format = FormatOf(*control.document(), position);
  const auto before = LookAt(position);
  InlineObject object = *ObjectAt(position);
  richtext::Run& run = object.runs.front();
  run = richtext::WithLook(run, Fitted(look, page_width_()), TextWidth());
  object.kind =
      run.object.index() == 1 ? InlineObject::Kind::kPicture : InlineObject::Kind::kVerbatim;
  QTextCursor cursor = control.textCursor();
  cursor.beginEditBlock();
  cursor.removeSelectedText();
  const auto beside = [](const std::optional<richtext::PictureLook>& of) {
    return of && (of->place == richtext::PicturePlace::kLeft ||
                  of->place == richtext::PicturePlace::kRight);
  };
  // It hangs at the first line of its paragraph on paper, on the screen at the line that it is in.
  const int start = cursor.block().position();
  if (beside(look) && !beside(before) && !TouchesProtected(*control.document(), start, start)) {
    cursor.setPosition(start);
    position = start;
  }
  LetterLoader(letter_.formats())
      .InsertObject(&cursor, std::move(object), letter_.formats().CharOf(format),
                    SharedProperty<richtext::Field>(format, kFieldProperty));
  cursor.endEditBlock();
  cursor.setPosition(position);
  cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
  control.setTextCursor(cursor);
}

void PictureCommands::Ask() {
  letter_.ShowBox();
  const int position = Selected();
  if (position < 0) return;
  const richtext::Run run = ObjectAt(position)->runs.front();
  const auto look = AskPictureLook(&letter_.control(), *LookAt(position), richtext::OwnLookOf(run));
  if (look) Change(*look);
}

}  // namespace tenora
