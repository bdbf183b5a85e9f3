#include "merge/replace_code.h"

#include "merge/merge_codes.h"
#include "merge_fixture.h"

namespace tenora {
namespace {

class ReplaceCodeTest : public test::MergeTest {};

TEST_F(ReplaceCodeTest, FillsEveryPlaceAndKeepsTheFormattingAroundIt) {
  Letter(R"(Dear <<Tenant Name>>, {\b <<Tenant Name>>} and \i\fs40 <<Tenant Name>>\i0 .)");
  ReplaceCode(target_, "Tenant Name", "Jane Smith");
  EXPECT_THAT(
      editor_.TextRTF(),
      testing::HasSubstr(R"(Dear Jane Smith, {\b Jane Smith} and \i\fs40 Jane Smith\i0 .)"));
}

TEST_F(ReplaceCodeTest, LeavesWhatIsNotExactlyTheCode) {
  for (const char* text : {"<<TENANT NAME>>", "<<tenant name>>", "<<Tenant Name >>",
                           "<Tenant Name>", R"(<<Tenant {\b Name}>>)", "<<Prompt Message>>"}) {
    Letter(text);
    ReplaceCode(target_, "Tenant Name", "Jane");
    EXPECT_THAT(editor_.TextRTF(), testing::HasSubstr(text));
  }
}

TEST_F(ReplaceCodeTest, PutsValuesInAsSourceWithOnlyForeignCharactersEscaped) {
  const struct {
    const char* value;
    const char* shown;
  } cases[] = {
      {"Māhuta & Größe €5", "Māhuta & Größe €5"},
      {"O'Brien", "O'Brien"},
      {R"(a{\b b}c)", "abc"},  // an RTF meaning is kept: deliberate
      {"", ""},
      {"名前 \xF0\x9F\x98\x80", "名前 \xF0\x9F\x98\x80"},
  };
  for (const auto& c : cases) {
    Letter("[<<Tenant Name>>]");
    ReplaceCode(target_, "Tenant Name", c.value);
    EXPECT_EQ(Shown(), std::string("[").append(c.shown).append("]"));
  }
}

TEST_F(ReplaceCodeTest, KeepsAValueApartFromAControlWordBeforeIt) {
  const struct {
    const char* before;
    const char* value;
  } cases[] = {{R"(\b)", "5 High St"}, {R"(\b)", "Jane"},    {R"(\b)", " two  blanks"},
               {R"(\b)", "-5"},        {R"(\f0)", "5 High"}, {R"(\f0)", "Jane"},
               {R"(\\b)", "5"},        {R"(\b )", "Jane"},   {R"({\b})", "Jane"},
               {R"(\li-20)", "5"}};
  for (const auto& c : cases) {
    Letter(std::string(c.before).append("<<Fax>>"));
    ReplaceCode(target_, "Fax", c.value);
    EXPECT_TRUE(Shown().ends_with(c.value)) << c.before << ": " << Shown();
  }
  Letter(R"(\b<<Fax>>5)");
  ReplaceCode(target_, "Fax", "");
  EXPECT_EQ(Shown(), "5");
}

TEST_F(ReplaceCodeTest, MakesLineBreaksOfTheLetterOfThoseInAValue) {
  Letter("[<<Fax>>]");
  ReplaceCode(target_, "Fax", "one\r\ntwo\nthree\vfour\r5");
  EXPECT_THAT(editor_.TextRTF(),
              testing::HasSubstr(R"([one\line two\line three\line four\line 5])"));
  EXPECT_THAT(letter_.Notes.All(), testing::IsEmpty());
}

TEST_F(ReplaceCodeTest, DoesNotSearchTheValueAgain) {
  Letter("<<Fax>>");
  ReplaceCode(target_, "Fax", "<<Fax>><<Fax>>");
  EXPECT_EQ(Shown(), "<<Fax>><<Fax>>");
}

TEST_F(ReplaceCodeTest, FindsCodeNamesBeyondAscii) {
  Letter(R"([<<TCustom:Schl\'fcssel>>])");
  ReplaceCode(target_, "TCustom:Schlüssel", "two");
  EXPECT_EQ(Shown(), "[two]");
}

TEST_F(ReplaceCodeTest, MovesTheCaretOnlyDuringAnInsertion) {
  Letter("ab<<Fax>>cd");
  editor_.Select(9, 0);
  letter_.Inserting = true;
  ReplaceCode(target_, "Fax", "Größe");
  EXPECT_EQ(Shown(), "abGrößecd");
  EXPECT_EQ(editor_.SelStart(), 7);

  // Found in another case, the caret moves although the text stays.
  Letter("ab<<FAX>>cd");
  editor_.Select(9, 0);
  ReplaceCode(target_, "Fax", "xyz");
  EXPECT_EQ(Shown(), "ab<<FAX>>cd");
  EXPECT_EQ(editor_.SelStart(), 5);

  Letter("<<Fax>>");
  editor_.Select(0, 0);
  ReplaceCode(target_, "Fax", "");
  EXPECT_EQ(editor_.SelStart(), 0);
}

}  // namespace
}  // namespace tenora
