#include "platform/dialogs/guard.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/dialogs/scripted_dialogs.h"

namespace tenora {
namespace {

using testing::ElementsAre;

TEST(Guarded, ShowsNumberAndDescriptionUnderTheProceduresLabelAndLeaves) {
  ScriptedDialogs dialogs;
  bool went_on = false;
  EXPECT_FALSE(Guarded(dialogs, "frmMain - LoadMail", [&] {
    throw StandardError(error_number::kTypeMismatch);
    went_on = true;
  }));
  EXPECT_FALSE(Guarded(dialogs, "frmMain - LoadMail", [] { throw std::bad_alloc(); }));
  EXPECT_FALSE(Guarded(dialogs, "frmMain - LoadMail",
                       [] { throw StandardError(error_number::kCancelled); }));
  EXPECT_TRUE(Guarded(dialogs, "frmMain - LoadMail", [] {}));
  EXPECT_FALSE(went_on);
  EXPECT_THAT(dialogs.Texts(), ElementsAre("13 - Type mismatch", "7 - Out of memory"));
  EXPECT_EQ(dialogs.shown()[0].title, "frmMain - LoadMail");
  EXPECT_EQ(dialogs.shown()[0].buttons, Buttons::kOk);
  EXPECT_EQ(dialogs.shown()[0].icon, Icon::kNone);
}

TEST(ResumeNext, GoesOnWithTheStatementBehindAFailedOne) {
  ScriptedDialogs dialogs;
  ResumeNext step(dialogs, "Structures - Load");
  int done = 0;
  step([&] { done += 1; });
  step([] { throw StandardError(error_number::kInvalidUseOfNull); });
  step([&] { done += 10; });
  EXPECT_EQ(done, 11);
  EXPECT_THAT(dialogs.Texts(), ElementsAre("94 - Invalid use of Null"));
}

}  // namespace
}  // namespace tenora
