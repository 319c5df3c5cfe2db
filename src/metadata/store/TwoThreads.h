#pragma once

#include <functional>
#include <future>
#include <system_error>
#include <utility>

namespace vt {

/// Does both pieces of work: at the same time, `first` on a thread of its own, if `isWorthIt` and
/// there can be one; else one after the other. Throws what one of them throws, when both are done.
template <class First, class Second>
void doBoth(bool isWorthIt, First&& first, Second&& second) {
  std::future<void> other;
  if (isWorthIt) {
    try {
      other = std::async(std::launch::async, std::ref(first));
    } catch (const std::system_error&) {
      other = {};  // no thread to be had: then it takes longer
    }
  }
  if (!other.valid()) first();
  second();
  if (other.valid()) other.get();
}

}  // namespace vt
