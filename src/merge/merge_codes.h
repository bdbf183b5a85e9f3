// The merge code catalogue: the names that may stand between "<<" and ">>", and the openings of the
// codes that carry parameters of their own. Order and spelling are fixed: existing templates hold
// these names, merges address entries by position and the insert menus show them in this order.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace tenora {

inline constexpr std::array<std::string_view, 45> kTenantCodes{
    "Print Date",
    "Print Time",
    "Tenant Name",
    "Property Address 1",
    "Property Address 2",
    "Property Address 3",
    "Email",
    "Home Phone",
    "Work Phone",
    "Mobile",
    "Fax",
    "Current Rent",
    "Rent Frequency",
    "Bond Amount",
    "Tenancy Start Date",
    "Tenancy End Date",
    "Last Rent Rise",
    "Last Payment Date",
    "Last Payment Amount",
    "Last Payment Number",
    "Last Payment Tax",
    "Last Payment Excl.",
    "Last Payment Tender",
    "Balance Owing",
    "Paid To Date",
    "Previous Paid To Date",
    "Last Inspection",
    "Next Inspection",
    "Prompt Message",
    "Property Code",
    "Property Owners Name",
    "Water Meter",
    "Contact Address1",
    "Contact Address2",
    "Contact Address3",
    "Monthly Rent Date",
    "ID Number",
    "Current Period Start",
    "Current Period End",
    "Next Period Start",
    "Tenant Code",
    "Next Rent Change Date",
    "Next Rent Change Value",
    "Rent Review Date",
    "Future Date",
};

inline constexpr std::array<std::string_view, 5> kChequeCodes{
    "Print Date", "Payee Name", "Value in words 1", "Value in words 2", "Value in numbers",
};

inline constexpr std::array<std::string_view, 20> kOwnerCodes{
    "Print Date",
    "Name",
    "Code",
    "Postal Address 1",
    "Postal Address 2",
    "Postal Address 3",
    "Street Address 1",
    "Street Address 2",
    "Street Address 3",
    "Home Phone",
    "Work Phone",
    "Mobile Phone",
    "Fax Number",
    "Email Address",
    "Fee Percent",
    "Fee Value",
    "Tax Number",
    "Bank Account Name",
    "Bank Account Number",
    "Future Date",
};

// The name at a position of a list, counted from 1 as the lists are.
template <std::size_t kSize>
constexpr std::string_view CodeAt(const std::array<std::string_view, kSize>& list, int number) {
  return list.at(static_cast<std::size_t>(number - 1));
}

// The two entries that are commands of the insert menu. No merge replaces a code of their name.
inline constexpr std::string_view kFutureDateItem = "Future Date";
inline constexpr std::string_view kPromptMessageItem = "Prompt Message";

inline constexpr std::string_view kCodeStart = "<<";
inline constexpr std::string_view kCodeEnd = ">>";
inline constexpr std::string_view kTenantCustomPrefix = "TCustom:";
inline constexpr std::string_view kPropertyCustomPrefix = "PCustom:";
inline constexpr std::string_view kOwnerCustomPrefix = "OCustom:";
inline constexpr std::string_view kFutureDateStart = "<<FutureDate:";
inline constexpr std::string_view kPromptStart = "<<?";
inline constexpr std::string_view kPromptEnd = "?>>";
inline constexpr std::string_view kBuildingReceiptNumber = "BuildingReceiptNumber";

}  // namespace tenora
