// What the rich-text tests share.
#pragma once

#include <string>
#include <string_view>

#include "platform/richtext/document_text.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"

namespace tenora::richtext {

inline std::string Canonical(std::string_view source) { return WriteRtf(ReadRtf(source)); }
inline std::string TextOf(std::string_view source) { return PlainText(ReadRtf(source).blocks); }

// A document around a piece of text: Arial and Symbol, and red and blue.
inline std::string Letter(std::string_view body) {
  return "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fnil\\fcharset0 Arial;}"
         "{\\f1\\fnil\\fcharset2 Symbol;}{\\f2\\froman\\fcharset238 Times;}}\r\n"
         "{\\colortbl ;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}\r\n"
         "\\viewkind4\\uc1\\pard\\f0\\fs24 " +
         std::string(body) + "}\r\n";
}

// The canonical form after the head, without the closing brace.
inline std::string CanonicalBody(std::string_view body) {
  const std::string source = Canonical(Letter(body));
  const std::string start = "\\viewkind4\\uc1";
  const std::size_t from = source.find(start) + start.size();
  return source.substr(from, source.rfind('}') - from);
}

}  // namespace tenora::richtext
