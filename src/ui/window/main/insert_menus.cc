#include "ui/window/main/insert_menus.h"

#include <QCoreApplication>
#include <QLineEdit>

#include "merge/form_names.h"
#include "ui/window/letter/insert_list.h"

namespace tenora {
namespace {

QString Tr(const char* text) { return QCoreApplication::translate("InsertMenus", text); }

QString ToQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// A caption in which no "&" makes a mnemonic.
QString Caption(std::string_view text) { return ToQt(text).replace("&", "&&"); }

}  // namespace

InsertMenus::InsertMenus(QMenu& menu, QComboBox& combo, QAction& format, Inserts inserts)
    : menu_(menu), combo_(combo), format_(format), inserts_(std::move(inserts)) {
  tenant_codes_ = AddCodes("mnuInsertItem", MergeCodesOf(TemplateKind::kTenant));
  cheque_codes_ = AddCodes("mnuInsertItemCheque", MergeCodesOf(TemplateKind::kCheque));
  owner_codes_ = AddCodes("mnuInsertItemOwner", MergeCodesOf(TemplateKind::kOwner));
  tenant_forms_ = AddForms("mnuInsertForms", TemplateKind::kTenant);
  owner_forms_ = AddForms("mnuInsertFormsOwner", TemplateKind::kOwner);
  tenant_custom_ = AddCustom("mnuTenantCustom", Tr("&Tenant Custom Fields"));
  property_custom_ = AddCustom("mnuPropertyCustom", Tr("&Property Custom Fields"));
  owner_custom_ = AddCustom("mnuOwnerCustom", Tr("&Owner Custom Fields"));
  QObject::connect(&combo_, &QComboBox::activated, &combo_, [this](int row) {
    if (row < 0) return;
    const std::string item = combo_.itemText(row).toStdString();
    combo_.setCurrentIndex(-1);  // so that the same entry can be chosen again
    inserts_.item(item);
  });
}

QMenu* InsertMenus::AddCodes(const char* name, std::span<const MergeCode> codes) {
  QMenu* menu = menu_.addMenu(QString());
  menu->setObjectName(QLatin1String(name));
  for (const MergeCode& code : codes) {
    AddItem(menu, code.name);
  }
  return menu;
}

void InsertMenus::AddItem(QMenu* menu, std::string_view item) {
  QAction* action = menu->addAction(Caption(item));
  QObject::connect(action, &QAction::triggered, menu,
                   [this, text = std::string(item)] { inserts_.item(text); });
}

void InsertMenus::AddForm(QMenu* menu, const QString& caption, const std::string& open,
                          const std::string& close) {
  QAction* action = menu->addAction(caption);
  QObject::connect(action, &QAction::triggered, menu,
                   [this, open, close] { inserts_.form(open, close); });
}

QMenu* InsertMenus::AddForms(const char* name, TemplateKind kind) {
  QMenu* menu = menu_.addMenu(Tr("Conditions and Lists"));
  menu->setObjectName(QLatin1String(name));
  const std::string condition =
      kind == TemplateKind::kTenant ? "<<If Balance Owing > 0>>" : "<<If Arrears > 0>>";
  AddForm(menu, Tr("If …"), condition, "<<End If>>");
  AddForm(menu, Tr("If … Else …"), condition, "<<Else>><<End If>>");
  menu->addSeparator();
  for (const Collection& collection : Collections()) {
    if (!collection.of_tenancy && kind != TemplateKind::kOwner) continue;
    const std::string each = "Each " + std::string(collection.name);
    QMenu* const rows = menu->addMenu(Caption(each));
    AddForm(rows, Caption(each + " …"), "<<" + each + ">>", "<<End Each>>");
    rows->addSeparator();
    for (const std::string_view column : collection.Names().All()) AddItem(rows, column);
    if (collection.kind == CollectionKind::kLedgerEntry) AddItem(rows, kOpeningBalance);
    rows->addSeparator();
    AddItem(rows, collection.CountName());
    for (const std::string& total : collection.TotalNames()) AddItem(rows, total);
  }
  menu->addSeparator();
  for (const std::string_view fact : PrintedFacts(kind)) AddItem(menu, fact);
  return menu;
}

QMenu* InsertMenus::AddCustom(const char* name, const QString& title) {
  QMenu* menu = menu_.addMenu(title);
  menu->setObjectName(QLatin1String(name));
  menu->menuAction()->setVisible(false);
  return menu;
}

void InsertMenus::FillCustomMenus(const CustomFieldCodes& codes) {
  FillCustom(tenant_custom_, codes.tenant, kTenantCustomPrefix);
  FillCustom(property_custom_, codes.property, kPropertyCustomPrefix);
  FillCustom(owner_custom_, codes.owner, kOwnerCustomPrefix);
  ShowCustomMenus();
}

void InsertMenus::FillCustom(QMenu* menu, const std::set<std::string>& codes,
                             std::string_view prefix) {
  menu->clear();
  for (const std::string& code : codes) {
    QAction* action = menu->addAction(Caption(code));
    QObject::connect(action, &QAction::triggered, menu,
                     [this, item = std::string(prefix) + code] { inserts_.item(item); });
  }
}

void InsertMenus::DisplayInsertMenu(TemplateKind list, const std::string& cheque_word) {
  const std::string name = ListName(list, cheque_word);
  if (name == list_name_) return;
  list_ = list;
  list_name_ = name;
  const QString title = Tr("Insert %1").arg(ToQt(list_name_));
  format_.setText(Tr("%1 Format").arg(ToQt(list_name_)));
  for (QMenu* menu : {tenant_codes_, cheque_codes_, owner_codes_}) {
    const bool shown = menu == (list == TemplateKind::kTenant  ? tenant_codes_
                                : list == TemplateKind::kOwner ? owner_codes_
                                                               : cheque_codes_);
    menu->menuAction()->setVisible(shown);
    menu->setTitle(title);
  }
  tenant_forms_->menuAction()->setVisible(list == TemplateKind::kTenant);
  owner_forms_->menuAction()->setVisible(list == TemplateKind::kOwner);
  ShowCustomMenus();
  combo_.clear();
  for (const MergeCode& code : MergeCodesOf(list)) combo_.addItem(ToQt(code.name));
  combo_.setCurrentIndex(-1);
  combo_.setPlaceholderText(title);
}

void InsertMenus::ShowCustomMenus() {
  const auto show = [](QMenu* menu, bool fits) {
    menu->menuAction()->setVisible(fits && !menu->isEmpty());
  };
  show(tenant_custom_, list_ == TemplateKind::kTenant);
  show(property_custom_, list_ == TemplateKind::kTenant);
  show(owner_custom_, list_ == TemplateKind::kOwner);
}

void InsertMenus::SetEnabled(bool enabled) {
  combo_.setEnabled(enabled);
  for (QMenu* menu : {tenant_codes_, cheque_codes_, owner_codes_, tenant_forms_, owner_forms_,
                      tenant_custom_, property_custom_, owner_custom_}) {
    menu->setEnabled(enabled);
  }
}

}  // namespace tenora
