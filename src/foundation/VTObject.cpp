#include "foundation/VTObject.h"

#include <fmt/format.h>

#include "foundation/ObserverList.h"
#include "foundation/Property.h"

namespace vt {

UndefinedKeyError::UndefinedKeyError(std::string_view key, std::string_view operation)
    : std::runtime_error(fmt::format("{}: no property is called \"{}\"", operation, key)),
      key_(key) {}

VTObject::VTObject() = default;
VTObject::~VTObject() = default;

std::optional<Value> VTObject::valueForKey(std::string_view key) const {
  const Property* property = propertyNamed(key);
  return property ? property->read(*this) : valueForUndefinedKey(key);
}

void VTObject::setValue(std::optional<Value> value, std::string_view key) {
  const Property* property = propertyNamed(key);
  if (property && property->write) {
    property->write(*this, value, key);
  } else {
    setValueForUndefinedKey(std::move(value), key);
  }
}

std::optional<Value> VTObject::valueForUndefinedKey(std::string_view key) const {
  throw UndefinedKeyError(key, "valueForKey:");
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): those who override it keep the value.
void VTObject::setValueForUndefinedKey(std::optional<Value>, std::string_view key) {
  throw UndefinedKeyError(key, "setValue:forKey:");
}

Observation VTObject::addObserver(std::string_view key, ChangeCallback callback) {
  if (!observers_) observers_ = std::make_shared<ObserverList>();
  return {observers_, observers_->add(key, std::move(callback))};
}

void VTObject::willChangeValueForKey(std::string_view key) { announce(key, ChangePhase::kWill); }

void VTObject::didChangeValueForKey(std::string_view key) { announce(key, ChangePhase::kDid); }

void VTObject::announce(std::string_view key, ChangePhase phase) {
  // A copy: the last observer may go, and with it this object.
  const std::shared_ptr<ObserverList> observers = observers_;
  if (!observers) return;
  const std::span<const DependentKey> dependent = dependentKeys();
  observers->notify(key, phase);
  for (const DependentKey& pair : dependent) {
    if (pair.source == key) observers->notify(pair.dependent, phase);
  }
}

const Property* VTObject::propertyNamed(std::string_view) const { return nullptr; }

std::span<const DependentKey> VTObject::dependentKeys() const { return {}; }

Observation::Observation(std::weak_ptr<ObserverList> list, std::uint64_t id)
    : list_(std::move(list)), id_(id) {}

Observation::Observation(Observation&& other) noexcept
    : list_(std::move(other.list_)), id_(std::exchange(other.id_, 0)) {}

Observation& Observation::operator=(Observation&& other) noexcept {
  if (this != &other) {
    cancel();
    list_ = std::move(other.list_);
    id_ = std::exchange(other.id_, 0);
  }
  return *this;
}

Observation::~Observation() { cancel(); }

void Observation::cancel() {
  if (const std::shared_ptr<ObserverList> list = list_.lock()) list->remove(id_);
  list_.reset();
}

}  // namespace vt
