#include "platform/office/office_converter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::office {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr const char* kPage =
    "<?xml version=\"1.0\"?><office:document"
    " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
    " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
    " office:mimetype=\"application/vnd.oasis.opendocument.text\"><office:body><office:text>"
    "<text:p>Dear &lt;&lt;Tenant Name&gt;&gt;, Māhuta</text:p></office:text></office:body>"
    "</office:document>";

class OfficeConverterTest : public testing::Test {
 protected:
  // Converts a document by a program of these shell commands, which run in the scratch folder.
  std::string Convert(const std::string& commands) {
    const fs::path program = folder_ / "soffice";
    WriteWholeFile(program, "#!/bin/sh\n" + commands + "\n");
    fs::permissions(program, fs::perms::owner_all);
    conversion_.program = program;
    return ConvertToRtf(document_, conversion_);
  }

  test::ScratchFolder folder_;
  fs::path document_ = folder_ / "My letter.fodt";
  Conversion conversion_;

  void SetUp() override { WriteWholeFile(document_, kPage); }
};

TEST_F(OfficeConverterTest, NamesTheDocumentAndTheReasonOfAFailure) {
  const struct {
    const char* commands;
    const char* reason;
  } cases[] = {
      {"exit 0", "LibreOffice cannot read it (status 0)"},
      {"echo 'Error: source file could not be loaded' >&2",
       "be loaded (damaged, or protected by a password)"},
      {"kill -SEGV $$", "status 139"},
      {"ln -s /etc/passwd document.rtf", "LibreOffice cannot read it"},
      {"mkdir document.rtf", "LibreOffice cannot read it"},
      {"exec sleep 60", "did not finish within 1 seconds"},
      {"sleep 60 & echo still here; wait", "did not finish"},
      {"head -c 600000000 /dev/zero >document.rtf", "LibreOffice"},
  };
  conversion_.time = std::chrono::milliseconds(1500);
  for (const auto& c : cases) {
    const std::string error = test::ErrorOf([&] { Convert(c.commands); });
    EXPECT_THAT(error,
                AllOf(StartsWith("321 - "), HasSubstr("My letter.fodt"), HasSubstr(c.reason)))
        << c.commands;
  }
}

TEST_F(OfficeConverterTest, GivesTheProgramAFolderOfItsOwnAndNothingElse) {
  const std::string seen = Convert(
      "{ env; pwd; ls; cat document.fodt; echo; id -u; cat /proc/net/dev; printf '%s\\n' \"$@\"; }"
      " >document.rtf");
  EXPECT_THAT(seen, HasSubstr("Dear &lt;&lt;Tenant Name&gt;&gt;"));
  EXPECT_THAT(seen, HasSubstr("HOME=/"));
  EXPECT_THAT(seen, testing::Not(HasSubstr("TZ=")));
  EXPECT_THAT(seen, testing::Not(HasSubstr("My letter")));
  EXPECT_THAT(seen, HasSubstr("--infilter=OpenDocument Text Flat XML\n"));
  EXPECT_THAT(seen, HasSubstr("\n" + std::to_string(::getuid()) + "\n"));
  EXPECT_THAT(seen, testing::Not(HasSubstr("eth0:")));
}

TEST_F(OfficeConverterTest, LeavesNoProcessAndNoFolderBehind) {
  Convert("sleep 600 & echo $! >document.rtf; echo $PWD >>document.rtf");
  const std::string said = Convert("sleep 600 & echo $! >document.rtf; pwd >>document.rtf");
  const pid_t left = std::stoi(said);
  const std::string scratch = said.substr(said.find('/'), said.rfind('\n') - said.find('/'));
  // Killed, it is gone as soon as the system has noticed.
  while (::kill(left, 0) == 0 &&
         ReadWholeFile("/proc/" + std::to_string(left) + "/stat").find(") Z ") ==
             std::string::npos) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(fs::exists(scratch));
}

TEST_F(OfficeConverterTest, EndsWhenItIsStopped) {
  int asked = 0;
  conversion_.stopped = [&] { return ++asked > 1; };
  const std::string error = test::ErrorOf([&] { Convert("exec sleep 600"); });
  EXPECT_THAT(error, StartsWith("32755 - "));
}

TEST_F(OfficeConverterTest, RefusesWhatIsNoSuchDocument) {
  const struct {
    const char* name;
    std::string content;
    const char* reason;
  } cases[] = {
      {"text.docx", "only text", "it is no .docx document, or it is damaged"},
      {"locked.docx", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1...", "protected by a password"},
      {"new.doc", "PK\x03\x04", "it is no .doc document"},
      {"sheet.xlsx", "PK\x03\x04", "not a word processor's document"},
  };
  for (const auto& c : cases) {
    document_ = folder_ / c.name;
    WriteWholeFile(document_, c.content);
    EXPECT_THAT(test::ErrorOf([&] { Convert("echo rtf >document.rtf"); }),
                AllOf(StartsWith("321 - "), HasSubstr(c.name), HasSubstr(c.reason)));
  }
  document_ = folder_ / "absent.docx";
  EXPECT_THAT(test::ErrorOf([&] { Convert("exit 0"); }), StartsWith("53 - "));
}

TEST_F(OfficeConverterTest, ConvertsWithLibreOffice) {
  if (!fs::exists("/usr/bin/soffice")) GTEST_SKIP() << "LibreOffice is not installed";
  conversion_.time = std::chrono::minutes(4);
  const std::string rtf = ConvertToRtf(document_, conversion_);
  EXPECT_THAT(rtf,
              AllOf(StartsWith("{\\rtf1"), HasSubstr("<<Tenant Name>>"), HasSubstr("M\\u257")));
}

}  // namespace
}  // namespace tenora::office
