// Receipt numbers of a building, issued by many processes at once.
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "agency.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

class BuildingReceipt : public test::Agency {};

TEST_F(BuildingReceipt, EightProcessesNeverGetTheSameNumber) {
  constexpr int kProcesses = 8, kReceipts = 50;
  // T00007, T00009, … live in the building PR00001.
  WriteTemplate("Numbered", "No. <<BuildingReceiptNumber>>.");
  StoreSetting("Receipt", "SaveCopy", "1");
  const std::string line = R"(PRINTRECEIPT="T00007" FORMAT="Numbered" TOPRINTER="False")";
  std::vector<pid_t> children;
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(::fork());
    if (children.back() != 0) continue;
    int failed = 0;
    for (int k = 0; k < kReceipts; ++k) failed += Receipt(line).status != 0;
    ::_exit(failed == 0 ? 0 : 1);
  }
  for (const pid_t child : children) {
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  std::set<int> numbers;
  for (const auto& letter : std::filesystem::directory_iterator(Home() / "Mei Huang")) {
    const std::string text = ReadWholeFile(letter.path());
    numbers.insert(std::stoi(text.substr(text.find("No. ") + 4)));
  }
  EXPECT_EQ(numbers.size(), static_cast<std::size_t>(kProcesses * kReceipts));
  EXPECT_EQ(*numbers.begin(), 1000);
  EXPECT_EQ(*numbers.rbegin(), 1000 + kProcesses * kReceipts - 1);
}

}  // namespace
}  // namespace tenora
