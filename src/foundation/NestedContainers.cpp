#include "foundation/NestedContainers.h"

#include <new>
#include <utility>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

template <class Container>
bool isLastHolder(const std::shared_ptr<Container>* container) {
  return container != nullptr && container->use_count() == 1 && !(*container)->empty();
}

}  // namespace

void NestedContainers::take(Value& value) noexcept {
  if (!isLastHolder(value.get<std::shared_ptr<Array>>()) &&
      !isLastHolder(value.get<std::shared_ptr<Dictionary>>())) {
    return;
  }
  try {
    pending_.push_back(std::move(value));
  } catch (const std::bad_alloc&) {
    return;  // it stays where it is and goes with its container
  }
}

NestedContainers::~NestedContainers() {
  while (!pending_.empty()) {
    const Value container = std::move(pending_.back());
    pending_.pop_back();
    if (const auto array = container.array()) {
      for (Value& element : array->elements()) take(element);
    } else if (const auto dictionary = container.dictionary()) {
      dictionary->giveNestedTo(*this);
    }
  }
}

}  // namespace vt
