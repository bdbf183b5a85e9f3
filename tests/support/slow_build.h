// Tests that try many points try fewer of them where the sanitizers make each ten times as slow.
#pragma once

namespace tenora::test {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSlowBuild = true;
#else
inline constexpr bool kSlowBuild = false;
#endif

}  // namespace tenora::test
