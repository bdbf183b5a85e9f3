#include "platform/mail/address.h"

#include <gtest/gtest.h>

#include "platform/runtime/error.h"
#include "support/errors.h"

namespace tenora::mail {
namespace {

TEST(ParseAddresses, ReadsWhatPeopleWrite) {
  const struct {
    const char* text;
    std::vector<std::pair<std::string, std::string>> expected;
  } cases[] = {
      {"ann@example.test", {{"", "ann@example.test"}}},
      {"  ann@example.test ", {{"", "ann@example.test"}}},
      {"Ann Māhuta <ann@example.test>", {{"Ann Māhuta", "ann@example.test"}}},
      {"\"Lee; Ann\"<ann@example.test>", {{"Lee; Ann", "ann@example.test"}}},
      {"\"Lee, \\\"A\\\" <x>\" <a@x.test>, b@y.test",
       {{"Lee, \"A\" <x>", "a@x.test"}, {"", "b@y.test"}}},
      {"Bob \"B, C\" <b@y.test>", {{"Bob \"B, C\"", "b@y.test"}}},
      {"\u00A0ann@b\u00FCcher.test\u00A0", {{"", "ann@xn--bcher-kva.test"}}},
      {"a@x.test; b@y.test", {{"", "a@x.test"}, {"", "b@y.test"}}},
      {"a@x.test,b@y.test;", {{"", "a@x.test"}, {"", "b@y.test"}}},
      {"o'brien+rent@x.test", {{"", "o'brien+rent@x.test"}}},
  };
  for (const auto& c : cases) {
    const std::vector<Address> addresses = ParseAddresses(c.text);
    ASSERT_EQ(addresses.size(), c.expected.size()) << c.text;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
      EXPECT_EQ(addresses[i].name, c.expected[i].first);
      EXPECT_EQ(addresses[i].address, c.expected[i].second);
    }
  }
}

TEST(ParseAddresses, RefusesWhatNoServerCouldDeliverTo) {
  const std::string long_local = std::string(65, 'a') + "@x.test";
  for (const std::string& text :
       {std::string(), std::string(" ; "), std::string("ann"), std::string("@x.test"),
        std::string("ann@"), std::string("ann lee@x.test"), std::string("ann@x..test"),
        std::string("a@b@c"), std::string("ann@x.test\r\nBcc: all@x.test"),
        std::string("Ann <ann@x.test> more"), std::string("Ann <ann@x.test"),
        std::string("a\x01@x.test"), std::string("\xFF@x.test"), long_local,
        std::string("<a@x.test> <b@y.test>"), std::string("\"Ann <ann@x.test>, b@y.test"),
        std::string("ann@x\u2028.test")}) {
    const auto error = test::RaisedBy([&] { ParseAddresses(text); });
    ASSERT_TRUE(error) << text;
    EXPECT_EQ(error->description().find('\n'), std::string::npos);
    EXPECT_EQ(error->number(), error_number::kInvalidProcedureCall);
  }
}

}  // namespace
}  // namespace tenora::mail
