// The parts of a page where no text may be, since something floats there. Lengths are twips.
#pragma once

#include <QPointF>
#include <optional>
#include <utility>
#include <vector>

#include "platform/printing/layout/strip.h"

namespace tenora::printing {

class TakenAreas {
 public:
  // Places are relative to this point of the paper; without one, what has its place on the paper
  // takes nothing.
  explicit TakenAreas(std::optional<QPointF> origin = std::nullopt) : origin_(origin) {}

  void Clear() { areas_.clear(); }
  // What this takes of the text when its strip is at `corner`.
  void Add(const Floating& floating, QPointF corner);
  // The first height from `corner` downwards where nothing of the strip is in a taken area.
  double FreeBelow(const Strip& strip, QPointF corner) const;
  // Whether text can stand beside what takes so much of a line's whole width.
  static bool RoomBeside(double taken, double whole);
  // The part of [left, right] where a line of this height can stand beside what is taken; all of it
  // where too little is free.
  std::pair<double, double> Beside(double left, double right, double y, double height) const;

 private:
  struct Area {
    double left = 0, right = 0, top = 0, bottom = 0;
    bool whole_width = false;
    double gap = 0;  // to the text beside it
  };
  std::optional<QPointF> origin_;
  std::vector<Area> areas_;
};

// Moves the strips of a cell, a header or a text box down, from below what floats in them.
void MakeRoom(Strips* strips);

}  // namespace tenora::printing
