// Index keys: the bytes that the engine writes, and the order of values.
#include "platform/access/format/index_key.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "platform/access/file_builder.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

using testing::HasSubstr;

constexpr std::uint32_t kLegacy = 0x00000409, kGeneral = 0x01000409;

std::string Hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

Bytes AsBytes(const std::string& text) {
  return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

// An index over one or more columns, numbered from 0.
struct Subject {
  explicit Subject(const std::vector<std::pair<ColumnType, bool>>& parts,
                   std::uint32_t sort_order = kLegacy, std::uint8_t flags = 0) {
    index.flags = flags;
    for (const auto& [type, descending] : parts) {
      Column& column = table.columns.emplace_back();
      column.name = {'c', static_cast<char>('0' + table.columns.size())};
      column.type = type;
      column.number = static_cast<std::uint16_t>(table.columns.size() - 1);
      column.sort_order = sort_order;
      index.parts.push_back({column.number, descending});
    }
  }

  std::string Key(const std::vector<StoredField>& fields) {
    IndexKeyEncoder encoder(table, index, codec);
    IndexKey key;
    encoder.Encode(fields, key);
    return key;
  }
  std::string KeyOf(const std::string& stored) { return Key({{true, AsBytes(stored)}}); }

  TextCodec codec{FileHeader{}};
  TableDefinition table;
  PhysicalIndex index;
};

std::string TextKey(std::u16string_view text, std::uint32_t order = kLegacy,
                    bool descending = false) {
  return Hex(Subject({{ColumnType::kText, descending}}, order).KeyOf(test::Utf16(text)));
}

// What the engine wrote for these texts in an ascending index.
TEST(TextKey, MatchesTheEngineInBothSortOrders) {
  const struct {
    std::u16string_view text;
    const char *legacy, *general;
  } cases[] = {
      {u"", "7F0100", "7F0100"},
      {u" ", "7F0100", "7F0100"},
      {u"trail  ", "7F6D694A595E0100", "7F0E990E8A0E020E320E480100"},
      {u"  lead", "7F07075E514A4F0100", "7F070207020E480E210E020E1A0100"},
      {u"abA", "7F4A4C4A0100", "7F0E020E090E020100"},
      {u"T00001", "7F6D36363636380100", "7F0E990D170D170D170D170D190100"},
      {u"a_b", "7F4A2B034C0100", "7F0E0207440E090100"},
      {u"Māori", "7F604A64695901021700", "7F0E510E020E7C0E8A0E3201021700"},
      {u"Àab", "7F4A4A4C010F00", "7F0E020E020E09010F00"},
      {u"abÆ", "7F4A4C4A510100", "7F0E020E090E020E210100"},
      {u"Ü", "7F6F011300", "7F0E9F0E210100"},
      {u"Ǆ", "7F4F7801021400", "7F0E1A0EA901021400"},
      {u"Ǣ", "7F4A5101171700", "7F0E020E2101171700"},
      {u"Ƿ", "7F0100", "7F0E7E015100"},
      {u"a\u00ADb", "7F4A4C01010101800B068300", "7F0E020E090100"},
      {u"a\u202Ab", "7F4A4C0100", "7F0E020E090100"},
      {u"—", "7F010101018007068B00", "7F010101018007069000"},
      {u"€", "7F35A10100", "7F07A90100"},
      {u"O'Brien", "7F644C6959516201010101800B068000",
       "7F0E7C0E090E8A0E320E210E7001010101800B068000"},
      {u"ab'", "7F4A4C01010101800F068000", "7F0E020E0901010101800F068000"},
      {u"aé-b", "7F4A514C01020E010101800F068200", "7F0E020E210E0901020E010101800F068200"},
      {u"é-é", "7F5151010E0E010101800B068200", "7F0E210E21010E0E010101800B068200"},
      {u"a--b", "7F4A4C01010101800B0682800B068200", "7F0E020E0901010101800B0682800B068200"},
      {u"\u0003DirData", "7F4F59694F4A6D4A010101018007060500",
       "7F0E1A0E320E8A0E1A0E020E990E02010101018007060500"},
      // Letters that sort as two count for one accent, but for each of their own.
      {u"Z,'ūÐ'щ-üŁ", "7F781A6F4F79566F5E010202176802131F010101800F068080170680801B068200",
       "7F0EA9072F0E9F0E1A10870E9F0E210E48010202176802021F010101800F068080170680801B068200"},
      {u"'ü'-Æøè-ÉÜ'",
       "7F6F4A516451516F011302210F0E1301010180070680800B0680800B068280170682801F068000",
       "7F0E9F0E210E020E210E7C0E210E210E9F0E21010202210F0E01010180070680800B0680800B06828017068280"
       "1F068000"},
      {u"ĳ.é", "7F595B1C510102020E00", "7F0E320E3507330E210102020E00"},
      {u"Ǽ-x", "7F4A5175010E0E010101800F068200", "7F0E020E210EA6010E0E010101800F068200"},
      {u"΅-x", "7F2B237501010101800B068200", "7F0753010EA601020C010101800F068200"},
      {u"5−−Z", "7F402D022D02780100", "7F0D1D0EA901010101800B0683800B068300"},
      // Combining characters.
      {u"þ\u0301\u0301π", "7F6D57791B011A00", "7F0E990E2C0F22011A00"},
      {u"\u0301üé", "7F6F51010C130E00", "7F0E9F0E210E21010C020E00"},
      {u"\u030D'\u030D", "7F01060101018007068000", "7F01060101018007068000"},
      // Other scripts.
      {u"Ё", "7F7936011300", "7F1014011300"},
      {u"ἄ", "7F0100", "7F0F02015400"},
      {u"ﬃ", "7F5353590100", "7F0E230E230E320100"},
      {u"ൗ", "7F7C3D0100", "7F3A01010800"},
      {u"か", "7F7F0A010101FF0280FF8000", "7F7F0A010101FF0280FF8000"},
      {u"が", "7F7F0A01030101FF0280FF8000", "7F7F0A01030101FF0280FF8000"},
      {u"ぁ", "7F7F02010101A0FF0280FF8000", "7F7F02010101A0FF0280FF8000"},
      {u"一", "7F9F020100", "7FFDFF3C6A0100"},
      {u"가", "7F81030100", "7FC0030100"},
      {u"\uE003", "7FE6050100", "7FA90201C500"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TextKey(c.text), c.legacy) << FromUtf16(c.text);
    EXPECT_EQ(TextKey(c.text, kGeneral), c.general) << FromUtf16(c.text);
  }
}

TEST(TextKey, IsInvertedInADescendingColumn) {
  EXPECT_EQ(TextKey(u"Māori", kLegacy, true), "809FB59B96A6FEFDE8FF00");
  EXPECT_EQ(TextKey(u"O'Brien", kLegacy, true), "809BB396A6AE9DFEFEFEFE7FF4F97FFF00");
  EXPECT_EQ(TextKey(u"aé-b", kGeneral, true), "80F1FDF1DEF1F6FEFDF1FEFEFE7FF0F97DFF00");
  EXPECT_EQ(TextKey(u"", kGeneral, true), "80FEFF00");
}

TEST(TextKey, RefusesUnknownCharactersInsteadOfGuessing) {
  const struct {
    std::u16string text;
    const char* reason;
  } cases[] = {
      {u"tab\there", "column 'c1': the sort codes of character U+0009 are not known"},
      {u"\U0001F600", "U+1F600"},
      {u"いぬ", "how character U+3044 sorts beside others is not known"},
      {u"a가", "U+AC00"},
      {std::u16string(1, u'\xD83D'), "half a character"},
      {u"ﬃ-a", "U+002D after character U+FB03"},
      {u"\u0301a-", "U+002D after character U+0301"},
      {u"a" + std::u16string(59, u'\u0300'), "U+0300 after"},
      {std::u16string(256, u'a'), "longer than 255"},
  };
  for (const auto& c : cases) {
    try {
      TextKey(c.text);
      ADD_FAILURE() << c.reason;
    } catch (const NotEncodable& refusal) {
      EXPECT_THAT(refusal.what(), HasSubstr(c.reason));
    }
  }
  EXPECT_NO_THROW(TextKey(std::u16string(255, u'a')));
  EXPECT_THROW(TextKey(u"a", 0x0000041D), NotEncodable);
  EXPECT_THROW(TextKey(u"a", 0x02000409), NotEncodable);
}

TEST(NumberKey, MatchesTheEngine) {
  const struct {
    ColumnType type;
    std::string stored;
    const char *ascending, *descending;
  } cases[] = {
      {ColumnType::kByte, "\x05", "7F05", "80FA"},
      {ColumnType::kInteger, test::Stored<std::int16_t>(-2), "7F7FFE", "808001"},
      {ColumnType::kLong, test::Stored<std::int32_t>(1), "7F80000001", "807FFFFFFE"},
      {ColumnType::kCurrency, test::Stored<std::int64_t>(10000), "7F8000000000002710",
       "807FFFFFFFFFFFD8EF"},
      {ColumnType::kDateTime, test::Stored(38143.0), "7FC0E29FE000000000", "803F1D601FFFFFFFFF"},
      {ColumnType::kDateTime, test::Stored(-1.25), "7F400BFFFFFFFFFFFF", "80BFF4000000000000"},
      {ColumnType::kSingle, test::Stored(1.0F), "7FBF800000", "80407FFFFF"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Hex(Subject({{c.type, false}}).KeyOf(c.stored)), c.ascending);
    EXPECT_EQ(Hex(Subject({{c.type, true}}).KeyOf(c.stored)), c.descending);
  }
}

TEST(NumberKey, SortsAsTheNumbersDo) {
  const double numbers[] = {
      -std::numeric_limits<double>::max(),    -657434.5, -1.25, -1e-300, 0, 1e-300, 0.5, 38143,
      std::numeric_limits<double>::infinity()};
  std::string last, last_down;
  for (const double number : numbers) {
    const std::string key = Subject({{ColumnType::kDouble, false}}).KeyOf(test::Stored(number));
    const std::string down = Subject({{ColumnType::kDouble, true}}).KeyOf(test::Stored(number));
    if (!last.empty()) {
      EXPECT_LT(last, key) << number;
      EXPECT_GT(last_down, down) << number;
    }
    last = key;
    last_down = down;
  }
}

TEST(BinaryKey, IsSplitIntoPiecesOfEightBytes) {
  Subject binary({{ColumnType::kBinary, false}});
  EXPECT_EQ(Hex(binary.KeyOf("abc")), "7F616263000000000003");
  EXPECT_EQ(Hex(binary.KeyOf("abcdefgh")), "7F616263646566676808");
  EXPECT_EQ(Hex(binary.KeyOf("abcdefghi")), "7F616263646566676809690000000000000001");
  std::string guid;
  for (char byte = 0; byte < 16; ++byte) guid += byte;
  EXPECT_EQ(Hex(Subject({{ColumnType::kGuid, false}}).KeyOf(guid)),
            "7F030201000504070609"
            "08090A0B0C0D0E0F08");
  EXPECT_EQ(Hex(binary.KeyOf("")), "7F");
  Subject descending({{ColumnType::kBinary, true}});
  EXPECT_EQ(Hex(descending.KeyOf("")), "80");
  EXPECT_EQ(Hex(descending.KeyOf("a")), "809EFFFFFFFFFFFFFFFE");
  EXPECT_EQ(Hex(descending.KeyOf("abcdefghabcdefghi")),
            "809E9D9C9B9A999897099E9D9C9B9A9998970996FFFFFFFFFFFFFFFE");
  EXPECT_THROW(Subject({{ColumnType::kDecimal, false}}).KeyOf(std::string(17, 'x')), NotEncodable);
}

TEST(KeyOfSeveralColumns, IsTheConcatenationOfTheirKeys) {
  Subject subject({{ColumnType::kLong, false},
                   {ColumnType::kBoolean, false},
                   {ColumnType::kText, true},
                   {ColumnType::kLong, true}});
  const std::string number = test::Stored<std::int32_t>(7), text = test::Utf16(u"a");
  EXPECT_EQ(Hex(subject.Key({{true, AsBytes(number)}, {true, {}}, {true, AsBytes(text)}, {}})),
            "7F80000007"
            "7F00"
            "80B5FEFF00"
            "FF");
  EXPECT_EQ(Hex(subject.Key({{}, {false, {}}, {}, {true, AsBytes(number)}})),
            "00"
            "7FFF"
            "FF"
            "807FFFFFF8");
}

TEST(AnIndexThatIgnoresNulls, HasNoEntryWhereAllColumnsAreNull) {
  for (const std::uint8_t flags : {std::uint8_t{0}, kIndexLeavesOutNulls}) {
    Subject subject({{ColumnType::kLong, false}, {ColumnType::kLong, false}}, kLegacy, flags);
    const IndexKeyEncoder encoder(subject.table, subject.index, subject.codec);
    const StoredField null, one{true, {}};
    EXPECT_EQ(encoder.Includes(std::vector{null, null}), flags == 0);
    EXPECT_TRUE(encoder.Includes(std::vector{null, one}));
  }
}

}  // namespace
}  // namespace tenora::access
