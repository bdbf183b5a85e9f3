// Raster operations: what becomes of a pixel when a source is drawn on a ground. A binary one is a
// truth table of four bits, with the source's bit times two plus the ground's as the index; a
// ternary one of eight, with the pattern's bit times four in addition.
#pragma once

#include <QPainter>
#include <cstdint>

namespace tenora::printing {

inline constexpr int kOpBlack = 0b0000, kOpInvertedSource = 0b0011, kOpXor = 0b0110,
                     kOpAnd = 0b1000, kOpNothing = 0b1010, kOpCopy = 0b1100, kOpOr = 0b1110,
                     kOpWhite = 0b1111;

inline bool NeedsGround(int operation) {
  return ((operation >> 1) & 0b0101) != (operation & 0b0101);
}

// The operation with the same outcome on a white ground, which leaves the ground unread.
inline int OnWhite(int operation) {
  const int with_source = operation >> 3 & 1, without = operation >> 1 & 1;
  return with_source * 0b1100 + without * 0b0011;
}

// The same for a source of one bit throughout, on any ground; itself where it still needs the
// ground.
inline int WithSource(int operation, bool source) {
  const int outcome = source ? operation >> 2 & 3 : operation & 3;
  return outcome * 0b0101;
}

inline bool UsesPattern(int ternary) { return (ternary >> 4 & 15) != (ternary & 15); }
inline bool UsesSource(int ternary) { return (ternary >> 2 & 0b110011) != (ternary & 0b110011); }
inline int WithPattern(int ternary, bool pattern) {
  return pattern ? ternary >> 4 & 15 : ternary & 15;
}
// Of pattern and ground, for an operation without a source.
inline int OfPattern(int ternary) { return (ternary >> 4 & 3) << 2 | (ternary & 3); }

inline QPainter::CompositionMode ModeOf(int operation) {
  using enum QPainter::CompositionMode;
  static constexpr QPainter::CompositionMode kModes[16] = {
      RasterOp_ClearDestination,        RasterOp_NotSourceAndNotDestination,
      RasterOp_NotSourceAndDestination, RasterOp_NotSource,
      RasterOp_SourceAndNotDestination, RasterOp_NotDestination,
      RasterOp_SourceXorDestination,    RasterOp_NotSourceOrNotDestination,
      RasterOp_SourceAndDestination,    RasterOp_NotSourceXorDestination,
      CompositionMode_Destination,      RasterOp_NotSourceOrDestination,
      CompositionMode_SourceOver,       RasterOp_SourceOrNotDestination,
      RasterOp_SourceOrDestination,     RasterOp_SetDestination,
  };
  return kModes[operation & 15];
}

}  // namespace tenora::printing
