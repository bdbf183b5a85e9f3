// The insert menus and the insert combo box: the merge codes of the list that fits the letter in
// front, and the custom fields found in the database.
#pragma once

#include <QComboBox>
#include <QMenu>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "letters/custom_field_codes.h"
#include "merge/merge_codes.h"

namespace tenora {

class InsertMenus {
 public:
  // `insert` is given what InsertItem takes.
  InsertMenus(QMenu& menu, QComboBox& combo, QAction& format,
              std::function<void(const std::string& item)> insert);

  // The field codes by parent: tenants', properties', owners'.
  void FillCustomMenus(const CustomFieldCodes& codes);
  // Shows the list, and its name in the captions "<list> Format" and "Insert <list>".
  void DisplayInsertMenu(TemplateKind list, const std::string& cheque_word);
  // Without a letter there is nothing to insert into.
  void SetEnabled(bool enabled);

 private:
  QMenu* AddCodes(const char* name, std::span<const MergeCode> codes);
  QMenu* AddCustom(const char* name, const QString& title);
  void FillCustom(QMenu* menu, const std::set<std::string>& codes, std::string_view prefix);
  // Those that have entries and fit the list.
  void ShowCustomMenus();

  QMenu& menu_;
  QComboBox& combo_;
  QAction& format_;
  std::function<void(const std::string&)> insert_;
  QMenu* tenant_codes_;  // mnuInsertItem
  QMenu* cheque_codes_;  // mnuInsertItemCheque
  QMenu* owner_codes_;   // mnuInsertItemOwner
  QMenu* tenant_custom_;
  QMenu* property_custom_;
  QMenu* owner_custom_;
  TemplateKind list_ = TemplateKind::kTenant;
  std::string list_name_;
};

}  // namespace tenora
