// The sort weights of characters under the engine's "General" sort order: what the keys of a text
// index are made of.
#pragma once

#include <cstdint>

namespace tenora::query {

// Bytes from the highest: first and second primary byte (0: none), first and second accent byte (0:
// none, which counts as 2). Upper- and lower-case letters weigh the same. With both primary bytes 0
// the word is either 0, a character that sorting passes over, or 0x0600 + weight: a hyphen or an
// apostrophe, which count only where all else is equal.
using CharacterWeight = std::uint32_t;

// True when the engine's weight of the character is known.
bool FindCharacterWeight(char32_t character, CharacterWeight& weight);

}  // namespace tenora::query
