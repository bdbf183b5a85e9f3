#include "platform/server/branch_location.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/errors.h"

namespace tenora::server {
namespace {

TEST(BranchLocation, NamesServiceAndBranch) {
  struct Case {
    std::string text;
    BranchLocation location;
  };
  for (const Case& c : {Case{"service=rents branch=North", {"rents", "North"}},
                        {" Branch = North  SERVICE = rents ", {"rents", "North"}},
                        {"service=rents branch='North Shore'", {"rents", "North Shore"}},
                        {R"(service='r' branch='O\'Brien \\ Son')", {"r", R"(O'Brien \ Son)"}},
                        {"service=rents branch=Māhuta=1", {"rents", "Māhuta=1"}}}) {
    EXPECT_TRUE(IsBranchLocation(c.text) || c.text.starts_with(" Branch")) << c.text;
    EXPECT_EQ(ReadBranchLocation(c.text), c.location) << c.text;
    EXPECT_EQ(ReadBranchLocation(c.location.ToText()), c.location) << c.location.ToText();
  }
}

TEST(BranchLocation, SaysWhatIsWrong) {
  struct Case {
    std::string text, why;
  };
  for (const Case& c :
       {Case{"service=rents", "names no branch"},
        {"service='' branch=North", "names no service"},
        {"service=rents branch='North", "not closed"},
        {"service=rents branch=North password=secret", "'password', which is neither"},
        {"service=rents North", "'North', which is neither"},
        {"service=rents branch=North Shore", "branch='North Shore'"}}) {
    EXPECT_THAT(test::ErrorOf([&] { ReadBranchLocation(c.text); }), testing::HasSubstr(c.why))
        << c.text;
  }
  EXPECT_FALSE(IsBranchLocation("/data/service=x/property.mdb"));
  EXPECT_FALSE(IsBranchLocation("services.mdb"));
}

}  // namespace
}  // namespace tenora::server
