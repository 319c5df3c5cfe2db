#include "vistaro/SettingTypes.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <optional>

#include "foundation/Array.h"
#include "vistaro/CommandError.h"
#include "vistaro/Terminal.h"
#include "vistaro/ValueJSON.h"

namespace vt::tool {
namespace {

constexpr std::int64_t kHighestPort = 65535;

constexpr KnownSetting kKnownSettings[] = {
    {"serverName", SettingType::kText, "host name in the server's addresses; else the machine's"},
    {"serverPort", SettingType::kPort, "port of the web server; else 9000"},
    {"userAuthenticationDisabled", SettingType::kBoolean, "whether one may search without login"},
    {"anonymousUserName", SettingType::kText, "who searches without login; else nobody"},
    {"rootLoginAllowed", SettingType::kBoolean, "whether the account with user id 0 may log in"},
    {"webHostNames", SettingType::kTexts, "more names under which browsers ask for the server"},
    {"webProxyAddresses", SettingType::kAddresses, "proxies that say where requests come from"},
    {"sslEnabled", SettingType::kBoolean, "whether the web server speaks HTTPS"},
    {"useSSLTestCertificate", SettingType::kBoolean, "whether it uses the test certificate"},
    {"sslCertificatePath", SettingType::kText, "path of its certificate"},
    {"mailEnabled", SettingType::kBoolean, "whether files can be sent by mail"},
    {"smtpFromEmailAddress", SettingType::kText, "sender of mail"},
    {"smtpServerAddress", SettingType::kText, "host that takes mail"},
    {"smtpDefaultServerPort", SettingType::kBoolean, "whether its usual port is used; else yes"},
    {"smtpCustomServerPort", SettingType::kPort, "its port otherwise"},
    {"smtpUseSSL", SettingType::kBoolean, "whether mail is handed over encrypted"},
    {"smtpServerAuthenticationMode", SettingType::kInteger, "0, or 1 for the submission port"},
    {"smtpServerUsername", SettingType::kText, "login at the mail host"},
    {"smtpServerPassword", SettingType::kSecret, "password there"},
    {"startupUserId", SettingType::kInteger, "user id under which attribute names are read"},
};

// Beside the password: the key that it is enciphered with.
constexpr std::string_view kPasswordKey = "registrationdata";

std::optional<std::int64_t> integerIn(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole ? std::optional(number) : std::nullopt;
}

[[noreturn]] void refuse(std::string_view text, std::string_view wanted) {
  throw CommandError{kUsage, fmt::format("\"{}\" is no {}", printable(text), wanted)};
}

/// As the server sees the addresses of those who connect, which are compared as texts.
std::string addressIn(std::string_view text) {
  const std::string typed(text);
  for (const int family : {AF_INET, AF_INET6}) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    std::array<char, INET6_ADDRSTRLEN> written{};
    if (inet_pton(family, typed.c_str(), bytes.data()) == 1 && typed.find('\0') == typed.npos &&
        inet_ntop(family, bytes.data(), written.data(), written.size()) != nullptr) {
      return written.data();
    }
  }
  refuse(text, "address such as 10.0.0.1");
}

std::vector<std::string> textsInJSON(const std::string& text) {
  const auto list = nlohmann::json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
  if (!list.is_array()) refuse(text, "array in JSON");
  std::vector<std::string> texts;
  for (const auto& element : list) {
    if (!element.is_string()) refuse(text, "array of texts");
    texts.push_back(element.get<std::string>());
  }
  return texts;
}

}  // namespace

std::span<const KnownSetting> knownSettings() { return kKnownSettings; }

const KnownSetting* knownSetting(std::string_view key) {
  const auto* const found = std::ranges::find(kKnownSettings, key, &KnownSetting::key);
  return found == std::end(kKnownSettings) ? nullptr : found;
}

Value settingFromText(SettingType type, std::string_view text) {
  switch (type) {
    case SettingType::kText:
    case SettingType::kSecret:
      return text;
    case SettingType::kTexts:
      if (text.empty()) refuse(text, "text");
      return text;
    case SettingType::kAddresses:
      return addressIn(text);
    case SettingType::kBoolean:
      if (text == "yes" || text == "true" || text == "1") return true;
      if (text == "no" || text == "false" || text == "0") return false;
      throw CommandError{kUsage, fmt::format("\"{}\" is neither yes nor no", printable(text))};
    case SettingType::kPort: {
      const std::optional<std::int64_t> port = integerIn(text);
      if (!port || *port < 1 || *port > kHighestPort) refuse(text, "port from 1 to 65535");
      return *port;
    }
    case SettingType::kInteger: {
      const std::optional<std::int64_t> number = integerIn(text);
      if (!number) refuse(text, "whole number");
      return *number;
    }
  }
  return {};
}

Value settingFromTexts(SettingType type, const std::vector<std::string>& texts) {
  if (!isList(type)) {
    if (texts.size() != 1) throw CommandError{kUsage, "the setting takes one value"};
    return settingFromText(type, texts.front());
  }
  const bool isJSON = texts.size() == 1 && texts.front().starts_with('[');
  auto list = Array::make();
  for (const std::string& text : isJSON ? textsInJSON(texts.front()) : texts) {
    list->append(settingFromText(type, text));
  }
  return list;
}

std::string textOfSetting(std::string_view key, const Value& value) {
  const KnownSetting* const known = knownSetting(key);
  if (key == kPasswordKey || (known != nullptr && known->type == SettingType::kSecret)) {
    return "(set)";
  }
  if (known != nullptr && known->type == SettingType::kBoolean) {
    return value.boolValue() ? "yes" : "no";
  }
  if (const std::string* text = value.get<std::string>()) return printable(*text);
  return printable(jsonOf(value).dump());
}

}  // namespace vt::tool
