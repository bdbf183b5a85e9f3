// Text as the file keeps it, to UTF-8. Jet 3 keeps bytes of the file's code page. Jet 4 and ACE
// keep UTF-16, or a compressed form that starts with FF FE: then one byte stands for a character
// below U+0100, until a zero byte switches to two bytes for each character and a zero byte switches
// back.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/access/format/bytes.h"
#include "platform/access/format/file_header.h"

struct UConverter;

namespace tenora::access {

class TextCodec {
 public:
  // Raises std::invalid_argument when the code page of a Jet 3 file is not known here.
  explicit TextCodec(const FileHeader& header);
  ~TextCodec();
  TextCodec(const TextCodec&) = delete;
  TextCodec& operator=(const TextCodec&) = delete;

  // The text: of `stored` itself where its bytes are UTF-8 already, else of `buffer`, whose content
  // is replaced. What is no character becomes U+FFFD.
  std::string_view Decode(Bytes stored, std::string& buffer) const;

 private:
  std::string_view DecodeCodePage(Bytes stored, std::string& buffer) const;

  struct CloseConverter {
    void operator()(UConverter* converter) const;
  };
  std::unique_ptr<UConverter, CloseConverter> converter_;  // of a Jet 3 file
};

}  // namespace tenora::access
