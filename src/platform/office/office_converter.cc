#include "platform/office/office_converter.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <vector>

#include "platform/office/confined_process.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora::office {
namespace {

namespace fs = std::filesystem;

// What a document is by its name, what it begins with, and LibreOffice's name of the reader: left
// to itself it reads what is damaged as plain text.
struct Format {
  std::string_view extension, beginning, reader;
};

constexpr std::string_view kZip = "PK\x03\x04";
constexpr std::string_view kCompoundFile = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr std::array<Format, 9> kFormats{{{".docx", kZip, "MS Word 2007 XML"},
                                          {".dotx", kZip, "MS Word 2007 XML Template"},
                                          {".doc", kCompoundFile, "MS Word 97"},
                                          {".dot", kCompoundFile, "MS Word 97 Vorlage"},
                                          {".odt", kZip, "writer8"},
                                          {".ott", kZip, "writer8_template"},
                                          {".fodt", "", "OpenDocument Text Flat XML"},
                                          {".html", "", "HTML (StarWriter)"},
                                          {".htm", "", "HTML (StarWriter)"}}};
constexpr std::array<std::string_view, 4> kPrograms{"/usr/bin/soffice", "/usr/bin/libreoffice",
                                                    "/usr/local/bin/soffice",
                                                    "/opt/libreoffice/program/soffice"};
constexpr std::size_t kLargestDocument = std::size_t{256} << 20;

// For the profile that LibreOffice starts with.
constexpr std::string_view kProfile = R"(<?xml version="1.0" encoding="UTF-8"?>
<oor:items xmlns:oor="http://openoffice.org/2001/registry">
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="MacroSecurityLevel" oor:op="fuse"><value>3</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="DisableMacrosExecution" oor:op="fuse"><value>true</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Security/Scripting"><prop oor:name="BlockUntrustedRefererLinks" oor:op="fuse"><value>true</value></prop></item>
<item oor:path="/org.openoffice.Office.Writer/Content/Update"><prop oor:name="Link" oor:op="fuse"><value>0</value></prop></item>
</oor:items>
)";

// For one conversion; only its owner can read it.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (fs::temp_directory_path() / "tenora-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw FileError(errno, name);
    path_ = name;
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

const Format* FormatOf(const fs::path& document) {
  const std::string extension = ToLower(document.extension().string());
  const auto format = std::ranges::find(kFormats, extension, &Format::extension);
  return format == kFormats.end() ? nullptr : &*format;
}

fs::path FindProgram() {
  for (const std::string_view program : kPrograms) {
    if (::access(std::string(program).c_str(), X_OK) == 0) return program;
  }
  throw NoOffice();
}

// What LibreOffice says of a failure, less what it always says.
std::string Complaint(const std::string& output) {
  std::string said;
  for (const std::string& line : Split(ReplaceAll(output, "\r", ""), "\n")) {
    if (line.empty() || line.find("javaldx") != std::string::npos) continue;
    said.append(said.empty() ? "" : "; ").append(line);
  }
  constexpr std::size_t kMostSaid = 300;
  return said.substr(0, kMostSaid);
}

[[noreturn]] void Fail(const fs::path& document, const std::string& why) {
  throw StandardError(error_number::kInvalidFileFormat, document.string() + ": " + why);
}

void RequireFormat(const fs::path& document, const Format& format, std::string_view content) {
  if (content.starts_with(format.beginning)) return;
  if (format.beginning == kZip && content.starts_with(kCompoundFile)) {
    Fail(document, "it is protected by a password; save it without one");
  }
  Fail(document, std::string("it is no ").append(format.extension) + " document, or it is damaged");
}

}  // namespace

NoOffice::NoOffice()
    : RuntimeError(kNumber,
                   "Documents of word processors are read by LibreOffice, which is not installed. "
                   "Install the package libreoffice-writer (or libreoffice-writer-nogui), or save "
                   "the document as Rich Text Format (.rtf).") {}

bool Converts(const fs::path& document) { return FormatOf(document) != nullptr; }

std::string ConvertToRtf(const fs::path& document, const Conversion& conversion) {
  const Format* const format = FormatOf(document);
  if (format == nullptr) Fail(document, "not a word processor's document by its name");
  const std::string content = ReadWholeFile(document, kLargestDocument);
  RequireFormat(document, *format, content);
  const fs::path program = conversion.program.empty() ? FindProgram() : conversion.program;
  const ScratchFolder scratch;
  const fs::path profile = scratch.path() / "profile";
  fs::create_directories(profile / "user");
  WriteWholeFile(profile / "user/registrymodifications.xcu", kProfile);
  // Under a name of ours: a document's own may look like an option, or like a link.
  const fs::path copy = scratch.path() / std::string("document").append(format->extension);
  WriteWholeFile(copy, content);

  ProcessLimits limits;
  limits.time = conversion.time;
  const ProcessResult result =
      RunConfined(program,
                  {"--headless", "--norestore", "--nolockcheck", "--nodefault", "--nologo",
                   "-env:UserInstallation=file://" + profile.string(),
                   std::string("--infilter=").append(format->reader), "--convert-to",
                   "rtf:Rich Text Format", "--outdir", scratch.path().string(), copy.string()},
                  scratch.path(), limits, conversion.stopped);
  switch (result.end) {
    case ProcessResult::End::kStopped:
      throw StandardError(error_number::kCancelled);
    case ProcessResult::End::kTimedOut:
      Fail(document, "LibreOffice did not finish within " +
                         std::to_string(conversion.time.count() / 1000) + " seconds");
    case ProcessResult::End::kKilledByLimit:
      Fail(document, "LibreOffice needed more than a letter may need");
    case ProcessResult::End::kExited:
      break;
  }
  const fs::path made = scratch.path() / "document.rtf";
  std::error_code error;
  // LibreOffice ends with status 0 also when it could not load the document.
  if (result.status != 0 || !fs::is_regular_file(fs::symlink_status(made, error))) {
    std::string said = Complaint(result.output);
    // Without a window it asks for no password, and says no more than this.
    if (said.ends_with("could not be loaded")) said += " (damaged, or protected by a password)";
    Fail(document, said.empty()
                       ? "LibreOffice cannot read it (status " + std::to_string(result.status) + ")"
                       : "LibreOffice says: " + said);
  }
  return ReadWholeFile(made, kLargestDocument);
}

}  // namespace tenora::office
