#include "platform/printing/cups/cups_queue.h"

#include <cups/cups.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

constexpr int kConnectMilliseconds = 1500;
constexpr std::size_t kLongestJobName = 255;  // bytes, a limit of the protocol

struct CloseConnection {
  void operator()(http_t* connection) const { httpClose(connection); }
};
struct FreeInfo {
  void operator()(cups_dinfo_t* info) const { cupsFreeDestInfo(info); }
};
struct FreeDest {
  void operator()(cups_dest_t* dest) const { cupsFreeDests(1, dest); }
};
using Connection = std::unique_ptr<http_t, CloseConnection>;

// Null when no server answers in time.
Connection Connect() {
  return Connection(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
                                 kConnectMilliseconds, nullptr));
}

int TwipsOf(int hundredths_of_millimetre) {
  return static_cast<int>(std::lround(hundredths_of_millimetre * 1440.0 / 2540.0));
}

// The protocol's keyword; null to leave the queue's own setting.
const char* SidesWord(Sides sides) {
  switch (sides) {
    case Sides::kAsPrinterIsSet:
      return nullptr;
    case Sides::kOne:
      return CUPS_SIDES_ONE_SIDED;
    case Sides::kBothLongEdge:
      return CUPS_SIDES_TWO_SIDED_PORTRAIT;
    case Sides::kBothShortEdge:
      return CUPS_SIDES_TWO_SIDED_LANDSCAPE;
  }
  return nullptr;
}

RuntimeError Refused(const std::string& queue, const std::string& title,
                     const std::string& reason) {
  return StandardError(error_number::kPrinterError,
                       queue + " did not take \"" + title + "\" (" + reason + ")");
}

}  // namespace

CupsQueues ListCupsQueues() {
  CupsQueues queues;
  const Connection connection = Connect();
  if (!connection) return queues;
  cups_dest_t* dests = nullptr;
  const int count = cupsGetDests2(connection.get(), &dests);
  for (int i = 0; i < count; ++i) {
    if (dests[i].is_default) queues.default_name = dests[i].name;
    // Instances are saved sets of options for the queue they belong to.
    if (dests[i].instance == nullptr) queues.names.emplace_back(dests[i].name);
  }
  cupsFreeDests(count, dests);
  return queues;
}

Paper PaperOfCupsQueue(const std::string& queue) {
  const Connection connection = Connect();
  if (!connection) return RegionalPaper();
  const std::unique_ptr<cups_dest_t, FreeDest> dest(
      cupsGetNamedDest(connection.get(), queue.c_str(), nullptr));
  if (!dest) return RegionalPaper();
  const std::unique_ptr<cups_dinfo_t, FreeInfo> info(
      cupsCopyDestInfo(connection.get(), dest.get()));
  cups_size_t size{};
  if (!info || cupsGetDestMediaDefault(connection.get(), dest.get(), info.get(), 0, &size) == 0 ||
      size.width <= 0 || size.length <= 0) {
    return RegionalPaper();
  }
  return {TwipsOf(size.width), TwipsOf(size.length), TwipsOf(size.left), TwipsOf(size.top)};
}

void SubmitToCups(const std::string& queue, const std::filesystem::path& file,
                  const std::string& title, const JobOptions& options) {
  const Connection connection = Connect();
  if (!connection) throw Refused(queue, title, "no print server answers");
  const std::unique_ptr<cups_dest_t, FreeDest> dest(
      cupsGetNamedDest(connection.get(), queue.c_str(), nullptr));
  if (!dest) throw Refused(queue, title, "no such printer");
  // The pages are laid out for this paper, margins included: scaling would move the text.
  const auto add = [&dest](const char* name, const char* value) {
    dest->num_options = cupsAddOption(name, value, dest->num_options, &dest->options);
  };
  add("print-scaling", "none");
  if (options.copies > 1) add(CUPS_COPIES, std::to_string(options.copies).c_str());
  if (const char* sides = SidesWord(options.sides)) add(CUPS_SIDES, sides);
  const std::string job_name(BoundedUtf8(title, kLongestJobName));
  const int job = cupsPrintFile2(connection.get(), queue.c_str(), file.c_str(), job_name.c_str(),
                                 dest->num_options, dest->options);
  if (job == 0) throw Refused(queue, title, cupsLastErrorString());
}

}  // namespace tenora::printing
