#include "ui/window/main/import_templates.h"

#include <QListWidget>

#include "letters/template_library.h"
#include "platform/runtime/error.h"
#include "window_fixture.h"

namespace tenora {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ImportTemplatesTest : public WindowPartsTest {
 protected:
  std::filesystem::path Document(const char* name, const std::string& body) {
    WriteWholeFile(platform_.folder / name, body);
    return platform_.folder / name;
  }

  LintPanel lint_panel_;
  ImportTemplates imports_{session_, tree_, letters_, lint_panel_, AtOnce};
};

TEST_F(ImportTemplatesTest, OpensTheTemplateWithWhatWasMendedAndWhatIsLeft) {
  const auto document =
      Document("Fee.rtf",
               "{\\rtf1 {\\field{\\*\\fldinst{ MERGEFIELD Print_Date }}{\\fldrslt{x}}} <<Ownr>>}");
  platform_.dialogs.WillType(document.string()).WillChoose(1);
  imports_.Import();
  ASSERT_NE(letters_.Active(), nullptr);
  EXPECT_EQ(InFront().FilePath, Data() / "Owner Templates/Fee.rtf");
  EXPECT_THAT(letters_.Active()->editor().toPlainText().toStdString(), HasSubstr("<<Print Date>>"));
  EXPECT_TRUE(tree_.model().IndexOfKey("Owner Templates/Fee").isValid());
  EXPECT_THAT(platform_.dialogs.Texts().back(), HasSubstr("is now <<Print Date>>"));
  const auto* left = lint_panel_.findChild<QListWidget*>();
  ASSERT_EQ(left->count(), 1);
  EXPECT_THAT(left->item(0)->text().toStdString(), HasSubstr("<<Ownr>>"));
}

TEST_F(ImportTemplatesTest, ChangesNothingWhenLeftOrWhenTheDocumentCannotBeRead) {
  platform_.dialogs.WillCancel();
  imports_.Import();
  platform_.dialogs.WillType(Document("bad.docx", "text").string()).WillCancel();
  imports_.Import();
  platform_.dialogs.WillType(Document("bad.docx", "text").string()).WillChoose(0);
  EXPECT_THROW(imports_.Import(), RuntimeError);
  EXPECT_EQ(letters_.Active(), nullptr);
  EXPECT_THAT(TemplateLibrary(Data()).Names(kTemplates), IsEmpty());
}

}  // namespace
}  // namespace tenora
