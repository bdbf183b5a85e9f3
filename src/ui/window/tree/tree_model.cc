#include "ui/window/tree/tree_model.h"

#include <QFont>
#include <QSet>
#include <algorithm>
#include <functional>
#include <system_error>
#include <utility>

#include "letters/file_names.h"
#include "letters/recipients.h"
#include "letters/template_library.h"
#include "platform/runtime/text.h"
#include "ui/window/appearance/icons.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTenants = "Tenants";
constexpr const char* kOwners = "Owners";
constexpr const char* kClosedTenants = "<Closed Tenants>";
constexpr const char* kClosedOwners = "<Closed Owners>";

QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool IsRecipient(TreeModel::Type type) {
  return type == TreeModel::Type::kTenant || type == TreeModel::Type::kOwner;
}

}  // namespace

struct TreeModel::Node {
  Entry entry;
  QString key;  // among its siblings
  Node* parent = nullptr;
  int row = 0;
  Nodes children;
  bool listed = true;  // false: a recipient whose letters have not been read yet
  bool open = false;
};

TreeModel::TreeModel(Session& session, QObject* parent)
    : QAbstractItemModel(parent),
      session_(session),
      icons_{LineIcon("group"),  LineIcon("template"), LineIcon("closed"),
             LineIcon("tenant"), LineIcon("owner"),    LineIcon("letter")},
      root_(std::make_unique<Node>()) {}

TreeModel::~TreeModel() = default;

void TreeModel::MakeTopGroups() {
  Nodes groups;
  for (const std::string_view name :
       {kTemplates, std::string_view(kTenants), std::string_view(kOwners)}) {
    groups.push_back(MakeGroup(name, {}));
  }
  Replace(*root_, std::move(groups));
}

void TreeModel::Refresh() {
  ReadFolders();
  Nodes groups;
  groups.push_back(MakeGroup(kTemplates, MakeTemplates(kTemplates)));
  groups.push_back(MakeGroup(kOwnerTemplates, MakeTemplates(kOwnerTemplates)));
  groups.push_back(MakeGroup(session_.cheque_word, MakeTemplates(session_.cheque_word)));
  groups.push_back(MakeGroup(kTenants, recipients_listed_ ? MakeTenants() : Nodes()));
  groups.push_back(MakeGroup(kOwners, recipients_listed_ ? MakeOwners() : Nodes()));
  Replace(*root_, std::move(groups));
}

void TreeModel::ReadFolders() {
  folders_.clear();
  std::error_code error;
  for (fs::directory_iterator entry(session_.database.DataFolder(), error), end;
       !error && entry != end; entry.increment(error)) {
    std::error_code unknown;
    if (entry->is_directory(unknown)) folders_.insert(entry->path().filename().string());
  }
}

std::unique_ptr<TreeModel::Node> TreeModel::MakeGroup(std::string_view name, Nodes children) const {
  auto group = std::make_unique<Node>();
  group->entry.name = group->key = ToQt(name);
  group->entry.kind = group->entry.folder = name;
  group->children = std::move(children);
  return group;
}

std::vector<std::string> TreeModel::FoldersOf(const Entry& entry) const {
  std::vector<std::string> found;
  for (const std::string& folder : {entry.folder, entry.earlier_folder}) {
    if (folders_.contains(folder)) found.push_back(folder);
  }
  return found;
}

TreeModel::Nodes TreeModel::MakeFiles(const Entry& like, const std::string& folder) const {
  const TemplateLibrary library(session_.database.DataFolder());
  Nodes result;
  for (const std::string& name : library.Names(folder)) {
    auto node = std::make_unique<Node>();
    node->entry = like;
    node->entry.name = node->key = ToQt(name);
    node->entry.path = library.PathOf(folder, name);
    result.push_back(std::move(node));
  }
  return result;
}

TreeModel::Nodes TreeModel::MakeTemplates(std::string_view kind) const {
  Entry like;
  like.type = Type::kTemplate;
  like.kind = like.folder = like.recipient = kind;
  return MakeFiles(like, like.folder);
}

TreeModel::Nodes TreeModel::MakeLetters(const Entry& recipient) const {
  Entry like = recipient;
  like.type = Type::kLetter;
  Nodes letters = MakeFiles(like, recipient.folder);
  if (recipient.earlier_folder.empty()) return letters;
  // Both folders may hold a letter of the same name.
  for (std::unique_ptr<Node>& letter : MakeFiles(like, recipient.earlier_folder)) {
    letter->key = ToQt(recipient.earlier_folder) + QLatin1Char('/') + letter->key;
    letters.push_back(std::move(letter));
  }
  std::ranges::stable_sort(letters, {}, [](const std::unique_ptr<Node>& letter) {
    return ToUpper(letter->entry.path.stem().string());
  });
  return letters;
}

std::unique_ptr<TreeModel::Node> TreeModel::MakeRecipient(Type type, std::string_view kind,
                                                          const std::string& name,
                                                          const std::string& code, bool closed) {
  auto node = std::make_unique<Node>();
  node->entry.type = type;
  node->entry.name = ToQt(name);
  node->entry.kind = kind;
  node->entry.folder = RecipientFolderName(name);
  node->entry.earlier_folder = EarlierRecipientFolderName(name);
  node->entry.recipient = name;
  node->entry.closed = closed;
  node->key = ToQt(code);
  node->listed = false;
  return node;
}

TreeModel::Nodes TreeModel::MakeTenants() const {
  Nodes open, closed;
  for (const TenantRecord& tenant : session_.caches.Tenants) {
    auto node = MakeRecipient(Type::kTenant, kTenantLetter, tenant.KeyName, tenant.Reference,
                              tenant.Closed);
    node->entry.tenant_code = tenant.Reference;
    node->entry.address = PropertyAddressOf(tenant);
    (tenant.Closed ? closed : open).push_back(std::move(node));
  }
  return Fold(std::move(open), std::move(closed), kClosedTenants);
}

TreeModel::Nodes TreeModel::MakeOwners() const {
  Nodes open, closed;
  for (const OwnerRecord& owner : session_.caches.Owners) {
    auto node =
        MakeRecipient(Type::kOwner, kOwnerLetter, owner.Name, owner.Code, owner.ClosedStatus);
    (owner.ClosedStatus ? closed : open).push_back(std::move(node));
  }
  return Fold(std::move(open), std::move(closed), kClosedOwners);
}

TreeModel::Nodes TreeModel::Fold(Nodes open, Nodes closed, std::string_view fold_name) const {
  if (closed.empty()) return open;
  auto fold = std::make_unique<Node>();
  fold->entry.type = Type::kClosedFold;
  fold->entry.name = fold->key = ToQt(fold_name);
  fold->entry.closed = true;
  fold->children = std::move(closed);
  open.insert(open.begin(), std::move(fold));
  return open;
}

void TreeModel::Number(Node& parent, bool deep) {
  for (std::size_t i = 0; i < parent.children.size(); ++i) {
    Node& child = *parent.children[i];
    child.row = static_cast<int>(i);
    child.parent = &parent;
    if (deep) Number(child, true);
  }
}

void TreeModel::Replace(Node& parent, Nodes wanted) {
  const QModelIndex at = IndexOf(parent);
  RemoveUnwanted(parent, wanted);
  if (!SameOrder(parent, wanted) && !parent.children.empty()) {
    beginRemoveRows(at, 0, static_cast<int>(parent.children.size()) - 1);
    parent.children.clear();
    endRemoveRows();
  }
  if (parent.children.empty()) {
    if (wanted.empty()) return;
    beginInsertRows(at, 0, static_cast<int>(wanted.size()) - 1);
    parent.children = std::move(wanted);
    Number(parent, true);
    endInsertRows();
    return;
  }
  for (std::size_t row = 0; row < wanted.size(); ++row) {
    if (row >= parent.children.size() || parent.children[row]->key != wanted[row]->key) {
      beginInsertRows(at, static_cast<int>(row), static_cast<int>(row));
      parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(row),
                             std::move(wanted[row]));
      Number(parent, false);
      Number(*parent.children[row], true);
      endInsertRows();
      continue;
    }
    Node& node = *parent.children[row];
    node.entry = wanted[row]->entry;
    if (!IsRecipient(node.entry.type)) {
      Replace(node, std::move(wanted[row]->children));
    } else if (node.listed) {
      Replace(node, MakeLetters(node.entry));
    }
  }
  emit dataChanged(index(0, 0, at), index(rowCount(at) - 1, 0, at));
}

void TreeModel::RemoveUnwanted(Node& parent, const Nodes& wanted) {
  QSet<QString> keys;
  for (const auto& node : wanted) keys.insert(node->key);
  const QModelIndex at = IndexOf(parent);
  for (int row = rowCount(at) - 1; row >= 0; --row) {
    if (keys.contains(parent.children[static_cast<std::size_t>(row)]->key)) continue;
    beginRemoveRows(at, row, row);
    parent.children.erase(parent.children.begin() + row);
    Number(parent, false);
    endRemoveRows();
  }
}

// Whether the entries that are present appear in the wanted list in their present order.
bool TreeModel::SameOrder(const Node& parent, const Nodes& wanted) {
  std::size_t found = 0;
  for (const auto& node : wanted) {
    if (found < parent.children.size() && node->key == parent.children[found]->key) ++found;
  }
  return found == parent.children.size();
}

TreeModel::Node* TreeModel::NodeAt(const QModelIndex& index) const {
  return index.isValid() ? static_cast<Node*>(index.internalPointer()) : root_.get();
}

QModelIndex TreeModel::IndexOf(const Node& node) const {
  if (&node == root_.get()) return {};
  return createIndex(node.row, 0, const_cast<Node*>(&node));
}

const TreeModel::Entry* TreeModel::EntryAt(const QModelIndex& index) const {
  return index.isValid() ? &NodeAt(index)->entry : nullptr;
}

QString TreeModel::KeyOf(const QModelIndex& index) const {
  QString key;
  for (const Node* node = NodeAt(index); node != root_.get(); node = node->parent) {
    key = key.isEmpty() ? node->key : node->key + QLatin1Char('/') + key;
  }
  return key;
}

QModelIndex TreeModel::IndexOfKey(const QString& key) const {
  const Node* node = root_.get();
  QString rest = key;
  while (!rest.isEmpty()) {
    const auto found = std::ranges::find_if(node->children, [&](const auto& child) {
      return rest == child->key || rest.startsWith(child->key + QLatin1Char('/'));
    });
    if (found == node->children.end()) return {};
    node = found->get();
    rest = rest.mid(node->key.size() + 1);
  }
  return IndexOf(*node);
}

QModelIndex TreeModel::Group(const QString& name) const {
  for (const auto& group : root_->children) {
    if (group->entry.name == name) return IndexOf(*group);
  }
  return {};
}

QModelIndex TreeModel::FindFile(const QModelIndex& below, const fs::path& path) {
  const Entry& entry = NodeAt(below)->entry;
  if (entry.path == path) return below;
  if (IsRecipient(entry.type)) {
    const std::string folder = path.parent_path().filename().string();
    if (folder != entry.folder && folder != entry.earlier_folder) return {};
    fetchMore(below);
  }
  for (int row = 0; row < rowCount(below); ++row) {
    const QModelIndex found = FindFile(index(row, 0, below), path);
    if (found.isValid()) return found;
  }
  return {};
}

std::vector<TreeModel::Unlisted> TreeModel::UnlistedRecipients() const {
  std::vector<Unlisted> unlisted;
  AddUnlisted(*root_, unlisted);
  return unlisted;
}

void TreeModel::AddUnlisted(const Node& below, std::vector<Unlisted>& unlisted) const {
  for (const auto& child : below.children) {
    if (child->listed) {
      AddUnlisted(*child, unlisted);
      continue;
    }
    std::vector<std::string> folders = FoldersOf(child->entry);
    if (folders.empty()) continue;
    unlisted.push_back(
        {KeyOf(IndexOf(*child)), child->entry.recipient, child->entry.address, std::move(folders)});
  }
}

std::vector<fs::path> TreeModel::ShownFolders() const {
  const fs::path data_folder = session_.database.DataFolder();
  std::vector<fs::path> folders{data_folder};
  const auto add = [&](const Node& node) {
    if (!node.open) return;
    for (const std::string& folder : FoldersOf(node.entry)) folders.push_back(data_folder / folder);
  };
  for (const auto& group : root_->children) {
    add(*group);
    for (const auto& child : group->children) {
      add(*child);
      for (const auto& closed : child->children) add(*closed);
    }
  }
  return folders;
}

void TreeModel::SetOpen(const QModelIndex& index, bool open) {
  if (!index.isValid()) return;
  NodeAt(index)->open = open;
  emit dataChanged(index, index);
}

void TreeModel::SetAllClosed() {
  const std::function<void(Node&)> close = [&](Node& node) {
    if (std::exchange(node.open, false)) emit dataChanged(IndexOf(node), IndexOf(node));
    for (const auto& child : node.children) close(*child);
  };
  close(*root_);
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
  const Node* node = NodeAt(parent);
  if (column != 0 || row < 0 || row >= static_cast<int>(node->children.size())) return {};
  return createIndex(row, column, node->children[static_cast<std::size_t>(row)].get());
}

QModelIndex TreeModel::parent(const QModelIndex& child) const {
  return child.isValid() ? IndexOf(*NodeAt(child)->parent) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const {
  return static_cast<int>(NodeAt(parent)->children.size());
}

int TreeModel::columnCount(const QModelIndex&) const { return 1; }

bool TreeModel::hasChildren(const QModelIndex& parent) const {
  return rowCount(parent) > 0 || canFetchMore(parent);
}

bool TreeModel::canFetchMore(const QModelIndex& parent) const {
  const Node* node = NodeAt(parent);
  return !node->listed && !FoldersOf(node->entry).empty();
}

void TreeModel::fetchMore(const QModelIndex& parent) {
  Node* node = NodeAt(parent);
  if (node->listed) return;
  node->listed = true;
  Replace(*node, MakeLetters(node->entry));
}

const QIcon& TreeModel::IconOf(Type type) const {
  switch (type) {
    case Type::kTemplate:
      return icons_.letter_template;
    case Type::kClosedFold:
      return icons_.closed;
    case Type::kTenant:
      return icons_.tenant;
    case Type::kOwner:
      return icons_.owner;
    case Type::kLetter:
      return icons_.letter;
    default:
      return icons_.group;
  }
}

int TreeModel::GroupCount(const Node& group) {
  std::size_t count = 0;
  for (const auto& child : group.children) {
    count += child->entry.type == Type::kClosedFold ? child->children.size() : 1;
  }
  return static_cast<int>(count);
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Node& node = *NodeAt(index);
  const Entry& entry = node.entry;
  const qsizetype count = static_cast<qsizetype>(node.children.size());
  switch (role) {
    case Qt::DisplayRole:
      if (entry.type == Type::kClosedFold) {
        return (node.open ? QStringLiteral("- ") : QStringLiteral("+ ")) + entry.name;
      }
      return entry.name;
    case Qt::DecorationRole:
      return IconOf(entry.type);
    case Qt::FontRole: {
      QFont font;
      font.setBold(entry.type == Type::kGroup);
      return font;
    }
    case Qt::ToolTipRole:
      return entry.path.empty() ? QVariant() : ToQt(entry.path.string());
    case Qt::AccessibleDescriptionRole:
      return count > 0 ? tr("%n entries", nullptr, static_cast<int>(count)) : QVariant();
    case kCountRole:
      if (entry.type == Type::kGroup) return GroupCount(node);
      return entry.type == Type::kClosedFold || (node.listed && count > 0) ? QVariant(count)
                                                                           : QVariant();
    default:
      return {};
  }
}

}  // namespace tenora
