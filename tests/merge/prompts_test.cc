#include "merge/prompts.h"

#include "merge_fixture.h"

namespace tenora {
namespace {

using testing::ElementsAre;

class InsertPromptsTest : public test::MergeTest {
 protected:
  InsertPromptsTest() { letter_.RecipientName = "Jane Smith"; }
};

TEST_F(InsertPromptsTest, AsksEachMessageOnceAndFillsAllItsPlaces) {
  machine_.dialogs.WillType("Friday").WillType("Ngā mihi");
  Letter("<<?Which day?>>, yes <<?Which day?>>. <<?Greeting?>>");
  InsertPrompts(target_);
  EXPECT_EQ(Shown(), "Friday, yes Friday. Ngā mihi");
  EXPECT_THAT(Boxes(),
              ElementsAre("Which day\r\nTenant : Jane Smith", "Greeting\r\nTenant : Jane Smith"));
}

TEST_F(InsertPromptsTest, ShowsTheMessageReadable) {
  machine_.dialogs.WillType("42");
  Letter(R"([<<?Gr\'f6\'dfe der M\u257?ori\~Fl\'e4che?>>])");
  InsertPrompts(target_);
  EXPECT_EQ(Shown(), "[42]");
  EXPECT_THAT(Boxes(), ElementsAre(testing::StartsWith("Größe der Māori")));
}

TEST_F(InsertPromptsTest, RemovesACancelledPrompt) {
  machine_.dialogs.WillCancel();
  Letter("[<<?Which day?>>]");
  InsertPrompts(target_);
  EXPECT_EQ(Shown(), "[]");
}

TEST_F(InsertPromptsTest, KeepsAnswersForLaterLettersAndStopsWhenAsked) {
  using Way = LetterAnswer::Way;
  machine_.dialogs.WillAnswer({.way = Way::kText, .text = "Friday", .for_all = true})
      .WillType("Kia ora")
      .WillAnswer({.way = Way::kStopRun});
  Letter("<<?Which day?>> <<?Greeting?>> <<?Place?>> <<?Later?>>");
  const PromptOutcome outcome = InsertPrompts(target_, {}, "3 of 33 letters");
  EXPECT_TRUE(outcome.stopped);
  EXPECT_EQ(outcome.cancelled, 0U);
  EXPECT_EQ(outcome.for_all, (PromptAnswers{{"Which day", "Friday"}}));
  ASSERT_EQ(machine_.dialogs.shown().size(), 3U);
  EXPECT_EQ(machine_.dialogs.shown()[2].progress, "3 of 33 letters");
}

TEST_F(InsertPromptsTest, LeavesTheCodesOfWhatIsAskedAnotherTime) {
  using Way = LetterAnswer::Way;
  machine_.dialogs.WillAnswer({.way = Way::kLater})
      .WillType("Kia ora")
      .WillAnswer({.way = Way::kLater});
  Letter("<<?Which day?>> <<?Greeting?>> <<?Place?>> <<?Greeting?>>");
  const PromptOutcome outcome = InsertPrompts(target_);
  EXPECT_EQ(Shown(), "<<?Which day?>> Kia ora <<?Place?>> Kia ora");
  EXPECT_THAT(outcome.left, ElementsAre("Which day", "Place"));
  EXPECT_EQ(outcome.cancelled, 0U);
}

TEST_F(InsertPromptsTest, StopsAtAMalformedPrompt) {
  const struct {
    const char* text;
    const char* expected;
    std::size_t asked;
  } cases[] = {
      {"<<?abc?>> <<?ab?>> <<?later?>>", "x <<?ab?>> <<?later?>>", 1},
      {"<<?ab?>> <<?later?>>", "<<?ab?>> <<?later?>>", 0},
      {"<<?"
       "?>>",
       "<<?"
       "?>>",
       0},  // in two pieces: no trigraph
      {"<<?open <<FutureDate:1:Days>>", "<<?open <<FutureDate:1:Days>>", 0},
      {"?>> no start", "?>> no start", 0},
      {"<<?outer <<?inner?>> tail?>>", "x tail?>>", 1},
  };
  for (const auto& c : cases) {
    machine_.dialogs.ForgetShown();
    for (std::size_t i = 0; i < c.asked; ++i) machine_.dialogs.WillType("x");
    Letter(c.text);
    InsertPrompts(target_);
    EXPECT_EQ(Shown(), c.expected);
    EXPECT_EQ(Boxes().size(), c.asked) << c.text;
  }
}

TEST_F(InsertPromptsTest, SearchesFromTheBeginningAfterEachAnswer) {
  machine_.dialogs.WillType("<<?Which day?>>").WillType("Friday").WillType("<<?ab?>>");
  Letter("<<?Greeting?>> <<?Second?>> <<?Third?>>");
  InsertPrompts(target_);
  // An answer with a prompt too short to be asked stops the asking.
  EXPECT_EQ(Shown(), "Friday <<?ab?>> <<?Third?>>");
  EXPECT_THAT(Boxes(),
              ElementsAre("Greeting\r\nTenant : Jane Smith", "Which day\r\nTenant : Jane Smith",
                          "Second\r\nTenant : Jane Smith"));
}

}  // namespace
}  // namespace tenora
