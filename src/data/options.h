// What the rental package's shared tables say about payments and outgoing mail.
#pragma once

#include <cstdint>
#include <string>

#include "data/database.h"

namespace tenora {

class Options {
 public:
  explicit Options(Database& database) : database_(database) {}

  // Read again at every call; raises 13 (Type mismatch) when the field is not a number.
  std::int16_t WhatPaysFirst();
  const std::string& RentGroup();         // kept after the first non-empty read
  const std::string& ExtraChargeCodes();  // "('xydhgus','WATER')", kept after the first read
  // Fills the fields below from the first row of the options table; without a row they stay. A
  // field that cannot be read is shown and keeps its value; the others are read.
  void LoadOptions();

  bool SmtpSend = false;
  std::string SmtpAddress;
  std::int16_t SmtpPort = 0;
  bool SmtpSSL = false;
  std::string SmtpUsername;
  std::string SmtpPassword;
  std::string SmtpSender;
  std::string SmtpRecipient;

 private:
  Database& database_;
  std::string rent_group_;
  std::string extra_charge_codes_;
};

}  // namespace tenora
