// The program's version. It is set in one place, project() of the top CMakeLists.txt, which the
// package and everything that shows a version take it from.
#pragma once

namespace tenora {

// "1.0"
extern const char* const kVersion;

// As the windows show it, "Version 1.0": the major number and one further part, whatever follows.
extern const char* const kVersionCaption;

}  // namespace tenora
