#include "platform/query/collation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tenora::query {
namespace {

// Groups of equal texts in the order of the engine's text index.
const std::vector<std::vector<std::string>> kOrder = {
    {"", " ", "   "},
    {"'"},
    {"-"},
    {" ab"},
    {"!ab"},
    {"_ab"},
    {"+ab"},
    {"0ab"},
    {"9ab"},
    {"A", "a", "a  "},
    {"ª"},
    {"Á", "á"},
    {"À"},
    {"Ā", "ā"},
    {"a b"},
    {"a!b"},
    {"a~b"},
    {"a0b"},
    {"ab", "AB", "aB "},
    {"a'b"},  // behind its plain form, before all that goes on otherwise
    {"a-b"},
    {"ab'"},
    {"ab-"},
    {"ább"},
    {"abc"},
    {"aca"},
    {"ac-a"},
    {"ae", "æ", "Æ"},
    {"af"},
    {"élan", "ÉLAN"},
    {"elbow"},
    {"O'Brien"},
    {"Obrien B"},
    {"Ōtene"},
    {"ouse"},
    {"ss", "ß"},
    {"st"},
    {"Te Awa"},
    {"TeAwa"},
    {"Te-Awa"},
    {"Z"},
    {"Ж", "ж"},
};

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
