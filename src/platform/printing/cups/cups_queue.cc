#include "platform/printing/cups/cups_queue.h"

#include <cups/cups.h>
#include <cups/pwg.h>

#include <QPageSize>
#include <QSizeF>
#include <algorithm>
#include <cmath>
#include <memory>

#include "platform/runtime/error.h"
#include "platform/runtime/shared_library.h"
#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

constexpr int kConnectMilliseconds = 1500;
constexpr std::size_t kLongestJobName = 255;  // bytes, a limit of the protocol

// The client library, loaded when the first letter asks for printers.
struct CupsLibrary {
  SharedLibrary library{"libcups.so.2"};
  LibraryFunction<decltype(::cupsAddOption)> cupsAddOption{library, "cupsAddOption"};
  LibraryFunction<decltype(::cupsCopyDestInfo)> cupsCopyDestInfo{library, "cupsCopyDestInfo"};
  LibraryFunction<decltype(::cupsEncryption)> cupsEncryption{library, "cupsEncryption"};
  LibraryFunction<decltype(::cupsFindDestDefault)> cupsFindDestDefault{library,
                                                                       "cupsFindDestDefault"};
  LibraryFunction<decltype(::cupsFindDestSupported)> cupsFindDestSupported{library,
                                                                           "cupsFindDestSupported"};
  LibraryFunction<decltype(::cupsFreeDestInfo)> cupsFreeDestInfo{library, "cupsFreeDestInfo"};
  LibraryFunction<decltype(::cupsFreeDests)> cupsFreeDests{library, "cupsFreeDests"};
  LibraryFunction<decltype(::cupsGetDestMediaByName)> cupsGetDestMediaByName{
      library, "cupsGetDestMediaByName"};
  LibraryFunction<decltype(::cupsGetDestMediaDefault)> cupsGetDestMediaDefault{
      library, "cupsGetDestMediaDefault"};
  LibraryFunction<decltype(::cupsGetDests2)> cupsGetDests2{library, "cupsGetDests2"};
  LibraryFunction<decltype(::cupsGetNamedDest)> cupsGetNamedDest{library, "cupsGetNamedDest"};
  LibraryFunction<decltype(::cupsGetOption)> cupsGetOption{library, "cupsGetOption"};
  LibraryFunction<decltype(::cupsLastErrorString)> cupsLastErrorString{library,
                                                                       "cupsLastErrorString"};
  LibraryFunction<decltype(::cupsLocalizeDestValue)> cupsLocalizeDestValue{library,
                                                                           "cupsLocalizeDestValue"};
  LibraryFunction<decltype(::cupsPrintFile2)> cupsPrintFile2{library, "cupsPrintFile2"};
  LibraryFunction<decltype(::cupsServer)> cupsServer{library, "cupsServer"};
  LibraryFunction<decltype(::httpClose)> httpClose{library, "httpClose"};
  LibraryFunction<decltype(::httpConnect2)> httpConnect2{library, "httpConnect2"};
  LibraryFunction<decltype(::ippGetCount)> ippGetCount{library, "ippGetCount"};
  LibraryFunction<decltype(::ippGetInteger)> ippGetInteger{library, "ippGetInteger"};
  LibraryFunction<decltype(::ippGetString)> ippGetString{library, "ippGetString"};
  LibraryFunction<decltype(::ippGetValueTag)> ippGetValueTag{library, "ippGetValueTag"};
  LibraryFunction<decltype(::ippPort)> ippPort{library, "ippPort"};
  LibraryFunction<decltype(::pwgMediaForLegacy)> pwgMediaForLegacy{library, "pwgMediaForLegacy"};
  LibraryFunction<decltype(::pwgMediaForPPD)> pwgMediaForPPD{library, "pwgMediaForPPD"};
  LibraryFunction<decltype(::pwgMediaForPWG)> pwgMediaForPWG{library, "pwgMediaForPWG"};
};

const CupsLibrary& Cups() {
  static const CupsLibrary kCups;
  return kCups;
}

struct CloseConnection {
  void operator()(http_t* connection) const { Cups().httpClose(connection); }
};
struct FreeInfo {
  void operator()(cups_dinfo_t* info) const { Cups().cupsFreeDestInfo(info); }
};
struct FreeDest {
  void operator()(cups_dest_t* dest) const { Cups().cupsFreeDests(1, dest); }
};
using Connection = std::unique_ptr<http_t, CloseConnection>;

// Null when no server answers in time.
Connection Connect() {
  return Connection(Cups().httpConnect2(Cups().cupsServer(), Cups().ippPort(), nullptr, AF_UNSPEC,
                                        Cups().cupsEncryption(), 1, kConnectMilliseconds, nullptr));
}

int TwipsOf(int hundredths_of_millimetre) {
  return static_cast<int>(std::lround(hundredths_of_millimetre * 1440.0 / 2540.0));
}

// What people may choose, in this order.
constexpr std::pair<const char*, const char*> kSettings[] = {{CUPS_MEDIA, "Paper"},
                                                             {CUPS_MEDIA_SOURCE, "Paper tray"},
                                                             {CUPS_MEDIA_TYPE, "Kind of paper"},
                                                             {CUPS_PRINT_COLOR_MODE, "Colours"},
                                                             {CUPS_PRINT_QUALITY, "Quality"},
                                                             {"output-bin", "Output tray"}};
constexpr std::size_t kMostValues = 200;

// "A4 (210 x 297 mm)" for the protocol's "iso_a4_210x297mm".
std::string PaperName(const std::string& keyword) {
  constexpr double kPerMillimetre = 100;
  const pwg_media_t* const media = Cups().pwgMediaForPWG(keyword.c_str());
  if (media == nullptr) return keyword;
  const QSizeF size(media->width / kPerMillimetre, media->length / kPerMillimetre);
  return QPageSize(size, QPageSize::Millimeter).name().toStdString();
}

// "Bottom left" for a keyword "bottom-left" that the printer has no words for.
std::string InWords(std::string keyword) {
  std::ranges::replace(keyword, '-', ' ');
  return ToUpper(keyword.substr(0, 1)) + keyword.substr(std::min<std::size_t>(1, keyword.size()));
}

// The words or numbers of an attribute, null where there is none.
std::vector<std::string> ValuesOf(ipp_attribute_t* attribute) {
  std::vector<std::string> values;
  const ipp_tag_t tag = attribute == nullptr ? IPP_TAG_ZERO : Cups().ippGetValueTag(attribute);
  for (int i = 0; tag != IPP_TAG_ZERO && i < Cups().ippGetCount(attribute); ++i) {
    if (tag == IPP_TAG_KEYWORD || tag == IPP_TAG_NAME) {
      values.emplace_back(Cups().ippGetString(attribute, i, nullptr));
    } else if (tag == IPP_TAG_ENUM || tag == IPP_TAG_INTEGER) {
      values.push_back(std::to_string(Cups().ippGetInteger(attribute, i)));
    }
  }
  return values;
}

// The keyword of the user's own default for the queue, else of the queue's; empty for neither.
std::string DefaultPaper(http_t* connection, cups_dest_t& dest, cups_dinfo_t* info) {
  const char* own = Cups().cupsGetOption(CUPS_MEDIA, dest.num_options, dest.options);
  const bool known = own != nullptr && (Cups().pwgMediaForPWG(own) != nullptr ||
                                        Cups().pwgMediaForPPD(own) != nullptr ||
                                        Cups().pwgMediaForLegacy(own) != nullptr);
  if (known) return own;
  const std::vector<std::string> preset =
      ValuesOf(Cups().cupsFindDestDefault(connection, &dest, info, CUPS_MEDIA));
  return preset.empty() ? std::string() : preset.front();
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
  const int count = Cups().cupsGetDests2(connection.get(), &dests);
  for (int i = 0; i < count; ++i) {
    if (dests[i].is_default) queues.default_name = dests[i].name;
    // Instances are saved sets of options for the queue they belong to.
    if (dests[i].instance == nullptr) queues.names.emplace_back(dests[i].name);
  }
  Cups().cupsFreeDests(count, dests);
  return queues;
}

Paper PaperOfCupsQueue(const std::string& queue, const std::string& wanted) {
  const Connection connection = Connect();
  if (!connection) return RegionalPaper();
  const std::unique_ptr<cups_dest_t, FreeDest> dest(
      Cups().cupsGetNamedDest(connection.get(), queue.c_str(), nullptr));
  if (!dest) return RegionalPaper();
  const std::unique_ptr<cups_dinfo_t, FreeInfo> info(
      Cups().cupsCopyDestInfo(connection.get(), dest.get()));
  if (!info) return RegionalPaper();
  const std::string name =
      wanted.empty() ? DefaultPaper(connection.get(), *dest, info.get()) : wanted;
  cups_size_t size{};
  // Without a name the library takes US Letter, or the first paper that the queue lists.
  const int found =
      name.empty()
          ? Cups().cupsGetDestMediaDefault(connection.get(), dest.get(), info.get(), 0, &size)
          : Cups().cupsGetDestMediaByName(connection.get(), dest.get(), info.get(), name.c_str(), 0,
                                          &size);
  if (found == 0 || size.width <= 0 || size.length <= 0) return RegionalPaper();
  return {TwipsOf(size.width), TwipsOf(size.length), TwipsOf(size.left), TwipsOf(size.top)};
}

std::vector<PrinterSetting> SettingsOfCupsQueue(const std::string& queue) {
  std::vector<PrinterSetting> settings;
  const Connection connection = Connect();
  if (!connection) return settings;
  const std::unique_ptr<cups_dest_t, FreeDest> dest(
      Cups().cupsGetNamedDest(connection.get(), queue.c_str(), nullptr));
  if (!dest) return settings;
  const std::unique_ptr<cups_dinfo_t, FreeInfo> info(
      Cups().cupsCopyDestInfo(connection.get(), dest.get()));
  if (!info) return settings;
  const auto label_of = [&](std::string_view name, const std::string& value) {
    if (name == kPaperSetting) return PaperName(value);
    const char* label = Cups().cupsLocalizeDestValue(connection.get(), dest.get(), info.get(),
                                                     name.data(), value.c_str());
    return label == nullptr || label == value ? InWords(value) : label;
  };
  for (const auto& [name, label] : kSettings) {
    ipp_attribute_t* const supported =
        Cups().cupsFindDestSupported(connection.get(), dest.get(), info.get(), name);
    PrinterSetting setting{name, label, {}, {}};
    for (const std::string& value : ValuesOf(supported)) {
      if (setting.values.size() == kMostValues) break;
      setting.values.push_back({value, label_of(name, value)});
    }
    // Nothing to choose.
    if (setting.values.size() < 2) continue;
    const std::vector<std::string> preset =
        ValuesOf(Cups().cupsFindDestDefault(connection.get(), dest.get(), info.get(), name));
    if (!preset.empty()) setting.preset = label_of(name, preset.front());
    settings.push_back(std::move(setting));
  }
  return settings;
}

void SubmitToCups(const std::string& queue, const std::filesystem::path& file,
                  const std::string& title, const JobOptions& options) {
  const Connection connection = Connect();
  if (!connection) throw Refused(queue, title, "no print server answers");
  const std::unique_ptr<cups_dest_t, FreeDest> dest(
      Cups().cupsGetNamedDest(connection.get(), queue.c_str(), nullptr));
  if (!dest) throw Refused(queue, title, "no such printer");
  // The pages are laid out for this paper, margins included: scaling would move the text.
  const auto add = [&dest](const char* name, const char* value) {
    dest->num_options = Cups().cupsAddOption(name, value, dest->num_options, &dest->options);
  };
  add("print-scaling", "none");
  if (options.copies > 1) {
    add(CUPS_COPIES, std::to_string(options.copies).c_str());
    // The protocol's word, and the one of the filters.
    add("multiple-document-handling", options.collate ? "separate-documents-collated-copies"
                                                      : "separate-documents-uncollated-copies");
    add("Collate", options.collate ? "True" : "False");
  }
  if (const char* sides = SidesWord(options.sides)) add(CUPS_SIDES, sides);
  // The protocol has what concerns the sheet itself in a collection.
  std::string sheet;
  for (const auto& [name, value] : options.settings) {
    if (name == CUPS_MEDIA_SOURCE || name == CUPS_MEDIA_TYPE) {
      sheet.append(sheet.empty() ? "" : " ").append(name).append("=").append(value);
    } else {
      add(name.c_str(), value.c_str());
    }
  }
  if (!sheet.empty()) add("media-col", ("{" + sheet + "}").c_str());
  const std::string job_name(BoundedUtf8(title, kLongestJobName));
  const int job = Cups().cupsPrintFile2(connection.get(), queue.c_str(), file.c_str(),
                                        job_name.c_str(), dest->num_options, dest->options);
  if (job == 0) throw Refused(queue, title, Cups().cupsLastErrorString());
}

}  // namespace tenora::printing
