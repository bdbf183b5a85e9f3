// The insert menus and the insert combo box: the merge codes for the letter in front, and the
// custom fields found in the database.
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
  struct Inserts {
    // Receives the name to pass to InsertItem.
    std::function<void(const std::string& item)> item;
    // Receives the beginning and end to pass to InsertForm.
    std::function<void(const std::string& open, const std::string& close)> form;
  };
  InsertMenus(QMenu& menu, QComboBox& combo, QAction& format, Inserts inserts);

  // The field codes by parent: tenants', properties', owners'.
  void FillCustomMenus(const CustomFieldCodes& codes);
  // Shows the list, and its name in the captions "<list> Format" and "Insert <list>".
  void DisplayInsertMenu(TemplateKind list, const std::string& cheque_word);
  // Disabled while no letter is open.
  void SetEnabled(bool enabled);

 private:
  QMenu* AddCodes(const char* name, std::span<const MergeCode> codes);
  QMenu* AddCustom(const char* name, const QString& title);
  // Conditions, and what can be repeated with its columns and sums.
  QMenu* AddForms(const char* name, TemplateKind kind);
  void AddItem(QMenu* menu, std::string_view item);
  void AddForm(QMenu* menu, const QString& caption, const std::string& open,
               const std::string& close);
  void FillCustom(QMenu* menu, const std::set<std::string>& codes, std::string_view prefix);
  // Shows those that have entries and belong to the current list.
  void ShowCustomMenus();

  QMenu& menu_;
  QComboBox& combo_;
  QAction& format_;
  const Inserts inserts_;
  QMenu* tenant_codes_;  // mnuInsertItem
  QMenu* cheque_codes_;  // mnuInsertItemCheque
  QMenu* owner_codes_;   // mnuInsertItemOwner
  QMenu* tenant_forms_;  // mnuInsertForms
  QMenu* owner_forms_;   // mnuInsertFormsOwner
  QMenu* tenant_custom_;
  QMenu* property_custom_;
  QMenu* owner_custom_;
  TemplateKind list_ = TemplateKind::kTenant;
  std::string list_name_;
};

}  // namespace tenora
