#include "output/email_content.h"

#include "output/html/document_html.h"
#include "output/html/document_plain_text.h"
#include "output/mail/email_pictures.h"

namespace tenora {

EmailBody MakeEmailBody(const RichTextBox& letter) {
  const richtext::Document& document = letter.Document();
  EmailPictures pictures;
  EmailBody result;
  result.body = html::DocumentHtml(
      document, {.line_end = "\r\n"},
      [&pictures](const richtext::Picture& picture) { return pictures.AddressOf(picture); });
  result.plain_text = html::DocumentPlainText(document);
  result.pictures = pictures.TakeParts();
  return result;
}

}  // namespace tenora
