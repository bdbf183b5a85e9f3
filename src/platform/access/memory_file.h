// A database from bytes in memory, for tests and fuzzing: everything but the disk is the same.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/access/check.h"
#include "platform/access/database_file.h"

namespace tenora::access {

// Raises what DatabaseFile::Open raises; `name` stands for the path in messages.
std::shared_ptr<DatabaseFile> OpenBytes(std::vector<std::byte> bytes,
                                        const std::filesystem::path& name);

// Raises what CheckDatabase raises.
std::vector<Finding> CheckBytes(std::vector<std::byte> bytes, const std::filesystem::path& name);

}  // namespace tenora::access
