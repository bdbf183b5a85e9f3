// Any bytes give a drawing, which is drawn in bounded time.
#include <cstdint>
#include <string_view>

#include "platform/printing/image/metafile.h"
#include "platform/printing/qt_application.h"

// The fonts' configuration is kept until the process ends, in memory that nothing points to.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tenora::richtext::Picture;
  static const auto application = tenora::printing::HoldQtApplication();
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto metafile = tenora::printing::ReadMetafile(bytes);
  const auto kind = metafile ? metafile->kind : Picture::Kind::kWmf;
  tenora::printing::DrawingOf(kind, bytes)->Rendered({64, 64});
  return 0;
}
