// Makes the body of an e-mail from a letter: its HTML, its plain text, and its pictures.
#pragma once

#include "output/email_sender.h"
#include "platform/richtext/rich_text_box.h"

namespace tenora {

// Text goes through RtfToHtml; tables, which that leaves out, become HTML tables around their
// cells' text, and pictures become inline parts that the HTML shows in their places.
EmailBody MakeEmailBody(const RichTextBox& letter);

}  // namespace tenora
