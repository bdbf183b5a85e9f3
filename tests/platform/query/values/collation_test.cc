#include "platform/query/values/collation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

constexpr std::uint32_t kBefore2010 = 0x00000409, kSince2010 = 0x01000409;

// Groups of equal texts in the order of the engine's text index: groups separated by "|", equal
// texts by "=". A text with an apostrophe or dash sorts directly after its plain form.
const struct {
  std::uint32_t order;
  const char* groups;
} kOrders[] = {
    {kBefore2010,
     "= =   |'|-| ab|!ab|_ab|+ab|0ab|9ab|A=a=a  |ª|Á=á=a\u0301|À|Ā=ā|a b|a!b|a~b|a0b|ab=AB=aB "
     "|a'b|a-b|ab'|ab-|ább|abc|aca|ac-a|ae=æ=Æ|af|élan=ÉLAN|elbow|O'Brien|Obrien B|Ōtene|ouse|"
     "ss=ß|st|Te Awa|TeAwa|Te-Awa|ü|ud|ue|Z|Ж=ж|い|日|🚗"},
    {kSince2010,
     "= =   |'|-| ab|!ab|_ab|+ab|0ab|9ab|A=a=a  |ª|Á=á=a\u0301|À|Ā=ā|a b|ab=AB=aB |a'b|a-b|ae=æ=Æ|"
     "O'Brien|Obrien B|ss=ß|ud|ü=Ü=ue=UE|uf|Z|Ж=ж|い|日|🚗"},
};

TEST(Collation, OrdersAsTheEnginesTextIndexDoes) {
  for (const auto& [order, groups] : kOrders) {
    const Collation& collation = Collation::Of(order);
    const std::vector<std::string> sorted = Split(groups, "|");
    for (std::size_t i = 0; i < sorted.size(); ++i)
      for (std::size_t j = 0; j < sorted.size(); ++j)
        for (const std::string& left : Split(sorted[i], "="))
          for (const std::string& right : Split(sorted[j], "=")) {
            EXPECT_EQ(collation.Compare(left, right), (i > j) - (i < j)) << left << " ? " << right;
            if (i == j) {
              EXPECT_EQ(collation.Hash(left), collation.Hash(right)) << left << " ? " << right;
            }
          }
  }
}

TEST(Collation, TakesBytesThatAreNoText) {
  const Collation& collation = Collation::Of(kBefore2010);
  const std::string bytes("\xC3(\xFF\x00z", 5);
  EXPECT_EQ(collation.Compare(bytes, bytes), 0);
  EXPECT_NE(collation.Compare(bytes, "z"), 0);
  EXPECT_EQ(collation.Compare(bytes, "z"), -collation.Compare("z", bytes));
}

TEST(Queries, CompareByTheOrderOfTheDatabase) {
  const test::ScratchFolder folder;
  for (const std::uint32_t order : {kBefore2010, kSince2010}) {
    std::string bytes = ReadWholeFile(test::SampleDatabase());
    constexpr std::size_t kVersionOfOrder = 0x71;  // 0 in the sample; masked with a stream of bytes
    bytes[kVersionOfOrder] =
        static_cast<char>(bytes[kVersionOfOrder] ^ static_cast<char>(order >> 24));
    const std::filesystem::path path = folder / std::to_string(order);
    WriteWholeFile(path, bytes);
    const auto workspace = Workspace::Create();
    EXPECT_EQ(workspace->OpenDatabase(path)->Texts()("Mueller", "Müller"), order == kSince2010);
    EXPECT_EQ(RowsOf(*workspace->OpenDatabase(path),
                     "select top 1 iif('Mueller' = 'Müller', 1, 0), iif('ἄ' = '', 1, 0), "
                     "strcomp('ud', 'ü'), iif('ἄ' like '[α-β]', 1, 0) from owner"),
              std::vector<std::string>{order == kBefore2010 ? "0|1|1|0" : "1|0|-1|1"});
  }
}

}  // namespace
}  // namespace tenora::query
