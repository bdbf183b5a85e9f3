// The converter takes any bytes as a letter: it ends, and its tags nest.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "output/rtf_to_html.h"
#include "support/html_nesting.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view rtf(reinterpret_cast<const char*>(data), size);
  tenora::RtfToHtml(rtf, "");
  for (const char* options : {"+E", "+E+U+CR+F=3", "+E-FF"}) {
    const std::string fault = tenora::test::NestingFault(tenora::RtfToHtml(rtf, options));
    if (fault.empty()) continue;
    std::fprintf(stderr, "%s: %s\n", options, fault.c_str());
    std::abort();
  }
  return 0;
}
