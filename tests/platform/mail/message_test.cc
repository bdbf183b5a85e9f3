#include "platform/mail/message.h"

#include <gtest/gtest.h>

#include "platform/runtime/text.h"

namespace tenora::mail {
namespace {

TEST(EncodeHeaderText, KeepsPlainTextAndEncodesTheRestInShortWords) {
  EXPECT_EQ(EncodeHeaderText("Your rent"), "Your rent");
  EXPECT_EQ(EncodeHeaderText("Māhuta"), "=?UTF-8?B?TcSBaHV0YQ==?=");
  EXPECT_EQ(EncodeHeaderText("=?UTF-8?B?QQ==?="), "=?UTF-8?B?PT9VVEYtOD9CP1FRPT0/PQ==?=");
  std::string names;
  for (int i = 0; i < 60; ++i) names += "Ōrākei 😀 ";
  const std::string encoded = EncodeHeaderText(names);
  for (const std::string& line : Split(encoded, "\r\n")) {
    EXPECT_LE(TrimBlanks(line).size(), 75U);
    EXPECT_TRUE(line == TrimBlanks(line) || line.front() == ' ') << "a line of its own: " << line;
  }
}

TEST(HeaderLines, NoValueCanAddALine) {
  Message message;
  message.from = {"Office\r\nBcc: spy@x.test", "office@x.test"};
  message.to = {{"Evil \"quoted\" \\ name", "a@x.test"}, {"Māhuta\n\nbody", "b@x.test"}};
  message.subject = "Rent\r\nBcc: spy@x.test\r\n\r\nbody";
  message.date = Date::FromCalendar(2026, 11, 21, 9, 30);
  const std::vector<std::string> lines = HeaderLines(message);
  ASSERT_EQ(lines.size(), 5U);
  for (const std::string& line : lines) {
    for (std::size_t at = line.find_first_of("\r\n"); at != std::string::npos;
         at = line.find_first_of("\r\n", at + 2)) {
      EXPECT_EQ(line.substr(at, 3), "\r\n ") << line;
    }
  }
  EXPECT_TRUE(lines[3].starts_with("Date: Sat, 21 Nov 2026 09:30:00 ")) << lines[3];
  EXPECT_TRUE(lines[4].ends_with("@x.test>"));
  EXPECT_NE(HeaderLines(message)[4], lines[4]) << "message ids repeat";
}

}  // namespace
}  // namespace tenora::mail
