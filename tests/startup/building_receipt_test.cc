// Receipt numbers of a building, issued by many processes at once.
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "agency.h"
#include "platform/runtime/files.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

using testing::HasSubstr;

// T00007, T00009, … live in the building PR00001.
class BuildingReceipt : public test::Agency {
 protected:
  BuildingReceipt() {
    WriteTemplate("Numbered", "No. <<BuildingReceiptNumber>>.");
    StoreSetting("Receipt", "SaveCopy", "1");
  }

  void PrintAtOnce(int processes, int receipts) const {
    const std::string line = R"(PRINTRECEIPT="T00007" FORMAT="Numbered" TOPRINTER="False")";
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
      children.push_back(::fork());
      if (children.back() != 0) continue;
      int failed = 0;
      for (int k = 0; k < receipts; ++k) failed += Receipt(line).status != 0;
      ::_exit(failed == 0 ? 0 : 1);
    }
    for (const pid_t child : children) {
      int status = -1;
      ::waitpid(child, &status, 0);
      EXPECT_EQ(status, 0);
    }
  }

  // A number for each letter, none twice and none left out.
  void ExpectNumbers(int first, int count) const {
    std::set<int> numbers;
    for (const auto& letter : std::filesystem::directory_iterator(Home() / "Mei Huang")) {
      const std::string text = ReadWholeFile(letter.path());
      numbers.insert(std::stoi(text.substr(text.find("No. ") + 4)));
    }
    ASSERT_EQ(numbers.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(*numbers.begin(), first);
    EXPECT_EQ(*numbers.rbegin(), first + count - 1);
  }
};

TEST_F(BuildingReceipt, EightProcessesNeverGetTheSameNumber) {
  PrintAtOnce(8, 50);
  ExpectNumbers(1000, 400);
}

TEST_F(BuildingReceipt, TheServerIssuesThemOnceTheyWereHandedOver) {
  auto& server = test::PostgresServer::Get();
  server.MakeDatabase("receipts");
  Run({"server", "import", Database().string(), "--branch", "North", "--service", "receipts"});
  for (const char* role : {"worker", "clerk"}) {
    server.MakeLogin("receipts", role, std::string("tenora_") + role);
    Run({"server", "grant", role, "--branch", "North", "--role", role, "--service", "receipts"});
  }
  const auto read_from = [&](const std::string& location) {
    StoreSetting("Settings", "Networkable", location.empty() ? "0" : "1");
    StoreSetting("Settings", "DatabaseLocation", location);
  };
  const auto refused = [&](const char* why) {
    const test::ProcessResult result =
        Run({"generate", "--template", "Numbered", "--recipient", "Mei Huang"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr(why));
    EXPECT_FALSE(std::filesystem::exists(Home() / "Mei Huang"));
  };
  read_from("service=receipts-worker branch=North");
  refused("issued by its file");
  const test::ProcessResult handed_over =
      Run({"server", "counters", "--branch", "North", "--here", "--service", "receipts"});
  EXPECT_EQ(handed_over.status, 0) << handed_over.errors;
  read_from("service=receipts-clerk branch=North");
  refused("one with the role worker");
  read_from("");
  refused("handed over to a server");
  read_from("service=receipts-worker branch=North");
  PrintAtOnce(8, 5);
  ExpectNumbers(1000, 40);
}

}  // namespace
}  // namespace tenora
