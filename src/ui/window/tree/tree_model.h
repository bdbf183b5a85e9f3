// What the template tree shows: the groups of templates, and the tenants and owners with the
// letters saved for them. Letters are listed when their recipient is first opened, so that a tree
// of thousands costs no more than their names.
#pragma once

#include <QAbstractItemModel>
#include <QIcon>
#include <QString>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "rental/session.h"

namespace tenora {

class TreeModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  enum class Type { kGroup, kTemplate, kClosedFold, kTenant, kOwner, kLetter };

  // What an entry represents; paths and names in the form the letter window needs.
  struct Entry {
    Type type = Type::kGroup;
    QString name;                // without counts: "Templates", "Rent review", "Smith J"
    std::string kind;            // of a template or letter: its letter kind; of a group: its name
    std::string folder;          // the sub-folder of the data folder
    std::string earlier_folder;  // of a recipient: where version 1.0 saved, if it was another one
    std::string recipient;       // the recipient's name; of a template its folder
    std::string tenant_code;     // of a tenant and of a tenant's letter
    std::string address;         // the same: of the property
    std::filesystem::path path;  // of a template or letter: its file
    bool closed = false;
  };

  // The number to show after the name, if any: a group counts all its entries, closed ones
  // included.
  static constexpr int kCountRole = Qt::UserRole + 1;

  explicit TreeModel(Session& session, QObject* parent = nullptr);
  ~TreeModel() override;

  // The three top groups, empty.
  void MakeTopGroups();
  // Reloads everything from the folders and caches. Remaining entries keep their place in the view.
  void Refresh();
  // Whether the next Refresh lists tenants and owners: not while their database is not there,
  // though the caches still have them for open letters.
  void ListRecipients(bool listed) { recipients_listed_ = listed; }

  const Entry* EntryAt(const QModelIndex& index) const;  // null for the invisible root
  // A key for the entry that is stable between runs: "Tenants/T00001". Empty for the root.
  QString KeyOf(const QModelIndex& index) const;
  QModelIndex IndexOfKey(const QString& key) const;
  QModelIndex Group(const QString& name) const;
  // The letter with this file below an entry; loads its recipient's letters.
  QModelIndex FindFile(const QModelIndex& below, const std::filesystem::path& path);
  // A recipient whose letters have not been read yet, and the sub-folders of the data folder that
  // hold them.
  struct Unlisted {
    QString key;
    std::string name;
    std::string address;  // of a tenant's property
    std::vector<std::string> folders;
  };
  std::vector<Unlisted> UnlistedRecipients() const;
  std::filesystem::path data_folder() const { return session_.database.DataFolder(); }
  // The folders whose files are shown now.
  std::vector<std::filesystem::path> ShownFolders() const;

  // The sign of the entry that folds closed tenants: "+ <Closed Tenants>" closed, "- <Closed
  // Tenants>" open.
  void SetOpen(const QModelIndex& index, bool open);
  void SetAllClosed();

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  bool canFetchMore(const QModelIndex& parent) const override;
  void fetchMore(const QModelIndex& parent) override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

 private:
  struct Node;
  struct Icons {
    QIcon group, letter_template, closed, tenant, owner, letter;
  };
  using Nodes = std::vector<std::unique_ptr<Node>>;

  void AddUnlisted(const Node& below, std::vector<Unlisted>& unlisted) const;
  Node* NodeAt(const QModelIndex& index) const;
  QModelIndex IndexOf(const Node& node) const;
  // The letter files of a folder; everything but name and path is as in `like`.
  Nodes MakeFiles(const Entry& like, const std::string& folder) const;
  static std::unique_ptr<Node> MakeRecipient(Type type, std::string_view kind,
                                             const std::string& name, const std::string& code,
                                             bool closed);
  Nodes MakeTemplates(std::string_view kind) const;
  Nodes MakeTenants() const;
  Nodes MakeOwners() const;
  Nodes MakeLetters(const Entry& recipient) const;
  std::unique_ptr<Node> MakeGroup(std::string_view name, Nodes children) const;
  Nodes Fold(Nodes open, Nodes closed, std::string_view fold_name) const;
  // Updates the children of a node to the new list, signalling only insertions and removals.
  void Replace(Node& parent, Nodes wanted);
  void RemoveUnwanted(Node& parent, const Nodes& wanted);
  static bool SameOrder(const Node& parent, const Nodes& wanted);
  static void Number(Node& parent, bool deep);
  void ReadFolders();
  // The entry's folders that exist.
  std::vector<std::string> FoldersOf(const Entry& entry) const;
  static int GroupCount(const Node& group);

  const QIcon& IconOf(Type type) const;

  Session& session_;
  const Icons icons_;
  std::unique_ptr<Node> root_;
  std::set<std::string> folders_;  // sub-folders of the data folder when it was last read
  bool recipients_listed_ = true;
};

}  // namespace tenora
