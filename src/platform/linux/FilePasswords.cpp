#include "platform/linux/FilePasswords.h"

#include <crypt.h>
#include <string.h>  // explicit_bzero

#include <charconv>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/linux/AccountFiles.h"

namespace vt {
namespace {

struct StoredPassword {
  std::string hash;
  PasswordDates dates;
};

std::int64_t systemToday() {
  return std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())
      .time_since_epoch()
      .count();
}

/// The line of `path` whose first field is `name`, if it has `fieldCount` fields; the first such.
std::optional<std::string> lineOf(const std::string& path, std::string_view name,
                                  std::size_t fieldCount) {
  for (std::string& line : accountFileLines(path)) {
    const std::vector<std::string_view> fields = accountFields(line);
    if (fields.front() != name) continue;
    if (fields.size() != fieldCount) return std::nullopt;
    return std::move(line);
  }
  return std::nullopt;
}

bool readDays(std::string_view field, std::int64_t& days) {
  if (field.empty()) return true;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), days);
  return error == std::errc() && end == field.data() + field.size();
}

// name:hash:last change:minimum:maximum:warning:inactivity:expiry:reserved
std::optional<StoredPassword> shadowEntry(const std::string& root, std::string_view name) {
  const std::optional<std::string> line = lineOf(root + "/etc/shadow", name, 9);
  if (!line) return std::nullopt;
  const std::vector<std::string_view> fields = accountFields(*line);
  StoredPassword stored{std::string(fields[1]), {}};
  if (!readDays(fields[2], stored.dates.lastChange) ||
      !readDays(fields[4], stored.dates.maximumAge) ||
      !readDays(fields[7], stored.dates.accountExpiry)) {
    return std::nullopt;
  }
  return stored;
}

std::optional<StoredPassword> storedPassword(const std::string& root, std::string_view name) {
  const std::optional<std::string> line = lineOf(root + "/etc/passwd", name, 7);
  if (!line) return std::nullopt;
  const std::vector<std::string_view> fields = accountFields(*line);
  if (!accountId(fields[2]) || !accountId(fields[3])) return std::nullopt;
  if (fields[1] != "x") return StoredPassword{std::string(fields[1]), {}};
  return shadowEntry(root, name);
}

bool equalInConstantTime(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
  }
  return difference == 0;
}

// Crypt itself answers a bad setting with "*0" or "*1".
bool isLocked(const std::string& hash) {
  return hash.empty() || hash.front() == '*' || hash.front() == '!';
}

bool hashMatches(const std::string& hash, const std::string& password) {
  if (isLocked(hash)) return false;
  // 32 KiB: too much for the stack of a small thread. It holds the password afterwards.
  const auto work = std::make_unique<crypt_data>();
  const char* made = crypt_r(password.c_str(), hash.c_str(), work.get());
  const bool matches = made && made[0] != '*' && equalInConstantTime(made, hash);
  explicit_bzero(work.get(), sizeof(crypt_data));
  return matches;
}

}  // namespace

bool mayBeUsed(const PasswordDates& dates, std::int64_t today) {
  constexpr std::int64_t kUnset = PasswordDates::kUnset;
  if (dates.accountExpiry != kUnset && today >= dates.accountExpiry) return false;
  if (dates.lastChange == 0) return false;
  if (dates.lastChange == kUnset || dates.maximumAge == kUnset) return true;
  return today - dates.lastChange <= dates.maximumAge;
}

FilePasswords::FilePasswords(std::string root, Today today)
    : root_(std::move(root)), today_(today ? std::move(today) : systemToday) {}

bool FilePasswords::verify(const std::string& name, const std::string& password) const {
  if (name.empty() || password.empty()) return false;
  if (password.find('\0') != password.npos) return false;
  std::optional<StoredPassword> stored = storedPassword(root_, name);
  if (!stored) return false;
  const bool verified = hashMatches(stored->hash, password);
  return verified && mayBeUsed(stored->dates, today_());
}

bool FilePasswords::isOpen(const std::string& name) const {
  const std::optional<StoredPassword> stored = storedPassword(root_, name);
  return stored && !isLocked(stored->hash) && mayBeUsed(stored->dates, today_());
}

}  // namespace vt
