#pragma once

#include <memory>
#include <typeindex>

#include "Ruby.h"
#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/VTObject.h"

namespace vt::ruby {

// A Ruby object of ours holds its C++ object for as long as it lives itself. While it lives, the
// same C++ object is always shown by the same Ruby object.

/// Makes `rubyClass` the one that shows objects whose own class is `type`. Lets it be allocated, as
/// an empty object for an initialiser to fill, by `alloc`, never by `new`, and never be copied.
void registerClass(std::type_index type, VALUE rubyClass);

/// Makes the classes that show containers.
void registerContainers(VALUE dictionaries, VALUE arrays, VALUE objectArrays);

/// The Ruby object that shows the C++ object; nil for nullptr. What holds no property-list data of
/// its own is shown `frozen`: it is then shared with the library, which relies on it. May raise: to
/// be called within protect().
VALUE show(const std::shared_ptr<VTObject>& object);
VALUE show(const std::shared_ptr<Dictionary>& dictionary, bool frozen);
VALUE show(const std::shared_ptr<Array>& array, bool frozen);

/// What the Ruby object shows; nullptr when it is of another kind, or empty.
const std::shared_ptr<VTObject>* shownObject(VALUE object) noexcept;
const std::shared_ptr<Dictionary>* shownDictionary(VALUE object) noexcept;
const std::shared_ptr<Array>* shownArray(VALUE object) noexcept;

/// The class that shows objects of the C++ class `type`.
VALUE classShowing(std::type_index type) noexcept;

/// Whether the Ruby object is one of ours, yet empty.
bool isEmpty(VALUE object) noexcept;

/// Makes the empty object `wrapper` show `object`, which an initialiser of its class has made, and
/// gives `wrapper`; gives the Ruby object that shows `object` when there is one already. May raise:
/// to be called within protect(). An ArgumentError when `wrapper` is not empty, or its class shows
/// another class of objects.
VALUE fill(VALUE wrapper, const std::shared_ptr<VTObject>& object);

void prepareWrappers();

}  // namespace vt::ruby
