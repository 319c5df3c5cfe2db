#include "foundation/ObserverList.h"

#include <algorithm>
#include <utility>

namespace vt {

std::uint64_t ObserverList::add(std::string_view key, ChangeCallback callback) {
  observers_.push_back(
      std::make_shared<const Observer>(++lastId_, std::string(key), std::move(callback)));
  return lastId_;
}

void ObserverList::remove(std::uint64_t id) {
  std::erase_if(observers_, [id](const auto& observer) { return observer->id == id; });
}

bool ObserverList::isRegistered(std::uint64_t id) const {
  return std::ranges::any_of(observers_, [id](const auto& observer) { return observer->id == id; });
}

void ObserverList::notify(std::string_view key, ChangePhase phase) const {
  std::vector<std::shared_ptr<const Observer>> concerned;
  for (const auto& observer : observers_) {
    if (observer->key == key) concerned.push_back(observer);
  }
  for (const auto& observer : concerned) {
    if (isRegistered(observer->id)) observer->callback(key, phase);
  }
}

}  // namespace vt
