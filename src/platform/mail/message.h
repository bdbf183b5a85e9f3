// An outgoing message and its header lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/mail/address.h"
#include "platform/runtime/date.h"

namespace tenora::mail {

// A picture that the HTML shows (content_id set, referred to as "cid:…"), or a file sent along.
struct Part {
  std::string content_type;  // "image/png", "application/pdf"
  std::string file_name;     // UTF-8
  std::string content_id;
  std::string bytes;
};

struct Message {
  Address from;
  std::vector<Address> to;
  std::string subject;  // UTF-8; line breaks become blanks
  std::string text;     // the whole body, or the alternative for readers without HTML
  std::string html;     // empty for a plain message
  std::vector<Part> inline_parts;
  std::vector<Part> attachments;
  Date date;  // local time
};

// The header lines From, To, Subject, Date and Message-ID, each without its line end, ASCII only,
// folded where long. No text in a message can inject a header line.
std::vector<std::string> HeaderLines(const Message& message);

// Text of a header as encoded words where it is not plain ASCII.
std::string EncodeHeaderText(std::string_view text);

std::string Base64(std::string_view bytes);

}  // namespace tenora::mail
