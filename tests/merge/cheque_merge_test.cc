#include "merge/cheque_merge.h"

#include "merge_fixture.h"

namespace tenora {
namespace {

using InsertChequeDetailsTest = test::MergeTest;

TEST_F(InsertChequeDetailsTest, FillsTheFiveCodesAndNoOther) {
  letter_.LetterTitle = "Trust account";
  letter_.RecipientName = "Jane";
  Letter(
      "<<Print Date>>|<<Payee Name>>|<<Value in words 1>>|<<Value in words 2>>|<<Value in "
      "numbers>>|<<Name>>|<<payee name>>");
  EXPECT_FALSE(InsertChequeDetails(target_, "Jane Māhuta", 1234.56));
  EXPECT_EQ(Shown(),
            "21/11/2026|Jane Māhuta|One Thousand Two Hundred and Thirty Four Dollars |and 56 "
            "Cents|1234.56|<<Name>>|<<payee name>>");
  EXPECT_EQ(letter_.Caption, "Trust account : Jane");

  machine_.locale.currency_digits = "3";
  Letter("<<Value in numbers>> <<Value in words 1>>[<<Value in words 2>>]");
  EXPECT_FALSE(InsertChequeDetails(target_, "", 0.5));
  EXPECT_EQ(Shown(), "0.500 Zero Dollars and 50 Cents[]");
}

}  // namespace
}  // namespace tenora
