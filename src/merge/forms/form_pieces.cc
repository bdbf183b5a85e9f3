#include "merge/forms/form_pieces.h"

#include <algorithm>
#include <utility>

#include "merge/merge_codes.h"
#include "platform/richtext/document_text.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Paragraph;
using richtext::Row;
using richtext::Run;
using richtext::Table;
using Kind = FormPiece::Kind;

struct CodePlace {
  std::size_t begin = 0, end = 0;  // bytes of a paragraph's text, with the brackets
};

// Codes without a code in them, each on one line.
std::vector<CodePlace> CodesIn(std::string_view text) {
  std::vector<CodePlace> codes;
  std::size_t open = std::string_view::npos;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with(kCodeStart)) {
      open = rest.starts_with("<<<") ? at + 1 : at;
      at = open + kCodeStart.size() - 1;
    } else if (rest.starts_with(kCodeEnd) && open != std::string_view::npos) {
      codes.push_back({open, at + kCodeEnd.size()});
      open = std::string_view::npos;
      ++at;
    } else if (rest.front() == '\v' || rest.front() == '\f') {
      open = std::string_view::npos;
    }
  }
  return codes;
}

class ParagraphPieces {
 public:
  ParagraphPieces(const Paragraph& paragraph, std::size_t offset, FormPieces* pieces)
      : paragraph_(paragraph),
        offset_(offset),
        text_(richtext::ParagraphText(paragraph)),
        codes_(CodesIn(text_)),
        pieces_(*pieces) {}

  std::size_t Add() {
    std::size_t begin = 0;
    for (const Run& run : paragraph_.runs) {
      AddRun(run, begin);
      begin += run.text.size();
    }
    MarksUpTo(text_.size());
    FormPiece end = Piece(Kind::kParagraphEnd);
    end.marked = line_marked_;
    end.paragraph_marked = marked_;
    pieces_.push_back(std::move(end));
    return text_.size();
  }

 private:
  FormPiece Piece(Kind kind) const { return {.kind = kind, .paragraph = &paragraph_}; }

  void MarksUpTo(std::size_t offset) {
    for (; next_mark_ < paragraph_.marks.size() && paragraph_.marks[next_mark_].offset <= offset;
         ++next_mark_) {
      FormPiece mark = Piece(Kind::kMark);
      mark.mark = &paragraph_.marks[next_mark_];
      pieces_.push_back(std::move(mark));
    }
  }

  std::size_t NextMark() const {
    return next_mark_ < paragraph_.marks.size() ? paragraph_.marks[next_mark_].offset
                                                : std::string::npos;
  }

  // `begin`: of the run in the paragraph.
  void AddRun(const Run& run, std::size_t begin) {
    const std::size_t end = begin + run.text.size();
    if (taken_ > begin) AddRest(run, std::min(taken_, end) - begin);
    std::size_t at = std::max(begin, taken_);
    while (at < end) {
      MarksUpTo(at);
      while (next_code_ < codes_.size() && codes_[next_code_].end <= at) ++next_code_;
      const CodePlace* const code = next_code_ < codes_.size() ? &codes_[next_code_] : nullptr;
      if (code != nullptr && code->begin == at && run.object.index() == 0) {
        AddCode(run, begin, *code);
        at = taken_ = code->end;
        continue;
      }
      std::size_t stop = std::min(end, NextMark());
      if (code != nullptr && code->begin > at) stop = std::min(stop, code->begin);
      AddText(run, at - begin, stop - begin);
      at = stop;
    }
  }

  // A code goes on in this run.
  void AddRest(const Run& run, std::size_t length) {
    FormPiece rest = Piece(Kind::kText);
    rest.run = &run;
    rest.end = length;
    pieces_.back().rest.push_back(std::move(rest));
  }

  void AddCode(const Run& run, std::size_t run_begin, const CodePlace& code) {
    FormPiece piece = Piece(Kind::kCode);
    piece.run = &run;
    piece.begin = code.begin - run_begin;
    piece.end = std::min(code.end - run_begin, run.text.size());
    piece.split = code.end - run_begin > run.text.size();
    piece.offset = offset_ + code.begin;
    piece.size = code.end - code.begin;
    piece.code = text_.substr(code.begin + kCodeStart.size(),
                              piece.size - kCodeStart.size() - kCodeEnd.size());
    piece.marker = MarkerOf(piece.code);
    if (piece.IsMarker()) line_marked_ = marked_ = true;
    pieces_.push_back(std::move(piece));
  }

  // Ends a piece at each line break.
  void AddText(const Run& run, std::size_t begin, std::size_t end) {
    while (begin < end) {
      const std::size_t stop =
          run.object.index() != 0 ? end : std::min(end, run.text.find('\v', begin));
      FormPiece piece = Piece(Kind::kText);
      piece.run = &run;
      piece.begin = begin;
      piece.end = stop;
      if (stop > begin) pieces_.push_back(piece);
      begin = stop;
      if (begin == end) return;
      piece.kind = Kind::kLineEnd;
      piece.marked = std::exchange(line_marked_, false);
      pieces_.push_back(std::move(piece));
      ++begin;
    }
  }

  const Paragraph& paragraph_;
  const std::size_t offset_;
  const std::string text_;
  const std::vector<CodePlace> codes_;
  FormPieces& pieces_;
  std::size_t next_code_ = 0, next_mark_ = 0;
  std::size_t taken_ = 0;  // by a code that goes on in the next run
  bool line_marked_ = false, marked_ = false;
};

// Word processors leave bookmarks of their own anywhere.
bool IsBlank(const FormPiece& piece) {
  if (piece.kind == Kind::kParagraphEnd || piece.kind == Kind::kLineEnd ||
      piece.kind == Kind::kMark) {
    return true;
  }
  if (piece.kind != Kind::kText || piece.run->object.index() != 0) return false;
  return std::string_view(piece.run->text)
             .substr(piece.begin, piece.end - piece.begin)
             .find_first_not_of(" \t") == std::string_view::npos;
}

// Takes the markers out whose other half is not among the pieces.
FormPieces TakeUnmatched(FormPieces* pieces) {
  std::vector<bool> unmatched(pieces->size());
  struct Open {
    std::size_t at;
    std::vector<std::size_t> elses = {};
  };
  std::vector<Open> open;
  for (std::size_t i = 0; i < pieces->size(); ++i) {
    const FormPiece& piece = (*pieces)[i];
    if (!piece.IsMarker()) continue;
    if (piece.marker->Begins()) {
      open.push_back({i});
    } else if (open.empty()) {
      unmatched[i] = true;
    } else if (piece.marker->Ends()) {
      open.pop_back();
    } else {
      open.back().elses.push_back(i);
    }
  }
  for (const Open& one : open) {
    unmatched[one.at] = true;
    for (const std::size_t at : one.elses) unmatched[at] = true;
  }
  FormPieces taken, kept;
  for (std::size_t i = 0; i < pieces->size(); ++i) {
    (unmatched[i] ? taken : kept).push_back(std::move((*pieces)[i]));
  }
  *pieces = std::move(kept);
  return taken;
}

class Pieces {
 public:
  FormPieces Of(const std::vector<Block>& blocks) {
    FormPieces pieces;
    for (const Block& block : blocks) {
      if (const auto* paragraph = std::get_if<Paragraph>(&block)) {
        offset_ += ParagraphPieces(*paragraph, offset_, &pieces).Add() + 1;
        continue;
      }
      FormPiece table{.kind = Kind::kTable};
      for (const Row& row : std::get<std::shared_ptr<Table>>(block)->rows) AddRow(row, &table.rows);
      pieces.push_back(std::move(table));
    }
    return pieces;
  }

 private:
  // A row of nothing but markers is those; in another, what begins stands before it and what ends
  // behind it.
  void AddRow(const Row& row, FormPieces* rows) {
    FormPiece piece{.kind = Kind::kRow, .row = &row};
    FormPieces markers;
    for (const richtext::Cell& cell : row.cells) {
      FormPieces inside = Of(cell.blocks);
      for (FormPiece& marker : TakeUnmatched(&inside)) markers.push_back(std::move(marker));
      piece.cells.push_back(std::move(inside));
    }
    const bool blank = !markers.empty() && std::ranges::all_of(piece.cells, [](const auto& cell) {
      return std::ranges::all_of(cell, IsBlank);
    });
    const auto move = [&](FormPiece& marker) { rows->push_back(std::move(marker)); };
    if (blank) {
      std::ranges::for_each(markers, move);
      return;
    }
    const auto first_end = std::ranges::find_if(
        markers, [](const FormPiece& marker) { return marker.marker->Ends(); });
    std::for_each(markers.begin(), first_end, move);
    rows->push_back(std::move(piece));
    for (auto marker = first_end; marker != markers.end(); ++marker) {
      marker->crossed = !marker->marker->Ends();
      move(*marker);
    }
  }

  std::size_t offset_ = 0;
};

}  // namespace

FormPieces PiecesOf(const std::vector<Block>& blocks) { return Pieces().Of(blocks); }

}  // namespace tenora
