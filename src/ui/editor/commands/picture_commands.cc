#include "ui/editor/commands/picture_commands.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextTable>
#include <cmath>
#include <utility>

#include "ui/editor/commands/picture_dialog.h"
#include "ui/editor/document/letter_loader.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

QTextCharFormat FormatOf(const QTextDocument& document, int position) {
  QTextCursor cursor(document.findBlock(position));
  cursor.setPosition(position);
  cursor.setPosition(position + 1, QTextCursor::KeepAnchor);
  return cursor.charFormat();
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
  return object == nullptr ? std::nullopt : richtext::LookOf(object->runs.front());
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
  const int position = Selected();
  if (position < 0 || look == LookAt(position)) return;
  if (!letter_.MayChange(position, position + 1)) return;
  QTextEdit& control = letter_.control();
  const QTextCharFormat format = FormatOf(*control.document(), position);
  InlineObject object = *ObjectAt(position);
  richtext::Run& run = object.runs.front();
  run = richtext::WithLook(run, look, TextWidth());
  object.kind =
      run.object.index() == 1 ? InlineObject::Kind::kPicture : InlineObject::Kind::kVerbatim;
  QTextCursor cursor = control.textCursor();
  cursor.beginEditBlock();
  cursor.removeSelectedText();
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
  const auto look =
      AskPictureLook(&letter_.control(), *richtext::LookOf(run), richtext::OwnLookOf(run));
  if (look) Change(*look);
}

}  // namespace tenora
