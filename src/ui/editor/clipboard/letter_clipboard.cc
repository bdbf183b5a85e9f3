#include "ui/editor/clipboard/letter_clipboard.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QUrl>
#include <optional>
#include <utility>

#include "platform/printing/picture_import.h"
#include "platform/richtext/document_text.h"
#include "platform/richtext/editing.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"
#include "platform/richtext/table_numbers.h"
#include "ui/editor/document/letter_reader.h"
#include "ui/editor/text/text_properties.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Run;

constexpr qsizetype kLargestPaste = qsizetype{64} << 20;
constexpr const char* kRtfTypes[] = {"text/rtf", "application/rtf", "text/richtext",
                                     "application/x-qt-windows-mime;value=\"Rich Text Format\""};

QByteArray RtfOf(const QMimeData& data) {
  for (const char* type : kRtfTypes) {
    const QByteArray bytes = data.data(QString::fromLatin1(type));
    if (!bytes.isEmpty() && bytes.size() <= kLargestPaste &&
        richtext::IsRtf(
            std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size()))))
      return bytes;
  }
  return {};
}

Run PictureRun(richtext::Picture picture, const richtext::CharFormat& format) {
  Run run;
  run.format = format;
  run.text = "\uFFFC";
  run.object = std::make_shared<const richtext::Picture>(std::move(picture));
  return run;
}

// A pasted page shows only the pictures it contains as data: nothing is fetched, no file is read.
class PastedPage : public QTextDocument {
 protected:
  QVariant loadResource(int type, const QUrl& name) override {
    if (type == QTextDocument::ImageResource && name.scheme() == QLatin1String("data"))
      return QTextDocument::loadResource(type, name);
    return {};
  }
};

// Turns a page's pictures into a letter's; those that cannot be loaded are removed.
void TakePictures(QTextDocument* page, LetterFormats& formats) {
  std::vector<std::pair<int, QTextImageFormat>> images;
  for (QTextBlock block = page->begin(); block.isValid(); block = block.next()) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const QTextFragment fragment = it.fragment();
      if (!fragment.charFormat().isImageFormat()) continue;
      for (int i = 0; i < fragment.length(); ++i)
        images.emplace_back(fragment.position() + i, fragment.charFormat().toImageFormat());
    }
  }
  QTextCursor cursor(page);
  for (auto image = images.rbegin(); image != images.rend(); ++image) {
    cursor.setPosition(image->first);
    cursor.setPosition(image->first + 1, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    const QVariant resource =
        page->resource(QTextDocument::ImageResource, QUrl(image->second.name()));
    auto picture = resource.typeId() == QMetaType::QByteArray
                       ? printing::ImportPicture(resource.toByteArray().toStdString())
                       : printing::ImportImage(resource.value<QImage>());
    if (!picture) continue;
    InlineObject object;
    object.kind = InlineObject::Kind::kPicture;
    object.runs.push_back(PictureRun(*std::move(picture), {}));
    QTextCharFormat format;
    format.setObjectType(kLetterObject);
    format.setProperty(kObjectProperty,
                       QVariant::fromValue(std::make_shared<const InlineObject>(object)));
    format.setProperty(
        kCharProperty,
        QVariant::fromValue(richtext::CharFormat{.font = formats.head().default_font}));
    cursor.insertText(QString(QChar::ObjectReplacementCharacter), format);
  }
}

std::vector<Block> BlocksOfHtml(const QString& html, LetterFormats& formats) {
  PastedPage page;
  page.setUndoRedoEnabled(false);
  page.setHtml(html);
  TakePictures(&page, formats);
  return LetterReader(formats).Read(page);
}

std::vector<Block> BlocksOfText(const QString& text, const richtext::CharFormat& format) {
  richtext::Document letter = richtext::DocumentOfText(text.toStdString());
  for (Block& block : letter.blocks) {
    auto& paragraph = std::get<richtext::Paragraph>(block);
    paragraph.mark = format;
    for (Run& run : paragraph.runs) run.format = format;
  }
  return std::move(letter.blocks);
}

// A browser's copy of a picture comes with a page that only names it.
bool HasContent(const std::vector<Block>& blocks) {
  return blocks.size() > 1 || blocks.front().index() != 0 ||
         !std::get<richtext::Paragraph>(blocks.front()).runs.empty();
}

}  // namespace

QMimeData* CopySelection(const QTextCursor& selection, LetterFormats& formats) {
  QTextDocument part;
  part.setUndoRedoEnabled(false);
  QTextCursor(&part).insertFragment(selection.selection());
  richtext::Document letter = formats.head();
  letter.head_groups.clear();
  letter.info.clear();
  letter.title.clear();
  letter.blocks = LetterReader(formats).Read(part);
  richtext::Renumber(&letter);

  auto* data = new QMimeData;
  const QByteArray rtf = QByteArray::fromStdString(richtext::WriteRtf(letter));
  data->setData(QStringLiteral("text/rtf"), rtf);
  data->setData(QStringLiteral("application/rtf"), rtf);
  data->setHtml(part.toHtml());
  data->setText(QString::fromStdString(richtext::PlainText(letter.blocks))
                    .replace(QLatin1String("\r\n"), QLatin1String("\n")));
  return data;
}

bool CanPaste(const QMimeData& data) {
  return data.hasText() || data.hasHtml() || data.hasImage() || data.hasUrls() ||
         !RtfOf(data).isEmpty();
}

std::vector<Block> BlocksOf(const QMimeData& data, LetterFormats& formats,
                            const richtext::CharFormat& format) {
  if (const QByteArray rtf = RtfOf(data); !rtf.isEmpty()) {
    richtext::Document letter =
        richtext::ReadRtf(std::string_view(rtf.constData(), static_cast<std::size_t>(rtf.size())));
    formats.Adopt(&letter);
    return std::move(letter.blocks);
  }
  if (data.hasHtml() && data.html().size() <= kLargestPaste) {
    auto blocks = BlocksOfHtml(data.html(), formats);
    if (HasContent(blocks) || !data.hasImage()) return blocks;
  }
  if (data.hasImage()) {
    if (auto picture = printing::ImportImage(data.imageData().value<QImage>())) {
      richtext::Paragraph paragraph;
      paragraph.runs.push_back(PictureRun(*std::move(picture), format));
      return {std::move(paragraph)};
    }
  }
  if (data.hasText() && data.text().size() <= kLargestPaste)
    return BlocksOfText(data.text(), format);
  return {};
}

QStringList FilesOf(const QMimeData& data) {
  QStringList files;
  const QList<QUrl> urls = data.urls();
  for (const QUrl& url : urls) {
    if (url.isLocalFile()) files.append(url.toLocalFile());
  }
  return files;
}

std::vector<Block> BlocksOfPictures(const QStringList& files, const richtext::CharFormat& format,
                                    QStringList* others) {
  richtext::Paragraph paragraph;
  for (const QString& name : files) {
    QFile file(name);
    std::optional<richtext::Picture> picture;
    if (QFileInfo(file).isFile() && file.size() <= kLargestPaste && file.open(QIODevice::ReadOnly))
      picture = printing::ImportPicture(file.readAll().toStdString());
    if (picture)
      paragraph.runs.push_back(PictureRun(*std::move(picture), format));
    else
      others->append(name);
  }
  if (paragraph.runs.empty()) return {};
  return {std::move(paragraph)};
}

}  // namespace tenora
