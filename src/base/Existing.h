#pragma once

#include <stdexcept>

namespace quillorbit {

/// The object that a smart pointer points to; throws std::logic_error when there is none,
/// so that a step that needs a missing piece fails like any other step.
template <class Reference>
[[nodiscard]] auto& Existing(const Reference& object) {
  if (!object) throw std::logic_error("Object not set");
  return *object;
}

}  // namespace quillorbit
