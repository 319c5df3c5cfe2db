#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace vt {

/// Text, or nil, that one thread may replace while others read: a reader gets the whole old or the
/// whole new text.
class AtomicString {
 public:
  std::optional<std::string> load() const {
    const std::shared_ptr<const std::string> text = text_.load();
    return text ? std::optional<std::string>(*text) : std::nullopt;
  }

  void store(std::optional<std::string> text) {
    text_.store(text ? std::make_shared<const std::string>(std::move(*text)) : nullptr);
  }

 private:
  std::atomic<std::shared_ptr<const std::string>> text_;
};

}  // namespace vt
