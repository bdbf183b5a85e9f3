// Whose a field of the office's own is, as the table custom_fields says it.
#pragma once

#include <cstdint>

namespace tenora {

inline constexpr std::int16_t kTenantParent = 201;
inline constexpr std::int16_t kPropertyParent = 202;
inline constexpr std::int16_t kOwnerParent = 203;

}  // namespace tenora
