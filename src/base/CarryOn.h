#pragma once

#include <exception>
#include <utility>

namespace quillorbit {

/// Runs the steps of a sequence one at a time: a step that throws is given up, its failure is
/// answered by `onFailure`, and the caller goes on with the next step.
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

/// The failure answer of sequences that pass over what fails.
struct Ignore {
  void operator()() const {}
};

}  // namespace quillorbit
