// Sends 1,000 letters to a local server in one run and prints the rate and its ratio to the goal of
// 300 a second.
#include <chrono>
#include <cstdio>

#include "platform/mail/smtp_client.h"
#include "support/smtp_server.h"

int main() {
  constexpr int kMessages = 1000;
  constexpr double kGoal = 300;
  const tenora::test::SmtpServer server("plain");
  tenora::mail::Server settings;
  settings.host = "localhost";
  settings.port = server.port();
  tenora::mail::Message message;
  message.from = {"", "office@example.test"};
  message.to = {{"", "tenant@example.test"}};
  message.subject = "Your rent for Ōrākei";
  message.date = tenora::Date::FromCalendar(2026, 11, 21);
  for (int line = 0; line < 60; ++line) {
    message.text += "Kia ora Māhuta, this is a line of an ordinary letter.\n";
    message.html += "<b>Kia ora Māhuta</b>, this is a line of an ordinary letter.<br>\n";
  }
  tenora::mail::SmtpClient client;
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < kMessages; ++i) client.Send(settings, message);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const double rate = kMessages / taken.count();
  std::printf("%d messages in %.2f s: %.0f a second, %.2f times the goal\n", kMessages,
              taken.count(), rate, rate / kGoal);
}
