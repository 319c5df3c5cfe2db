#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "foundation/Value.h"

namespace vt {

struct Property;
class ObserverList;
class Observation;

/// Raised by access by key when a class has no property of that name.
class UndefinedKeyError : public std::runtime_error {
 public:
  UndefinedKeyError(std::string_view key, std::string_view operation);
  const std::string& key() const { return key_; }

 private:
  std::string key_;
};

/// Raised by access by key when a property cannot take the value that it is given: null for a
/// number or boolean, or a value of a type that has no reading as the property's.
class InvalidArgumentError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

/// Which side of a change an observer is told about.
enum class ChangePhase { kWill, kDid };

using ChangeCallback = std::function<void(std::string_view key, ChangePhase phase)>;

/// `dependent` is announced whenever `source` is.
struct DependentKey {
  std::string_view dependent;
  std::string_view source;
};

/// The root of every class with identity: access to properties by name, and observing them.
///
/// A class lists its properties in one table (see Property.h); reading and writing by key goes
/// through the same functions as any other caller, so overrides and announcements are reached.
class VTObject {
 public:
  VTObject();
  VTObject(const VTObject&) = delete;
  VTObject& operator=(const VTObject&) = delete;
  virtual ~VTObject();

  /// `valueForKey:`
  /// The property's value; nothing when it is nil. An object comes as a value of kind Object.
  /// A key without a property goes to valueForUndefinedKey().
  std::optional<Value> valueForKey(std::string_view key) const;

  /// `setValue:forKey:`
  /// Sets the property; nothing and the null object mean nil. A key without a settable property
  /// goes to setValueForUndefinedKey(). Throws InvalidArgumentError when the property cannot take
  /// the value; it then keeps the one it had.
  void setValue(std::optional<Value> value, std::string_view key);

  /// `valueForUndefinedKey:`
  /// Throws UndefinedKeyError unless the class routes undefined keys somewhere.
  virtual std::optional<Value> valueForUndefinedKey(std::string_view key) const;

  /// `setValue:forUndefinedKey:`
  /// Throws UndefinedKeyError unless the class routes undefined keys somewhere.
  virtual void setValueForUndefinedKey(std::optional<Value> value, std::string_view key);

  /// Calls `callback` before and after each change of `key` for as long as the token lives. The
  /// callback must not throw; it may add and cancel observations.
  [[nodiscard]] Observation addObserver(std::string_view key, ChangeCallback callback);

  /// `willChangeValueForKey:` and `didChangeValueForKey:`
  /// Tell the observers of the key, then those of the keys that depend on it.
  void willChangeValueForKey(std::string_view key);
  void didChangeValueForKey(std::string_view key);

 protected:
  /// The property called `key`, or nullptr. Overridden by each class that has properties; a
  /// subclass asks its own table, then its base.
  virtual const Property* propertyNamed(std::string_view key) const;
  /// The dependent keys of the class, its bases' included.
  virtual std::span<const DependentKey> dependentKeys() const;

 private:
  void announce(std::string_view key, ChangePhase phase);

  std::shared_ptr<ObserverList> observers_;  // made by the first observer
};

/// Announces a change: will-change when made, did-change on every way out.
class ValueChange {
 public:
  ValueChange(VTObject& object, std::string_view key) : object_(object), key_(key) {
    object_.willChangeValueForKey(key_);
  }
  ValueChange(const ValueChange&) = delete;
  ValueChange& operator=(const ValueChange&) = delete;
  ~ValueChange() { object_.didChangeValueForKey(key_); }

 private:
  VTObject& object_;
  std::string_view key_;
};

/// A running observation; it ends with the token, by cancel(), or with the observed object.
class Observation {
 public:
  Observation() = default;
  Observation(std::weak_ptr<ObserverList> list, std::uint64_t id);
  Observation(Observation&& other) noexcept;
  Observation& operator=(Observation&& other) noexcept;
  ~Observation();

  /// Ends the observation; harmless when it has ended.
  void cancel();

 private:
  std::weak_ptr<ObserverList> list_;
  std::uint64_t id_ = 0;
};

}  // namespace vt
