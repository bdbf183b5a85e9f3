// Decodes stored text to UTF-8. Jet 3 stores text in the file's code page. Jet 4 and ACE store
// UTF-16, or a compressed form that starts with FF FE: one byte for each character below U+0100; a
// zero byte switches to two bytes for each character, and another one back. FF FE alone is the
// character U+FEFF.
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
  // Raises std::invalid_argument when the code page of a Jet 3 file is not supported.
  explicit TextCodec(const FileHeader& header);
  ~TextCodec();
  TextCodec(const TextCodec&) = delete;
  TextCodec& operator=(const TextCodec&) = delete;

  // The decoded text: a view of `stored` where its bytes are valid UTF-8 as they are, else of
  // `buffer`, whose content is replaced. Invalid sequences become U+FFFD.
  std::string_view Decode(Bytes stored, std::string& buffer) const;

 private:
  std::string_view DecodeCodePage(Bytes stored, std::string& buffer) const;

  struct CloseConverter {
    void operator()(UConverter* converter) const;
  };
  std::unique_ptr<UConverter, CloseConverter> converter_;  // of a Jet 3 file
};

}  // namespace tenora::access
