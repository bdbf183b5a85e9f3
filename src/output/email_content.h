// Makes the body of an e-mail from a letter: its HTML, its plain text, and its pictures.
#pragma once

#include "output/email_sender.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Pictures become inline parts that the HTML shows in their places. Raises 482 (Printer error) when
// a picture cannot be drawn for want of graphics.
EmailBody MakeEmailBody(const RichTextBox& letter);

}  // namespace tenora
