// Which characters the installed fonts can show.
#pragma once

#include <map>
#include <memory>

namespace tenora::printing {

class FontCoverage {
 public:
  // False for a character of which an empty box would be drawn: it is to be seen, and no installed
  // font has it. Private characters, as symbol fonts have them, are not judged. Each character is
  // looked up once. Call on the main thread.
  bool Shows(char32_t character);

 private:
  bool LookUp(char32_t character);

  std::shared_ptr<void> application_;
  std::map<char32_t, bool> known_;
};

}  // namespace tenora::printing
