#include "platform/mail/mime_text.h"

#include <array>
#include <cstdio>

#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

constexpr std::size_t kLongestLine = 76;

std::string QuotedPrintable(std::string_view text) {
  std::string result;
  std::size_t column = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (text.substr(i, 2) == "\r\n") {
      result += "\r\n";
      column = 0;
      ++i;
      continue;
    }
    const bool ends_line = i + 1 == text.size() || text.substr(i + 1, 2) == "\r\n";
    const bool blank = c == ' ' || c == '\t';
    const bool plain = (c > ' ' && c <= '~' && c != '=') || (blank && !ends_line);
    // The last place of a line is for the "=" that continues it.
    if (column + (plain ? 1 : 3) >= kLongestLine) {
      result += "=\r\n";
      column = 0;
    }
    if (plain) {
      result += c;
      ++column;
    } else {
      std::array<char, 4> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "=%02X", static_cast<unsigned char>(c));
      result += escaped.data();
      column += 3;
    }
  }
  return result;
}

// An entity is its header lines, a blank line and its content.
std::string TextEntity(const std::string& text, const std::string& type) {
  const std::string lines = ReplaceAll(ReplaceAll(text, "\r\n", "\n"), "\n", "\r\n");
  return "Content-Type: " + type +
         "; charset=UTF-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" +
         QuotedPrintable(lines);
}

std::string FileEntity(const Part& file, const std::string& disposition) {
  std::string name;
  for (const char c : file.file_name) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '.' ||
                       c == '-' || c == '_';
    std::array<char, 4> escaped{c};
    if (!plain) {
      std::snprintf(escaped.data(), escaped.size(), "%%%02X", static_cast<unsigned char>(c));
    }
    name += escaped.data();
  }
  std::string entity =
      "Content-Type: " + file.content_type +
      "\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: " + disposition +
      "; filename*=UTF-8''" + name + "\r\n";
  if (!file.content_id.empty()) entity += "Content-ID: <" + file.content_id + ">\r\n";
  const std::string content = Base64(file.bytes);
  for (std::size_t i = 0; i < content.size(); i += kLongestLine) {
    entity += "\r\n" + content.substr(i, kLongestLine);
  }
  return entity;
}

std::string Multipart(const std::string& kind, const std::vector<std::string>& entities) {
  // "=_" stands in neither quoted-printable nor base64 text, so that no content can end a part.
  const std::string boundary = "=_tenora_" + kind;
  std::string result =
      "Content-Type: multipart/" + kind + "; boundary=\"" + boundary + "\"\r\n\r\n";
  for (const std::string& entity : entities) result += "--" + boundary + "\r\n" + entity + "\r\n";
  return result + "--" + boundary + "--\r\n";
}

}  // namespace

std::string MimeText(const Message& message) {
  std::string body = TextEntity(message.text, "text/plain");
  if (!message.html.empty()) {
    std::string html = TextEntity(message.html, "text/html");
    if (!message.inline_parts.empty()) {
      std::vector<std::string> related{std::move(html)};
      for (const Part& picture : message.inline_parts) {
        related.push_back(FileEntity(picture, "inline"));
      }
      html = Multipart("related", related);
    }
    body = Multipart("alternative", {body, html});
  }
  if (!message.attachments.empty()) {
    std::vector<std::string> mixed{std::move(body)};
    for (const Part& file : message.attachments) mixed.push_back(FileEntity(file, "attachment"));
    body = Multipart("mixed", mixed);
  }
  std::string text;
  for (const std::string& line : HeaderLines(message)) text += line + "\r\n";
  return text + "MIME-Version: 1.0\r\n" + body;
}

}  // namespace tenora::mail
