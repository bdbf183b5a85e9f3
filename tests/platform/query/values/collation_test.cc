#include "platform/query/values/collation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

// Groups of equal texts in the order of the engine's text index: groups separated by "|", equal
// texts by "=". A text with an apostrophe or dash sorts directly after its plain form.
std::vector<std::vector<std::string>> Order() {
  std::vector<std::vector<std::string>> order;
  for (const std::string& group :
       Split("= =   |'|-| ab|!ab|_ab|+ab|0ab|9ab|A=a=a  |ª|Á=á|À|Ā=ā|a b|a!b|a~b|a0b|ab=AB=aB |a'b|"
             "a-b|ab'|ab-|ább|abc|aca|ac-a|ae=æ=Æ|af|élan=ÉLAN|elbow|O'Brien|Obrien B|Ōtene|ouse|"
             "ss=ß|st|Te Awa|TeAwa|Te-Awa|Z|Ж=ж",
             "|")) {
    order.push_back(Split(group, "="));
  }
  return order;
}

const std::vector<std::vector<std::string>> kOrder = Order();

TEST(CompareText, OrdersAsTheEnginesTextIndexDoes) {
  for (std::size_t i = 0; i < kOrder.size(); ++i)
    for (std::size_t j = 0; j < kOrder.size(); ++j)
      for (const std::string& left : kOrder[i])
        for (const std::string& right : kOrder[j]) {
          EXPECT_EQ(CompareText(left, right), (i > j) - (i < j)) << left << " ? " << right;
        }
}

TEST(HashText, IsEqualForEqualTexts) {
  for (const auto& group : kOrder)
    for (const std::string& text : group) EXPECT_EQ(HashText(text), HashText(group[0])) << text;
}

TEST(CompareText, TakesBytesThatAreNoText) {
  const std::string bytes("\xC3(\xFF\x00z", 5);
  EXPECT_EQ(CompareText(bytes, bytes), 0);
  EXPECT_NE(CompareText(bytes, "z"), 0);
  EXPECT_EQ(CompareText(bytes, "z"), -CompareText("z", bytes));
}

}  // namespace
}  // namespace tenora::query
