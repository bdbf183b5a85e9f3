#include "ui/dialogs/recipient_columns.h"

#include <QActionGroup>
#include <QHeaderView>
#include <algorithm>
#include <utility>

namespace tenora {
namespace {

using Column = RecipientLayout::Column;

constexpr int kNarrowest = 30;  // pixels

bool Has(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

// As a menu shows it: a "&" in the name of a field is no mnemonic.
QString Caption(const std::string& name) {
  return QString::fromStdString(name).replace(QStringLiteral("&"), QStringLiteral("&&"));
}

}  // namespace

RecipientColumns::RecipientColumns(RecipientView& view, RecipientModel& model, Dialogs& dialogs,
                                   std::vector<std::string> usual)
    : view_(view), model_(model), dialogs_(dialogs), usual_(std::move(usual)) {
  QHeaderView* header = view.header();
  header->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header, &QHeaderView::customContextMenuRequested, this,
          [this, header](const QPoint& at) { menu_.popup(header->mapToGlobal(at)); });
  connect(header, &QHeaderView::sortIndicatorChanged, this,
          [this](int section, Qt::SortOrder order) {
            if (marking_) return;
            if (section < 0) return Sort(std::nullopt, false);
            Sort(NameOf(section), order == Qt::DescendingOrder);
          });
  connect(&menu_, &QMenu::aboutToShow, this, &RecipientColumns::FillMenu);
}

std::string RecipientColumns::NameOf(int section) const {
  if (section <= 0) return {};
  return model_.Columns().at(static_cast<std::size_t>(section - 1));
}

void RecipientColumns::Restore(const RecipientLayout& layout, const FactNames& names) {
  const auto known = [&](const std::string& name) {
    return names.Find(name) != nullptr || names.IsField(name);
  };
  std::vector<Column> columns;
  std::vector<std::string> taken;
  for (const Column& column : layout.columns) {
    if ((!column.name.empty() && !known(column.name)) || Has(taken, column.name)) continue;
    taken.push_back(column.name);
    columns.push_back(column);
  }
  if (columns.empty()) {
    for (const std::string& name : usual_) columns.push_back({.name = name});
  }
  sorted_by_ = layout.sorted_by;
  descending_ = layout.descending;
  if (sorted_by_ && !sorted_by_->empty() && !Has(taken, *sorted_by_)) sorted_by_.reset();
  Show(columns);
}

RecipientLayout RecipientColumns::Layout() const {
  RecipientLayout layout;
  const QHeaderView* header = view_.header();
  for (int place = 0; place < header->count(); ++place) {
    const int section = header->logicalIndex(place);
    layout.columns.push_back({NameOf(section), header->sectionSize(section)});
  }
  layout.sorted_by = sorted_by_;
  layout.descending = descending_;
  return layout;
}

void RecipientColumns::Show(const std::vector<Column>& columns) {
  QHeaderView* header = view_.header();
  for (int section = 0; section < header->count(); ++section) {
    header->moveSection(header->visualIndex(section), section);
  }
  std::vector<std::string> names;
  std::vector<int> widths{UsualWidth({})};
  for (const Column& column : columns) {
    const int width = column.width < kNarrowest ? UsualWidth(column.name) : column.width;
    if (column.name.empty()) {
      widths.front() = width;
    } else {
      names.push_back(column.name);
      widths.push_back(width);
    }
  }
  const bool marking = std::exchange(marking_, true);
  model_.SetColumns(std::move(names));
  for (int section = 0; section < header->count(); ++section) {
    header->resizeSection(section, widths[static_cast<std::size_t>(section)]);
  }
  marking_ = marking;
  MarkSorted();
  emit ColumnsChanged();
}

int RecipientColumns::UsualWidth(const std::string& name) const {
  const QFontMetrics metrics = view_.fontMetrics();
  constexpr int kAround = 28;  // pixels: margins, and the mark of the order
  if (name.empty()) {
    return metrics.horizontalAdvance(QStringLiteral("Christopher Smith (P00012)")) + 2 * kAround;
  }
  const FactNames::Name* known = names_ ? names_->Find(name) : nullptr;
  const bool text =
      known == nullptr || known->type == FactType::kText || known->type == FactType::kField;
  const QString sample = text ? QStringLiteral("tenant@example.nz") : QStringLiteral("$1,234.00");
  return kAround + std::max(metrics.horizontalAdvance(sample),
                            metrics.horizontalAdvance(QString::fromStdString(name)));
}

void RecipientColumns::ShowFact(const std::string& name, bool shown) {
  std::vector<Column> columns = Layout().columns;
  if (shown) {
    columns.push_back({.name = name});
  } else {
    std::erase_if(columns, [&](const Column& column) { return column.name == name; });
    if (sorted_by_ == name) Sort(std::nullopt, false);
  }
  Show(columns);
}

void RecipientColumns::ShowOther() {
  std::vector<std::string> others;
  for (const FactNames::Name& name : names_->Names()) {
    if (!Has(model_.Columns(), name.name)) others.push_back(name.name);
  }
  if (others.empty()) return;
  if (const auto chosen = dialogs_.Choose("Column", others, 0)) ShowFact(others[*chosen], true);
}

void RecipientColumns::FillMenu() {
  menu_.clear();
  const auto add = [&](const std::string& name) {
    const bool shown = Has(model_.Columns(), name);
    QAction* action = menu_.addAction(Caption(name));
    action->setCheckable(true);
    action->setChecked(shown);
    connect(action, &QAction::triggered, this, [this, name, shown] { ShowFact(name, !shown); });
  };
  for (const std::string& name : usual_) add(name);
  for (const std::string& name : model_.Columns()) {
    if (!Has(usual_, name)) add(name);
  }
  menu_.addSeparator();
  connect(menu_.addAction(tr("&Other Column…")), &QAction::triggered, this,
          &RecipientColumns::ShowOther);
  connect(menu_.addAction(tr("&Usual Columns")), &QAction::triggered, this, [this] {
    std::vector<Column> columns;
    for (const std::string& name : usual_) columns.push_back({.name = name});
    if (sorted_by_ && !sorted_by_->empty() && !Has(usual_, *sorted_by_)) Sort(std::nullopt, false);
    Show(columns);
  });
  FillSortMenu(*menu_.addMenu(tr("&Sort By")));
}

void RecipientColumns::FillSortMenu(QMenu& menu) {
  auto* group = new QActionGroup(&menu);
  const auto add = [&](const QString& caption, const std::optional<std::string>& name) {
    QAction* action = group->addAction(menu.addAction(caption));
    action->setCheckable(true);
    action->setChecked(sorted_by_ == name);
    connect(action, &QAction::triggered, this,
            [this, name] { Sort(name, name.has_value() && descending_); });
  };
  add(tr("&List Order"), std::nullopt);
  add(tr("Recipient"), std::string());
  for (const std::string& name : model_.Columns()) add(Caption(name), name);
  menu.addSeparator();
  QAction* down = menu.addAction(tr("&Descending"));
  down->setCheckable(true);
  down->setChecked(descending_);
  down->setEnabled(sorted_by_.has_value());
  connect(down, &QAction::triggered, this, [this] { Sort(sorted_by_, !descending_); });
}

void RecipientColumns::Sort(std::optional<std::string> name, bool descending) {
  sorted_by_ = std::move(name);
  descending_ = descending;
  MarkSorted();
  emit OrderChanged();
}

void RecipientColumns::MarkSorted() {
  int section = -1;
  for (int i = 0; sorted_by_ && i < view_.header()->count(); ++i) {
    if (NameOf(i) == *sorted_by_) section = i;
  }
  const bool marking = std::exchange(marking_, true);
  view_.header()->setSortIndicator(section, descending_ ? Qt::DescendingOrder : Qt::AscendingOrder);
  marking_ = marking;
}

}  // namespace tenora
