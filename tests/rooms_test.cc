// Keeps the floors apart: a room includes only rooms below it.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace tenora {
namespace {

// Lowest first. Rooms of one line stand beside each other and do not know one another.
const std::vector<std::vector<std::string>> kFloors = {
    {"platform/runtime"},
    {"platform/access", "platform/registry", "platform/richtext", "platform/locale",
     "platform/dialogs", "platform/mail", "platform/spelling"},
    {"platform/query", "platform/printing"},
    {"data"},
    {"rental"},
    {"merge"},
    {"output"},
    {"letters"},
    {"startup"},
    {"ui/editor", "ui/dialogs"},
    {"ui/window"},
    {"main.cpp"},
};

const std::set<std::string> kRoomsWithQt = {"platform/locale", "platform/printing",
                                            "platform/dialogs", "ui/editor",
                                            "ui/dialogs", "ui/window"};

std::map<std::string, std::size_t> FloorsByRoom() {
  std::map<std::string, std::size_t> result;
  for (std::size_t floor = 0; floor < kFloors.size(); ++floor) {
    for (const std::string& room : kFloors[floor]) result[room] = floor;
  }
  return result;
}

std::string RoomOf(const std::string& path) {
  const std::size_t first = path.find('/');
  if (first == std::string::npos) return path;
  const std::string house = path.substr(0, first);
  if (house != "platform" && house != "ui") return house;
  return path.substr(0, path.find('/', first + 1));
}

TEST(Rooms, IncludeOnlyRoomsBelow) {
  const std::map<std::string, std::size_t> floors = FloorsByRoom();
  const std::regex include_line("^\\s*#include [\"<]([^\">]+)[\">]");
  const std::filesystem::path source = test::SourceDir() / "src";
  std::size_t includes = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(source)) {
    const std::string extension = entry.path().extension();
    if (extension != ".h" && extension != ".cc" && extension != ".cpp") continue;
    const std::string file = std::filesystem::relative(entry.path(), source);
    const std::string room = RoomOf(file);
    ASSERT_TRUE(floors.contains(room)) << file << " stands in no room";
    std::istringstream lines(ReadWholeFile(entry.path()));
    for (std::string line; std::getline(lines, line);) {
      std::smatch match;
      if (!std::regex_search(line, match, include_line)) continue;
      const std::string included = match[1];
      if (included.starts_with("Q")) {
        EXPECT_TRUE(kRoomsWithQt.contains(room)) << file << " includes " << included;
      }
      const std::string target = RoomOf(included);
      if (!floors.contains(target)) continue;
      ++includes;
      EXPECT_TRUE(target == room || floors.at(target) < floors.at(room))
          << file << " includes " << included;
    }
  }
  EXPECT_GT(includes, 10U);
}

}  // namespace
}  // namespace tenora
