#include "agency.h"

#include "platform/registry/registry.h"
#include "platform/runtime/files.h"

namespace tenora::test {

namespace fs = std::filesystem;

std::string RtfDocument(std::string_view text) {
  return std::string(
             "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Liberation Sans;}}"
             "\\pard\\f0\\fs24 ")
      .append(text)
      .append("\\par}");
}

Agency::Agency() {
  fs::create_directories(Home() / "Templates");
  fs::copy_file(SampleDatabase(), Database());
  WriteTemplate("Receipt",
                "Receipt <<Last Payment Number>> of <<Tenant Code>> <<Tenant Name>> on <<Print "
                "Date>>: <<Last Payment Amount>> [<<Balance Owing>>]");
}

std::vector<fs::path> Agency::Printed() const {
  std::vector<fs::path> files;
  if (!fs::exists(Home() / "Printed")) return files;
  for (const auto& entry : fs::recursive_directory_iterator(Home() / "Printed")) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  return files;
}

void Agency::WriteFile(const fs::path& path, std::string_view content) const {
  fs::create_directories(path.parent_path());
  fs::remove_all(path);
  WriteWholeFile(path, content);
}

void Agency::WriteTemplate(const std::string& name, std::string_view text) const {
  WriteFile(Home() / "Templates" / (name + ".rtf"), RtfDocument(text));
}

void Agency::StoreSetting(const std::string& section, const std::string& key,
                          const std::string& value) const {
  const fs::path folder = scratch_ / "settings";
  const int status = registry::Registry::Open(folder, folder)
                         ->Set(registry::Hive::kLocalMachine, "SOFTWARE\\Tenora\\" + section, key,
                               {.type = registry::ValueType::kText, .bytes = value});
  ASSERT_EQ(status, registry::kSuccess);
}

ProcessResult Agency::Run(const std::vector<std::string>& arguments, const std::string& input,
                          const std::vector<std::string>& environment) const {
  std::vector<std::string> command{(BinaryDir() / "tenora").string()};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<std::string> all{
      "TENORA_HOME=" + Home().string(),
      "TENORA_SETTINGS=" + (scratch_ / "settings").string(),
      "TENORA_NOW=2026-11-21 09:30:00",
      "TENORA_PRINTER=Print to PDF",
      "TENORA_PDF=",
      "LC_ALL=C.UTF-8",
  };
  all.insert(all.end(), environment.begin(), environment.end());
  return RunProcess(command, all, input);
}

std::string Agency::PrintedText() const {
  const auto files = Printed();
  if (files.size() != 1) return std::to_string(files.size()) + " files were printed";
  const ProcessResult text = RunProcess({"pdftotext", "-layout", files[0].string(), "-"});
  EXPECT_EQ(text.status, 0) << text.errors;
  std::string words;
  for (const char c : text.output) {
    const bool blank = c == ' ' || c == '\n' || c == '\f';
    if (!blank) words += c;
    if (blank && !words.empty() && words.back() != ' ') words += ' ';
  }
  return words;
}

std::vector<fs::path> Agency::DataFolderEntries() const {
  std::vector<fs::path> entries;
  for (const auto& entry : fs::directory_iterator(Home())) {
    const std::string name = entry.path().filename().string();
    const bool own = name == "Templates" || name == "property.mdb" || name.starts_with("err");
    if (!own) entries.push_back(entry.path());
  }
  return entries;
}

void Agency::ExpectRefused(const ProcessResult& result, const std::string& message) const {
  EXPECT_EQ(result.status, 1) << result.errors;
  EXPECT_THAT(result.errors, testing::HasSubstr(message));
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(DataFolderEntries(), testing::IsEmpty());
}

}  // namespace tenora::test
