#include "editor_fixture.h"
#include "ui/editor/codes/merge_code_spans.h"

namespace tenora {
namespace {

class MergeCodeTest : public EditorTest {};

TEST_F(MergeCodeTest, CompletesAMergeCodeAndClosesIt) {
  struct Case {
    const char* letter;
    int caret;
    const char* keys;
    const char* completed;
  };
  const Case cases[] = {{"", 0, "<<tenant n", "<<Tenant Name>>"},
                        {"<<Tenant Code>> x", 2, "n", "<<Tenant Name>> x"},
                        {" <<Tenant Code>>", 0, "<<n", "<<Tenant Name>> <<Tenant Code>>"}};
  editor.SetCodes({"Tenant Name", "Tenant Code"});
  for (const Case& c : cases) {
    Open(std::string("\\pard\\f0\\fs24 ") + c.letter);
    box.Select(c.caret, 0);
    Type(c.keys);
    QWidget* list = QApplication::activePopupWidget();
    ASSERT_NE(list, nullptr) << c.letter;
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(box.Text(), c.completed);
  }
}

TEST(MergeCodeSpans, TellsKnownFromUnknownCodes) {
  const QSet<QString> names{"Tenant Name"};
  struct Case {
    const char* text;
    std::vector<CodeSpan::Kind> kinds;
  };
  using enum CodeSpan::Kind;
  const Case cases[] = {{"<<Tenant Name>> <<tenant name>>", {kData, kUnknown}},
                        {"<<?When?>> <<?\?>>", {kPrompt, kUnknown}},
                        {"<<FutureDate:14:Days>> <<FutureDate:x:Days>>", {kFutureDate, kUnknown}},
                        {"<<Future Date>> <<open", {kUnknown, kUnknown}},
                        {"<< <<Tenant Name>>", {kData}}};
  for (const Case& c : cases) {
    std::vector<CodeSpan::Kind> kinds;
    for (const CodeSpan& code : FindCodes(c.text, names)) kinds.push_back(code.kind);
    EXPECT_EQ(kinds, c.kinds) << c.text;
  }
}

}  // namespace
}  // namespace tenora
