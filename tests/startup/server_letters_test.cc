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

// What a login may not read is no empty text.
TEST_F(ServerLetters, AreNotMailedWithoutThePasswordThatTheLoginMayNotRead) {
  auto& server = test::PostgresServer::Get();
  for (const char* const role : {"clerk", "worker"}) {
    server.MakeLogin("office", role, std::string("tenora_") + role);
    server.Run("office", std::string("insert into rental.may_see select '") + role +
                             "', id from rental.branch");
  }
  const std::string unread = "3112 - Record(s) cannot be read; no read permission on '",
                    refused = "70 - Permission denied: the mail server needs a password",
                    unreachable = "0 of 1 letter mailed";
  const struct {
    std::string role, user;
    std::vector<std::string> call;
    std::string output, error;
    bool made;
  } cases[] = {
      {"clerk",
       "agent",
       {"query", "select smtppassword from options"},
       "",
       unread + "options.SmtpPassword'",
       false},
      {"clerk",
       "agent",
       {"query",
        "select name from tenancy where exists (select * from options o where "
        "o.smtppassword = name)"},
       "",
       unread + "o.SmtpPassword'",
       false},
      {"clerk",
       "agent",
       {"query", "select * from options"},
       "SmtpUsername\tSmtpSender\t",
       "",
       false},
      {"worker", "agent", {"query", "select smtppassword from options"}, "geheim", "", false},
      {"clerk", "agent", {"generate"}, "", refused, false},
      // A mail server without logins needs no password.
      {"clerk", "", {"generate"}, "Receipt.rtf", unreachable, true},
      {"worker", "agent", {"generate"}, "Receipt.rtf", unreachable, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.role + " " + testing::PrintToString(c.call));
    server.Run("office",
               "update rental.options set smtpsend = true, smtpaddress = '127.0.0.1', smtpport = "
               "1, smtppassword = 'geheim', smtpusername = '" +
                   c.user + "'");
    const std::string location = "service=office-" + c.role + " branch=North";
    ReadFrom(location);
    std::vector<std::string> call = c.call;
    if (call.front() == "query") {
      call.insert(call.begin() + 1, location);
    } else {
      call.insert(call.end(), {"--template", "Receipt", "--to", "email", "--subject", "Rent",
                               "--recipient", "T00001"});
    }
    const Done done = TakeAll(call);
    EXPECT_THAT(done.output, HasSubstr(c.output));
    EXPECT_THAT(done.errors, HasSubstr(c.error));
    EXPECT_EQ(done.status, c.error.empty() ? 0 : 1);
    EXPECT_EQ(!done.files.empty(), c.made);
  }
}

// Head office with two branches in which the same codes are of other people.
class LettersAcrossBranches : public ServerLetters {
 protected:
  void SetUp() override {
    ServerLetters::SetUp();
    ReadFrom(kNorth);
    query::Workspace::Create()
        ->OpenDatabase(Database())
        ->Execute("update tenancy set name = 'South ' & reference");
    Import("South: Coast", Database());
    fs::remove(Database());
    WriteTemplate("Note", "<<Tenant Name>> (<<Tenant Code>>)");
    SetAge("North", "2026-11-21 08:00");
    SetAge("South: Coast", "2026-11-20 23:00");
  }
  static void SetAge(const std::string& branch, const std::string& taken) {
    test::PostgresServer::Get().Run("office",
                                    "update rental.sync set taken = '" + taken +
                                        "+00' where branch = (select id from rental.branch where "
                                        "name = '" +
                                        branch + "')");
  }
  test::ProcessResult Generate(std::vector<std::string> call) const {
    call.insert(call.begin(), "generate");
    return Run(call, {}, {"TZ=UTC"});
  }
  // The folder of the South's letters, whose name no file system of every kind takes.
  fs::path South() const {
    for (const auto& entry : fs::directory_iterator(Home() / "Branches")) {
      if (entry.path().filename() != "North") return entry.path();
    }
    return {};
  }
  static bool Holds(const fs::path& letter, const std::string& text) {
    return fs::exists(letter) && ReadWholeFile(letter).find(text) != std::string::npos;
  }
};

TEST_F(LettersAcrossBranches, ListsThemTogether) {
  const auto listed = Generate({"--list", "--all-branches", "--columns", "Tenant Code, Tenant Name",
                                "--format", "csv", "--where", "Tenant Code = \"T00001\""});
  EXPECT_EQ(listed.output,
            "Branch,Tenant Code,Tenant Name\r\n"
            "North,T00001,Noor Whaanga\r\n"
            "South: Coast,T00001,South T00001\r\n");
  EXPECT_EQ(listed.errors,
            "North: data of 08:00\n"
            "South: Coast: data of 20 November 2026 23:00\n");
  EXPECT_THAT(Generate({"--list", "--branch", "South: Coast,North", "--search", "Whaanga"}).output,
              testing::StartsWith("North: "));
}

TEST_F(LettersAcrossBranches, NeverMeet) {
  // In the South nobody can have a folder of this name.
  const auto first =
      Generate({"--template", "Note", "--branch", "South: Coast", "--recipient", "T00002"});
  ASSERT_EQ(first.status, 0) << first.errors;
  WriteFile(South() / "South T00001", "a file");
  const auto made = Generate({"--template", "Note", "--all-branches", "--where",
                              "Tenant Code = \"T00001\" or Tenant Code = \"T00003\"", "--csv",
                              (Home() / "post.csv").string()});
  EXPECT_EQ(made.status, 1);
  EXPECT_THAT(made.errors, HasSubstr("South T00001"));
  const fs::path north = Home() / "Branches/North/Noor Whaanga/Note.rtf",
                 south = South() / "South T00003/Note.rtf";
  EXPECT_TRUE(Holds(north, "Noor Whaanga (T00001)"));
  EXPECT_TRUE(Holds(south, "South T00003 (T00003)"));
  EXPECT_TRUE(Holds(Home() / "post - North.csv", "Noor Whaanga"));
  EXPECT_FALSE(Holds(Home() / "post - North.csv", "South"));

  // Each run is in its branch's folder, and is resumed there from that branch.
  fs::remove(South() / "South T00001");
  const auto unfinished = Generate({"--unfinished"});
  const fs::path log = South() / "Letters 2026-11-21 093000 (1).log";
  EXPECT_THAT(unfinished.output, HasSubstr(log.string()));
  EXPECT_THAT(unfinished.output, Not(HasSubstr("Branches/North/")));
  const auto resumed = Generate({"--resume", log.lexically_relative(Home()).string()});
  EXPECT_EQ(resumed.status, 0) << resumed.errors;
  EXPECT_TRUE(Holds(South() / "South T00001/Note.rtf", "South T00001 (T00001)"));
}

TEST_F(LettersAcrossBranches, AreRefusedWhole) {
  const std::vector<std::string> all = {"--template", "Note", "--all"};
  for (const auto& [more, status, words] :
       std::vector<std::tuple<std::vector<std::string>, int, std::string>>{
           {{"--all-branches", "--no-older-than", "4h"},
            1,
            "data of South: Coast are older than 4h"},
           {{"--no-older-than", "1h"}, 1, "data of North are older than 1h"},
           {{"--branch", "North,East"}, 1, "no branch \"East\""},
           {{"--branch", "North", "--all-branches"}, 2, "exclude each other"},
           {{"--all-branches", "--no-older-than", "soon"}, 2, "no age"},
       }) {
    std::vector<std::string> call = all;
    call.insert(call.end(), more.begin(), more.end());
    const auto refused = Generate(call);
    EXPECT_EQ(refused.status, status) << words;
    EXPECT_THAT(refused.errors, HasSubstr(words));
    EXPECT_EQ(refused.output, "") << words;
  }
  StoreSetting("Settings", "DatabaseLocation", (Home() / "property.mdb").string());
  EXPECT_THAT(Generate({"--list", "--all-branches"}).errors, HasSubstr("DatabaseLocation"));
}

}  // namespace
}  // namespace tenora
