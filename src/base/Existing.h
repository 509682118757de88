#pragma once

#include <memory>
#include <stdexcept>

namespace quillorbit {

/// The object that a reference names; throws std::logic_error when there is none, so that a step
/// that needs a missing piece fails like any other step.
template <class T>
[[nodiscard]] T& Existing(const std::unique_ptr<T>& object) {
  if (!object) throw std::logic_error("Object not set");
  return *object;
}

}  // namespace quillorbit
