#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>
#include <variant>

#include "letters/lint/code_rules.h"
#include "letters/lint/merge_field.h"
#include "letters/template_import.h"
#include "platform/richtext/document_sections.h"
#include "platform/richtext/rtf_reader.h"
#include "platform/richtext/rtf_writer.h"

namespace tenora {
namespace {

using richtext::Block;
using richtext::Document;
using richtext::Field;
using richtext::HeadGroup;
using richtext::Paragraph;
using richtext::Run;

// Puts codes in the place of a document's merge fields.
class MergeFieldRepair {
 public:
  MergeFieldRepair(TemplateKind kind, std::vector<std::string>* repairs)
      : kind_(kind), repairs_(*repairs) {}

  void Repair(std::vector<Block>* blocks) {
    for (Block& block : *blocks) {
      if (auto* paragraph = std::get_if<Paragraph>(&block)) {
        Repair(paragraph);
        continue;
      }
      for (richtext::Row& row : std::get<std::shared_ptr<richtext::Table>>(block)->rows) {
        for (richtext::Cell& cell : row.cells) Repair(&cell.blocks);
      }
    }
  }

 private:
  void Repair(Paragraph* paragraph) {
    std::shared_ptr<const Field> replaced;  // its result may be of several runs
    std::vector<Run> runs;
    std::vector<richtext::Mark> marks = std::exchange(paragraph->marks, {});
    auto mark = marks.begin();
    std::size_t was = 0, is = 0;  // bytes of the paragraph's text, before and after the repair
    for (Run& run : paragraph->runs) {
      const std::size_t end = was + run.text.size();
      const bool dropped = run.field != nullptr && run.field == replaced;
      const std::string code = run.field == nullptr || dropped ? "" : CodeFor(*run.field);
      for (; mark != marks.end() && mark->offset < end; ++mark) {
        const bool inside = !dropped && code.empty();
        paragraph->marks.push_back({inside ? is + mark->offset - was : is, mark->source});
      }
      was = end;
      if (dropped) continue;
      replaced = nullptr;
      if (!code.empty()) {
        replaced = run.field;
        run.text = code;
        run.object = std::monostate();
        run.field = run.field->outer;
      }
      is += run.text.size();
      runs.push_back(std::move(run));
    }
    for (; mark != marks.end(); ++mark) paragraph->marks.push_back({is, mark->source});
    paragraph->runs = std::move(runs);
  }

  std::string CodeFor(const Field& field) {
    const std::string name = MergeFieldName(field.instruction);
    std::string code = name.empty() ? "" : CodeForLookalike(name, kind_);
    if (!code.empty()) repairs_.push_back("the merge field \"" + name + "\" is now " + code);
    return code;
  }

  TemplateKind kind_;
  std::vector<std::string>& repairs_;
};

// A header's or footer's source after a change of its blocks; the letter's numbers of fonts and
// colours hold in it.
std::string SourceOf(const HeadGroup& group, Document letter) {
  letter.head_groups.clear();
  letter.info.clear();
  letter.title.clear();
  letter.blocks = group.blocks;
  constexpr std::string_view kBeforeText = "\\viewkind4\\uc1";
  const std::string alone = richtext::WriteRtf(letter);
  const std::size_t text = alone.find(kBeforeText) + kBeforeText.size();
  return "{\\" + group.word + "\\plain" + alone.substr(text, alone.rfind('}') - text) + "}";
}

void RepairMergeFields(RichTextBox* letter, TemplateKind kind, std::vector<std::string>* repairs) {
  Document document = letter->Document();
  const std::size_t before = repairs->size();
  MergeFieldRepair repair(kind, repairs);
  std::vector<std::vector<HeadGroup>*> heads{&document.head_groups};
  for (richtext::Section* section : richtext::OwnSections(&document))
    heads.push_back(&section->head_groups);
  for (std::vector<HeadGroup>* const groups : heads) {
    for (HeadGroup& group : *groups) {
      const std::size_t already = repairs->size();
      repair.Repair(&group.blocks);
      if (repairs->size() != already) group.source = SourceOf(group, document);
    }
  }
  repair.Repair(&document.blocks);
  if (repairs->size() == before) return;
  letter->SetTextRTF(richtext::WriteRtf(richtext::ReadRtf(richtext::WriteRtf(document))));
}

}  // namespace

std::vector<std::string> RepairCodes(RichTextBox* letter, TemplateKind kind, Date today) {
  std::vector<std::string> repairs;
  RepairMergeFields(letter, kind, &repairs);
  const std::vector<TemplateFinding> findings = LintTemplate(*letter, kind, today);
  std::vector<std::string> retyped;
  // From the end, so that the positions before stay true.
  for (auto finding = findings.rbegin(); finding != findings.rend(); ++finding) {
    if (finding->replacement.empty() || finding->length == 0) continue;
    letter->Select(finding->position, finding->length);
    const std::string written = letter->SelText();
    letter->SetSelText(finding->replacement);
    const std::string where = "line " + std::to_string(finding->line) + ": ";
    retyped.push_back(written == finding->replacement
                          ? where + written + " has one format now"
                          : where + written + " is now " + finding->replacement);
  }
  std::move(retyped.rbegin(), retyped.rend(), std::back_inserter(repairs));
  return repairs;
}

}  // namespace tenora
