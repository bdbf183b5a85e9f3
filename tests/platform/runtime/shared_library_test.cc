#include "platform/runtime/shared_library.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

template <typename Body>
std::string ErrorOf(Body body) {
  try {
    body();
  } catch (const RuntimeError& error) {
    return std::to_string(error.number()) + ' ' + std::string(error.description());
  }
  return "none";
}

TEST(SharedLibraryTest, NamesWhatIsNotInstalled) {
  EXPECT_TRUE(ErrorOf([] {
                SharedLibrary("libtenora-none.so.1");
              }).starts_with("53 File not found: libtenora-none.so.1"));
  const SharedLibrary library("libm.so.6");
  EXPECT_EQ(ErrorOf([&] { library.Find("cosine"); }),
            "453 Specified DLL function not found: libm.so.6: cosine");
  const LibraryFunction<double(double)> root(library, "sqrt");
  EXPECT_EQ(root(9.0), 3.0);
}

}  // namespace
}  // namespace tenora
