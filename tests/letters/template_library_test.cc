#include "letters/template_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TemplateLibraryTest : public testing::Test {
 protected:
  TemplateLibraryTest() {
    std::filesystem::create_directories(data_ / "Templates/Weekly");
    for (const char* name : {"receipt.rtf", "Arrears.RTF", "Zone.rtf", "notes.txt", ".rtf",
                             "Weekly/Short.rtf", "Weekly/élodie.rtf"}) {
      WriteWholeFile(data_ / "Templates" / name, "{\\rtf1}");
    }
    std::filesystem::create_directory(data_ / "Templates/folder.rtf");
  }

  test::ScratchFolder scratch_;
  std::filesystem::path data_ = scratch_ / "data";
  TemplateLibrary library_{data_};
};

TEST_F(TemplateLibraryTest, ListsTheRtfFilesOfAFolderByName) {
  EXPECT_THAT(library_.Names(kTemplates), ElementsAre("Arrears", "receipt", "Zone"));
  EXPECT_THAT(library_.Names("Templates/Weekly"), ElementsAre("Short", "élodie"));
  EXPECT_THAT(library_.Names(kOwnerTemplates), IsEmpty());
}

TEST_F(TemplateLibraryTest, FindsATemplateWrittenInAnotherCase) {
  const std::filesystem::path folder = data_ / "Templates";
  EXPECT_EQ(library_.PathOf(kTemplates, "receipt"), folder / "receipt.rtf");
  EXPECT_EQ(library_.PathOf(kTemplates, "Receipt"), folder / "receipt.rtf");
  EXPECT_EQ(library_.PathOf(kTemplates, "Arrears"), folder / "Arrears.RTF");
  EXPECT_EQ(library_.PathOf(kTemplates, "Weekly\\Short"), folder / "Weekly/Short.rtf");
  EXPECT_EQ(library_.PathOf("TEMPLATES", "WEEKLY/ÉLODIE"), folder / "Weekly/élodie.rtf");
  EXPECT_EQ(library_.PathOf(kTemplates, "None such"), folder / "None such.rtf");
}

TEST_F(TemplateLibraryTest, LetsNoNameLeadOutOfTheFolder) {
  for (const char* name : {"../x", "..\\..\\x", "/etc/passwd", "\\\\server\\share\\x", "a/../../x",
                           "Weekly/../../../x"}) {
    EXPECT_THAT(test::ErrorOf([&] { library_.PathOf(kTemplates, name); }),
                AllOf(testing::StartsWith("75 - "), testing::HasSubstr(name)));
  }
}

}  // namespace
}  // namespace tenora
