// The agency from its file and from a branch on a server: the same lists and letters, to the byte.
#include <map>

#include "agency.h"
#include "platform/access/database_writer.h"
#include "platform/query/engine.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_import.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kNorth = "service=office branch=North";

class ServerLetters : public test::Agency {
 protected:
  void SetUp() override {
    fs::copy(test::SourceDir() / "examples/agency", Home(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    test::PostgresServer::Get().MakeDatabase("office");
    Import("North", Database());
  }

  static void Import(const std::string& branch, const fs::path& file) {
    const auto connection = server::Connection::Open("office", std::chrono::seconds(0));
    server::ImportBranch(*connection, branch, file, server::LayoutChange::kTake);
  }

  void ReadFrom(const std::string& location) const {
    StoreSetting("Settings", "Networkable", "1");
    StoreSetting("Settings", "DatabaseLocation", location);
  }

  // What a call says and the files that it leaves, which are removed.
  struct Done {
    int status = 0;
    std::string output, errors;
    std::map<std::string, std::string> files;
  };
  Done TakeAll(const std::vector<std::string>& call) const {
    const test::ProcessResult result = Run(call, "1\n");  // the number of the printer
    Done done{result.status, result.output, result.errors, {}};
    for (const auto& entry : fs::recursive_directory_iterator(Home())) {
      const fs::path file = entry.path().lexically_relative(Home());
      const std::string top = file.begin()->string();
      if (!entry.is_regular_file() || IsAgencys(top)) continue;
      // A PDF has the time in it at which it was made, and numbers that are drawn by lot.
      std::string content =
          file.extension() == ".pdf"
              ? test::RunProcess({"pdftotext", "-layout", entry.path(), "-"}).output
              : ReadWholeFile(entry.path());
      // The run log says which database it was.
      if (top.starts_with("Letters ")) {
        content = ReplaceAll(content, Database().string(), "DATABASE");
        content = ReplaceAll(content, kNorth, "DATABASE");
      }
      done.files[file.string()] = content;
    }
    for (const auto& entry : fs::directory_iterator(Home())) {
      if (!IsAgencys(entry.path().filename())) fs::remove_all(entry);
    }
    return done;
  }

 private:
  static bool IsAgencys(const std::string& top) {
    return top.ends_with("Templates") || top.starts_with("Che") || top == "property.mdb";
  }
};

TEST_F(ServerLetters, AreThoseOfTheFile) {
  WriteTemplate("Fields", "<<TCustom:Pet>> <<PCustom:AlarmCode>> <<Owner Name>> <<Days Behind>>");
  const std::vector<std::string> everybody = {"--all", "--closed"};
  std::vector<std::vector<std::string>> calls = {
      {"generate", "--list", "--closed"},
      {"generate", "--list", "--columns", "all", "--format", "csv", "--closed"},
      {"generate", "--list", "--columns", "all", "--format", "json", "--owners"},
      {"generate", "--list", "--owners", "--by-property", "--sort", "Property Arrears"},
      {"generate", "--template", "Rent review", "--where", "Days Behind > 7", "--to", "printer",
       "--csv", (Home() / "post.csv").string()},
      {"generate", "--template", "Receipt", "--one-pdf", (Home() / "all.pdf").string(), "--all"},
      {"generate", "--template", "Receipt", "--all", "--name-pattern",
       "{Tenant Name} {Property Address} {Balance Owing}"},
      {R"(PRINTRECEIPT="T00001" FORMAT="Receipt" TOPRINTER="True")"},
      {R"(PRINTRECEIPT="T00007" RECEIPTNUMBER="1630" FORMAT="Rent review" TOPRINTER="True")"},
      {R"(PRINTCHEQUE="" VALUE="12.5" FORMAT="Trust account cheque" PAYEE="Jane")"},
  };
  for (const char* const name : {"Inspection notice", "Receipt", "Rent arrears notice",
                                 "Rent review", "Tenancy statement", "Welcome", "Fields"}) {
    calls.push_back({"generate", "--template", name});
    calls.back().insert(calls.back().end(), everybody.begin(), everybody.end());
  }
  for (const char* const name : {"Owner statement", "Owner welcome"}) {
    calls.push_back({"generate", "--owners", "--template", name});
    calls.back().insert(calls.back().end(), everybody.begin(), everybody.end());
  }
  std::vector<Done> from_file;
  for (const auto& call : calls) from_file.push_back(TakeAll(call));
  ReadFrom(kNorth);
  fs::rename(Database(), Home() / "Templates/away.mdb");
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(testing::PrintToString(calls[i]));
    const Done branch = TakeAll(calls[i]);
    EXPECT_EQ(branch.status, from_file[i].status);
    EXPECT_EQ(branch.output, from_file[i].output);
    EXPECT_EQ(branch.errors, from_file[i].errors);
    EXPECT_EQ(branch.files.size(), from_file[i].files.size());
    for (const auto& [name, content] : from_file[i].files) {
      const auto made = branch.files.find(name);
      EXPECT_TRUE(made != branch.files.end() && made->second == content) << name;
    }
    EXPECT_FALSE(branch.output.empty());
  }
}

TEST_F(ServerLetters, AreNotMadeFromALocalFileWhenTheServerIsAway) {
  ReadFrom("service=nowhere branch=North");
  for (const std::vector<std::string>& call : {
           std::vector<std::string>{"generate", "--template", "Receipt", "--all"},
           {"generate", "--list"},
           {R"(PRINTRECEIPT="T00001" FORMAT="Receipt" TOPRINTER="True")"},
           {"query", "service=nowhere branch=North", "select * from tenancy"},
       }) {
    const Done done = TakeAll(call);
    EXPECT_EQ(done.status, 1) << call.front();
    EXPECT_EQ(done.output, "") << call.front();
    EXPECT_THAT(done.errors, HasSubstr("nowhere")) << call.front();
    EXPECT_THAT(done.errors, Not(HasSubstr("Reverting"))) << call.front();
  }
}

}  // namespace
}  // namespace tenora
