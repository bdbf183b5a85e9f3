// A scratch copy of the sample agency, on which the built program is run as a user runs it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/test_files.h"

namespace tenora::test {

class Agency : public testing::Test {
 protected:
  Agency();

  std::filesystem::path Home() const { return scratch_ / "home"; }
  std::filesystem::path Database() const { return Home() / "property.mdb"; }
  // The files under the data folder's "Printed".
  std::vector<std::filesystem::path> Printed() const;

  void WriteTemplate(const std::string& name, std::string_view text) const;
  void WriteFile(const std::filesystem::path& path, std::string_view content) const;
  void StoreSetting(const std::string& section, const std::string& key,
                    const std::string& value) const;

  ProcessResult Run(const std::vector<std::string>& arguments, const std::string& input = {},
                    const std::vector<std::string>& environment = {}) const;
  // Runs the receipt command with the line the management package writes.
  ProcessResult Receipt(const std::string& line) const { return Run({line}); }
  // The text of the one PDF that was printed, as pdftotext reads it.
  std::string PrintedText() const;
  // Nothing was printed or saved, and a message with this text says why.
  void ExpectRefused(const ProcessResult& result, const std::string& message) const;

 private:
  std::vector<std::filesystem::path> DataFolderEntries() const;

  ScratchFolder scratch_;
};

// An RTF document of one paragraph.
std::string RtfDocument(std::string_view text);

}  // namespace tenora::test
