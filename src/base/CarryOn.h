#pragma once

#include <exception>
#include <utility>

namespace quillorbit {

/// Runs the steps of a sequence one at a time. When a step throws, the rest of that step is
/// skipped, `onFailure` is called, and the sequence continues with its next step.
///
///     const CarryOn step([this] { ReportFailure(); });
///     step([this] { FirstThing(); });
///     step([this] { SecondThing(); });
template <class OnFailure>
class CarryOn {
 public:
  explicit CarryOn(OnFailure onFailure) : m_onFailure(std::move(onFailure)) {}

  template <class Step>
  void operator()(Step&& step) const {
    try {
      step();
    } catch (const std::exception&) {
      m_onFailure();
    }
  }

 private:
  OnFailure m_onFailure;
};

/// The failure answer of sequences that ignore what fails.
struct Ignore {
  void operator()() const {}
};

/// The failure answer of sequences that run to their end and then report their first failure, with
/// std::rethrow_exception.
struct KeepFirst {
  void operator()() const {
    if (!first) first = std::current_exception();
  }
  std::exception_ptr& first;
};

}  // namespace quillorbit
