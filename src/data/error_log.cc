#include "data/error_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "platform/runtime/files.h"
#include "platform/runtime/format.h"

namespace tenora {

void AppendToErrorLog(const std::filesystem::path& program_folder, Date now,
                      std::string_view message) {
  const std::string name = std::string("err").append(FormatDate(now, "MMMYY")).append(".log");
  std::string line = FormatDate(now, "DD/MM/YY hh:nn:ss");
  line.append(" ").append(message).append("\r\n");
  const int fd = OpenOwnFile(program_folder / name, O_WRONLY | O_APPEND | O_CREAT, 0666);
  if (fd < 0) return;
  if (::write(fd, line.data(), line.size()) < 0) {
    // Ignored like every failure here.
  }
  ::close(fd);
}

}  // namespace tenora
