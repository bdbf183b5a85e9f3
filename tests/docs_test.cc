// Keeps documents and comments in step with the tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "platform/runtime/files.h"
#include "platform/runtime/version.h"
#include "support/test_files.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

struct Tree {
  std::set<std::string> paths;  // of files and folders, relative to the root
  std::set<std::string> names;  // of files
};

Tree ReadTree() {
  const fs::path root = test::SourceDir();
  Tree tree;
  for (auto entry = fs::recursive_directory_iterator(root); entry != fs::end(entry); ++entry) {
    const std::string path = fs::relative(entry->path(), root);
    if (path == "build" || path == ".git") {
      entry.disable_recursion_pending();
      continue;
    }
    tree.paths.insert(path);
    if (entry->is_regular_file()) tree.names.insert(entry->path().filename());
  }
  return tree;
}

std::vector<std::string> FilesEndingIn(const Tree& tree, const std::set<std::string>& extensions) {
  std::vector<std::string> files;
  for (const std::string& path : tree.paths) {
    if (extensions.contains(fs::path(path).extension())) files.push_back(path);
  }
  return files;
}

// Whether `named` is a path from the root or from src/, or, without a folder, the name of any file.
bool Exists(const Tree& tree, std::string named) {
  if (named.ends_with('/')) named.pop_back();
  return tree.paths.contains(named) || tree.paths.contains("src/" + named) ||
         tree.names.contains(named);
}

std::vector<std::string> Matches(const std::string& text, const std::regex& pattern) {
  std::vector<std::string> found;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match) {
    found.push_back((*match)[1]);
  }
  return found;
}

TEST(Docs, NameOnlyFilesThatExist) {
  const Tree tree = ReadTree();
  // In code type: a path of this tree, or a file of source code.
  const std::regex path(
      "`((?:src|tests|docs|scripts|benchmarks|cmake|packaging|examples|platform|data|rental|merge|"
      "letters|output|startup|ui)/[A-Za-z0-9_./-]*|[A-Za-z0-9_]+\\.(?:cc|h|cpp|py|sh))`");
  const std::regex link("\\]\\(([^)#:]+)[)#]");
  std::size_t checked = 0;
  for (const std::string& file : FilesEndingIn(tree, {".md"})) {
    const std::string text = ReadWholeFile(test::SourceDir() / file);
    for (const std::string& named : Matches(text, path)) {
      EXPECT_TRUE(Exists(tree, named)) << file << " names " << named;
      ++checked;
    }
    for (const std::string& target : Matches(text, link)) {
      const fs::path linked = (fs::path(file).parent_path() / target).lexically_normal();
      EXPECT_TRUE(tree.paths.contains(linked)) << file << " links to " << target;
      ++checked;
    }
  }
  EXPECT_GT(checked, 100U);
}

TEST(Docs, CommentsNameOnlyFilesThatExist) {
  const Tree tree = ReadTree();
  const std::regex file_name("([A-Za-z0-9_/-]*[A-Za-z0-9_]\\.(?:cc|h|md|py))\\b");
  std::size_t checked = 0;
  for (const std::string& file : FilesEndingIn(tree, {".cc", ".h", ".cpp"})) {
    std::istringstream lines(ReadWholeFile(test::SourceDir() / file));
    for (std::string line; std::getline(lines, line);) {
      const std::size_t start = line.find("// ");
      if (start == std::string::npos) continue;
      for (const std::string& named : Matches(line.substr(start), file_name)) {
        EXPECT_TRUE(Exists(tree, named)) << file << " names " << named;
        ++checked;
      }
    }
  }
  EXPECT_GT(checked, 5U);
}

TEST(Docs, TheArchitectureListsEveryModuleWithItsSubfolders) {
  const Tree tree = ReadTree();
  const std::string architecture = ReadWholeFile(test::SourceDir() / "docs/architecture.md");
  std::map<std::string, std::string> rows;  // of the table of modules
  const std::regex row("\\| `([a-z/]+)` \\| .*");
  std::istringstream lines(architecture);
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_match(line, match, row)) rows[match[1]] = line;
  }
  for (const std::string& file : FilesEndingIn(tree, {".cc"})) {
    if (!file.starts_with("src/")) continue;
    const std::string folder = fs::path(file).parent_path().string().substr(4);
    const auto module = std::ranges::find_if(
        rows, [&](const auto& entry) { return (folder + '/').starts_with(entry.first + '/'); });
    ASSERT_NE(module, rows.end()) << folder << " is in no row";
    if (folder == module->first) continue;
    const std::string subfolder = folder.substr(module->first.size() + 1);
    EXPECT_NE(module->second.find('`' + subfolder + '`'), std::string::npos)
        << module->first << " lacks " << subfolder;
  }
}

TEST(Docs, TheChangelogHasThisVersion) {
  const std::string changelog = ReadWholeFile(test::SourceDir() / "CHANGELOG.md");
  EXPECT_NE(changelog.find("\n## [" + std::string(kVersion) + "] - "), std::string::npos);
}

}  // namespace
}  // namespace tenora
