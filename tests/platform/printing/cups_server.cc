#include "platform/printing/cups_server.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "platform/runtime/files.h"

namespace tenora::test {
namespace {

constexpr const char* kDaemon = "/usr/sbin/cupsd";
constexpr const char* kServerPrograms = "/usr/lib/cups";

// A printer with two trays and two sizes of paper, which takes PDF as it is.
constexpr const char* kTraysDriver = R"ppd(*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "TRAYS.PPD"
*Manufacturer: "Test"
*Product: "(Trays)"
*ModelName: "Trays"
*ShortNickName: "Trays"
*NickName: "Trays"
*PSVersion: "(3010.000) 0"
*LanguageLevel: "3"
*ColorDevice: True
*DefaultColorSpace: RGB
*FileSystem: False
*cupsFilter2: "application/pdf application/pdf 0 -"
*OpenUI *PageSize/Page Size: PickOne
*DefaultPageSize: A4
*PageSize A4/A4: ""
*PageSize A5/A5: ""
*CloseUI: *PageSize
*OpenUI *PageRegion/Page Region: PickOne
*DefaultPageRegion: A4
*PageRegion A4/A4: ""
*PageRegion A5/A5: ""
*CloseUI: *PageRegion
*DefaultImageableArea: A4
*ImageableArea A4/A4: "18 18 577 824"
*ImageableArea A5/A5: "18 18 402 577"
*DefaultPaperDimension: A4
*PaperDimension A4/A4: "595 842"
*PaperDimension A5/A5: "420 595"
*OpenUI *InputSlot/Paper Source: PickOne
*DefaultInputSlot: Upper
*InputSlot Upper/Upper Tray: ""
*InputSlot Lower/Lower Tray: ""
*CloseUI: *InputSlot
)ppd";

template <typename Condition>
bool WaitFor(Condition&& condition) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

}  // namespace

CupsServer::CupsServer() {
  if (::access(kDaemon, X_OK) != 0) {
    problem_ = "cupsd is not installed";
    return;
  }
  WriteConfiguration();
  WriteBackend();
  process_ = ::fork();
  if (process_ == 0) {
    const int log = ::open((folder_ / "log").c_str(), O_WRONLY | O_CREAT, 0600);
    ::dup2(log, 1);
    ::dup2(log, 2);
    ::execl(kDaemon, kDaemon, "-f", "-c", (folder_ / "cupsd.conf").c_str(), "-s",
            (folder_ / "cups-files.conf").c_str(), nullptr);
    ::_exit(127);
  }
  const bool ended_or_answers = WaitFor([this] {
    if (::waitpid(process_, nullptr, WNOHANG) == process_) process_ = -1;
    return process_ < 0 || Answers();
  });
  if (!ended_or_answers || process_ < 0) {
    problem_ = "cupsd does not start here: " + ReadWholeFile(folder_ / "log");
  }
}

CupsServer::~CupsServer() {
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
}

void CupsServer::WriteConfiguration() const {
  const std::string root = folder_.path().string();
  for (const char* name : {"spool", "cache", "state", "jobs", "programs/backend", "ppd"}) {
    std::filesystem::create_directories(folder_ / name);
  }
  const passwd* user = ::getpwuid(::geteuid());
  std::string files;
  for (const char* setting : {"ServerRoot ", "StateDir ", "ErrorLog ", "AccessLog ", "PageLog "}) {
    const bool log = std::string_view(setting).find("Log") != std::string_view::npos;
    const bool state = std::string_view(setting) == "StateDir ";
    files += setting + root + (log ? "/server-log" : state ? "/state" : "") + "\n";
  }
  files += "RequestRoot " + root + "/spool\nTempDir " + root + "/spool\nCacheDir " + root +
           "/cache\nServerBin " + root + "/programs\n";
  // As root, the server runs filters as another user, who must not be root.
  if (::geteuid() != 0 && user != nullptr) files += std::string("User ") + user->pw_name + "\n";
  WriteWholeFile(folder_ / "cups-files.conf", files);
  WriteWholeFile(folder_ / "cupsd.conf",
                 "Listen " + socket().string() +
                     "\nBrowsing Off\nWebInterface No\n<Location />\nOrder allow,deny\n"
                     "Allow all\n</Location>\n<Policy default>\n<Limit All>\n"
                     "Order deny,allow\nAllow all\n</Limit>\n</Policy>\n");
  const std::string uri = "\nDeviceURI folder:/jobs\nState Idle\nAccepting ";
  WriteWholeFile(folder_ / "printers.conf",
                 "<DefaultPrinter Office>" + uri + "Yes\n</DefaultPrinter>\n<Printer Closed>" +
                     uri + "No\n</Printer>\n<Printer Trays>" + uri + "Yes\n</Printer>\n");
  WriteWholeFile(folder_ / "ppd/Trays.ppd", kTraysDriver);
}

// A back end keeps what it is sent: a line of titles, a file for each job.
void CupsServer::WriteBackend() const {
  for (const auto& entry : std::filesystem::directory_iterator(kServerPrograms)) {
    if (entry.path().filename() == "backend") continue;
    std::filesystem::create_symlink(entry.path(), folder_ / "programs" / entry.path().filename());
  }
  const std::string jobs = (folder_ / "jobs").string();
  const auto backend = folder_ / "programs/backend/folder";
  WriteWholeFile(backend, "#!/bin/sh\n[ $# -eq 0 ] && exit 0\ncat ${6:+\"$6\"} > " + jobs +
                              "/$1.pdf\nprintf 'copies=%s %s' \"$4\" \"$5\" > " + jobs +
                              "/$1.options\nprintf '%s\\n' \"$3\" > " + jobs + "/$1.part\nmv " +
                              jobs + "/$1.part " + jobs + "/$1.title\n");
  // Only its owner may run it: the server then keeps its own user, who may write to the folder.
  std::filesystem::permissions(backend, std::filesystem::perms::owner_all);
}

bool CupsServer::Answers() const {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, socket().c_str(), sizeof(address.sun_path) - 1);
  const int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool answers =
      ::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
  ::close(connection);
  return answers;
}

std::vector<CupsServer::Job> CupsServer::WaitForJobs(std::size_t count) const {
  std::vector<Job> jobs;
  WaitFor([&] {
    jobs.clear();
    for (const auto& entry : std::filesystem::directory_iterator(folder_ / "jobs")) {
      if (entry.path().extension() != ".title") continue;
      std::string title = ReadWholeFile(entry.path());
      if (title.ends_with('\n')) title.pop_back();
      std::filesystem::path file = entry.path();
      const std::string options = ReadWholeFile(file.replace_extension(".options"));
      jobs.push_back({title, file.replace_extension(".pdf"), options});
    }
    return jobs.size() >= count;
  });
  return jobs;
}

}  // namespace tenora::test
