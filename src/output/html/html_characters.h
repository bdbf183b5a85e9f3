// The characters of a letter as HTML writes them.
#pragma once

#include <string>
#include <string_view>

namespace tenora::html {

// The prefix of an escape's meaning that is RTF source rather than HTML.
inline constexpr std::string_view kRtfFragment = "<rtf>:";

// The meaning of \'xx: an HTML entity or character, RTF source after kRtfFragment, or nothing for
// a character that is dropped. The two digits count in lower case only.
std::string_view EscapedCharacter(std::string_view two_digits);

// Appends a run of text without line breaks and control characters (tabs stay).
// Bytes that are no UTF-8 are read as Windows-1252. With `entities`, "<", ">" and "&" become
// entities.
void AppendText(std::string& html, std::string_view text, bool entities);

// Appends UTF-8 text for an element or for an attribute in double quotes: markup and double quotes
// become entities, control characters are left out.
void AppendEscaped(std::string& html, std::string_view text);

// HTML in ASCII: characters beyond it become references.
std::string WithReferences(std::string_view html);

}  // namespace tenora::html
