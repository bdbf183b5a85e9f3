// Text functions. Text is UTF-8; letter case is ignored for the letters A to Z only, which is all
// that command words, settings keys and merge codes need.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora {

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
char LowerAscii(char c);
std::string ToLower(std::string_view text);
std::string ToUpper(std::string_view text);

bool EqualsNoCase(std::string_view left, std::string_view right);
bool StartsWithNoCase(std::string_view text, std::string_view start);
bool EndsWithNoCase(std::string_view text, std::string_view end);
bool ContainsNoCase(std::string_view text, std::string_view part);
// Position of the first `part` at or after `from`, or npos.
std::size_t FindNoCase(std::string_view text, std::string_view part, std::size_t from = 0);

// Every occurrence, left to right, letter case counting; text put in is not searched again.
std::string ReplaceAll(std::string text, std::string_view part, std::string_view with);
std::string ReplaceAllNoCase(std::string_view text, std::string_view part, std::string_view with);

// Without the blanks (character 32) at both ends; other white space stays.
std::string_view TrimBlanks(std::string_view text);

// The pieces between separators; an empty text gives one empty piece.
std::vector<std::string> Split(std::string_view text, std::string_view separator);

// Removes one code point from the front of UTF-8 text. A byte that starts no valid sequence is
// removed alone and read as U+FFFD.
char32_t TakeCodePoint(std::string_view& text);
void AppendUtf8(std::string& text, char32_t code_point);
std::u16string ToUtf16(std::string_view text);
// An unpaired surrogate becomes U+FFFD.
std::string FromUtf16(std::u16string_view text);
bool IsValidUtf8(std::string_view text);
// At most this many bytes of UTF-8, cut between characters.
std::string_view BoundedUtf8(std::string_view text, std::size_t bytes);

}  // namespace tenora
