// Metafiles made record by record.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace tenora::test {

inline void PutNumber(std::string& bytes, std::int64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// Its window is 100 units wide and high.
class WmfFile {
 public:
  WmfFile() {
    for (const int number : {1, 9, 0x300, 0, 0, 0, 0, 0, 0}) PutNumber(bytes_, number, 2);
    Record(0x020B, {0, 0});
    Record(0x020C, {100, 100});
  }

  // Numbers of two bytes, then any bytes.
  WmfFile& Record(int function, std::initializer_list<int> numbers, std::string_view more = {}) {
    const std::size_t size = 6 + numbers.size() * 2 + (more.size() + 1) / 2 * 2;
    PutNumber(bytes_, static_cast<std::int64_t>(size / 2), 4);
    PutNumber(bytes_, function, 2);
    for (const int number : numbers) PutNumber(bytes_, number, 2);
    bytes_.append(more);
    if (more.size() % 2 != 0) bytes_.push_back('\0');
    return *this;
  }
  // A brush or pen, which is selected. Its number is the count of those before.
  WmfFile& Brush(int red, int green, int blue, int style = 0, int hatch = 0) {
    Record(0x02FC, {style, green << 8 | red, blue, hatch});
    return Record(0x012D, {objects_++});
  }
  WmfFile& Pen(int style, int width, int red = 0, int green = 0, int blue = 0) {
    Record(0x02FA, {style, width, 0, green << 8 | red, blue});
    return Record(0x012D, {objects_++});
  }
  WmfFile& Rectangle(int left, int top, int right, int bottom) {
    return Record(0x041B, {bottom, right, top, left});
  }
  std::string Done() const { return WmfFile(*this).Record(0, {}).bytes_; }
  std::string Unfinished() const { return bytes_; }

 private:
  std::string bytes_;
  int objects_ = 0;
};

// On a device of 10 pixels to the millimetre, 10 millimetres wide and high: 100 pixels.
class EmfFile {
 public:
  EmfFile() {
    PutNumber(bytes_, 1, 4);
    PutNumber(bytes_, 88, 4);
    for (const int edge : {0, 0, 99, 99, 0, 0, 1000, 1000}) PutNumber(bytes_, edge, 4);
    bytes_ += " EMF";
    for (const int number : {0x10000, 0, 0, 0, 0, 0, 0}) PutNumber(bytes_, number, 4);
    for (const int number : {1000, 1000, 100, 100}) PutNumber(bytes_, number, 4);
    Record(37, {static_cast<std::int64_t>(0x80000008)});  // no outlines
  }

  // Numbers of four bytes, then any bytes.
  EmfFile& Record(int type, std::initializer_list<std::int64_t> numbers,
                  std::string_view more = {}) {
    const std::size_t size = 8 + numbers.size() * 4 + (more.size() + 3) / 4 * 4;
    PutNumber(bytes_, type, 4);
    PutNumber(bytes_, static_cast<std::int64_t>(size), 4);
    for (const std::int64_t number : numbers) PutNumber(bytes_, number, 4);
    bytes_.append(more).append((4 - more.size() % 4) % 4, '\0');
    return *this;
  }
  EmfFile& Brush(int red, int green, int blue) {
    Record(39, {++objects_, 0, blue << 16 | green << 8 | red, 0});
    return Record(37, {objects_});
  }
  EmfFile& Rectangle(int left, int top, int right, int bottom) {
    return Record(43, {left, top, right, bottom});
  }
  std::string Done() const { return EmfFile(*this).Record(14, {0, 0, 20}).bytes_; }
  std::string Unfinished() const { return bytes_; }

 private:
  std::string bytes_;
  int objects_ = 0;
};

// A bitmap of two by two pixels of 24 bits, by rows from the top: 0xRRGGBB.
inline std::string DibOf(std::initializer_list<std::uint32_t> pixels) {
  std::string dib;
  for (const int number : {40, 2, -2}) PutNumber(dib, number, 4);
  for (const int number : {1, 24}) PutNumber(dib, number, 2);
  dib.append(24, '\0');
  int count = 0;
  for (const std::uint32_t pixel : pixels) {
    PutNumber(dib, pixel, 3);
    if (++count % 2 == 0) dib.append(2, '\0');
  }
  return dib;
}

}  // namespace tenora::test
