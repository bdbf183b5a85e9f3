// E-mail addresses as people and databases write them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tenora::mail {

struct Address {
  std::string name;     // UTF-8, empty when only the address is given
  std::string address;  // local part, "@", domain; the domain is ASCII
};

// Reads "ann@example.test", "Ann Lee <ann@example.test>", or several of them split by ";" or ","
// (which a name holds inside double quotes only).
// Raises 5 (Invalid procedure call) with the text in the description when it holds no address, or
// one that no server could deliver to: no "@", an empty side, blanks, control characters, line
// breaks.
std::vector<Address> ParseAddresses(std::string_view text);

}  // namespace tenora::mail
