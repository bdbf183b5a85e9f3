// Keeps the layers apart: a module includes only modules of lower layers, only their top-level
// headers, and its own subfolders include one another in one direction only.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace tenora {
namespace {

struct Module {
  std::string path;
  // Its subfolders, lowest first: a file in one includes only files in it, in those before it, and
  // at the module's top. Files at the top may include any of them.
  std::vector<std::string> subfolders;
};

// Lowest first. Modules of one layer do not know one another.
const std::vector<std::vector<Module>> kLayers = {
    {{"platform/runtime", {}}},
    {{"platform/access", {"format", "storage", "read", "write", "check"}},
     {"platform/registry", {}},
     {"platform/richtext", {"characters", "write", "read", "edit"}},
     {"platform/locale", {}},
     {"platform/dialogs", {}},
     {"platform/mail", {}},
     {"platform/office", {}},
     {"platform/spelling", {}}},
    {{"platform/server", {}}},
    {{"platform/query", {"sql", "values", "functions", "cache", "translate", "execute"}},
     {"platform/printing", {"image", "layout", "pdf", "cups"}}},
    {{"data", {}}},
    {{"rental", {}}},
    {{"merge", {"condition", "forms"}}},
    {{"output", {"html", "mail", "print", "spelling"}}},
    {{"letters", {"lint", "import", "check", "letter", "generate", "queue"}}},
    {{"startup", {}}},
    {{"ui/editor", {"text", "codes", "tables", "document", "clipboard", "commands", "screen"}},
     {"ui/dialogs", {}}},
    {{"ui/window",
      {"appearance", "background", "help", "tree", "preview", "letter", "recovery", "main"}}},
    {{"main.cpp", {}}},
};

const std::set<std::string> kModulesWithQt = {"platform/locale",  "platform/printing",
                                              "platform/dialogs", "ui/editor",
                                              "ui/dialogs",       "ui/window"};

// Where a file stands: its module, that module's layer, and its subfolder's place in the module's
// order (none for a file at the module's top).
struct Place {
  std::string module;
  std::size_t layer = 0;
  std::optional<std::size_t> subfolder;
};

// The place of a path relative to src/; nothing for a file of no module. A subfolder that its
// module does not list is reported.
std::optional<Place> PlaceOf(const std::string& path) {
  for (std::size_t layer = 0; layer < kLayers.size(); ++layer) {
    for (const Module& module : kLayers[layer]) {
      if (path == module.path) return Place{module.path, layer, std::nullopt};
      if (!path.starts_with(module.path + "/")) continue;
      const std::string rest = path.substr(module.path.size() + 1);
      const std::size_t slash = rest.find('/');
      if (slash == std::string::npos) return Place{module.path, layer, std::nullopt};
      const auto found = std::ranges::find(module.subfolders, rest.substr(0, slash));
      if (found == module.subfolders.end()) {
        ADD_FAILURE() << path << " is in a subfolder that is not listed for " << module.path;
        return std::nullopt;
      }
      return Place{module.path, layer, static_cast<std::size_t>(found - module.subfolders.begin())};
    }
  }
  return std::nullopt;
}

void ExpectMayInclude(const std::string& file, const Place& from, const std::string& included,
                      const Place& to) {
  if (to.module != from.module) {
    EXPECT_LT(to.layer, from.layer) << file << " includes " << included;
    EXPECT_FALSE(to.subfolder) << file << " includes " << included << ", which is private to "
                               << to.module;
  } else if (from.subfolder && to.subfolder) {
    EXPECT_LE(*to.subfolder, *from.subfolder) << file << " includes " << included;
  }
}

TEST(Layers, IncludeOnlyLowerLayersAndTheirPublicHeaders) {
  const std::regex include_line("^\\s*#include [\"<]([^\">]+)[\">]");
  const std::filesystem::path source = test::SourceDir() / "src";
  std::size_t includes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(source)) {
    const std::string extension = entry.path().extension();
    if (extension != ".h" && extension != ".cc" && extension != ".cpp") continue;
    const std::string file = std::filesystem::relative(entry.path(), source);
    const std::optional<Place> from = PlaceOf(file);
    ASSERT_TRUE(from) << file << " belongs to no module";
    std::istringstream lines(ReadWholeFile(entry.path()));
    for (std::string line; std::getline(lines, line);) {
      std::smatch match;
      if (!std::regex_search(line, match, include_line)) continue;
      const std::string included = match[1];
      if (included.starts_with("Q")) {
        EXPECT_TRUE(kModulesWithQt.contains(from->module)) << file << " includes " << included;
      }
      const std::optional<Place> to = PlaceOf(included);
      if (!to) continue;
      ++includes;
      ExpectMayInclude(file, *from, included, *to);
    }
  }
  EXPECT_GT(includes, 10U);
}

// Files of one name in two modules send a reader to the wrong one.
TEST(Layers, GiveEachFileANameOfItsOwn) {
  std::map<std::string, std::string> paths;
  const std::filesystem::path source = test::SourceDir() / "src";
  for (const auto& entry : std::filesystem::recursive_directory_iterator(source)) {
    const std::string extension = entry.path().extension();
    if (extension != ".h" && extension != ".cc") continue;
    const std::string file = std::filesystem::relative(entry.path(), source);
    const auto [other, added] = paths.emplace(entry.path().filename(), file);
    EXPECT_TRUE(added) << file << " has the name of " << other->second;
  }
}

}  // namespace
}  // namespace tenora
