#include "rental/session.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/runtime/files.h"
#include "support/environment.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

// As a run left them that was killed two days ago.
TEST(Session, SweepsTheFolderThatPdfsGoTo) {
  const struct {
    const char* target;  // TENORA_PDF, below the test's own folder; null: not set
    bool swept;
  } cases[] = {{"pdfs", true}, {"pdfs/Letters.PDF", true}, {"other", false}, {nullptr, false}};
  for (const auto& c : cases) {
    test::FakePlatform machine;
    const test::ScratchFolder folder;
    const test::Environment environment(
        {{"TENORA_PDF", c.target ? std::optional((folder / c.target).string()) : std::nullopt}});
    fs::create_directory(folder / "pdfs");
    for (const char* name : {"pdfs/.tenora-5", "pdfs/Notice.pdf"}) {
      WriteWholeFile(folder / name, "x");
      fs::last_write_time(folder / name, fs::file_time_type::clock::now() - std::chrono::hours(48));
    }
    Session session(machine.Parts());
    session.SweepScratchFiles().Wait();
    EXPECT_EQ(fs::exists(folder / "pdfs/.tenora-5"), !c.swept);
    EXPECT_TRUE(fs::exists(folder / "pdfs/Notice.pdf"));
  }
}

}  // namespace
}  // namespace tenora
