#pragma once

#include <atomic>
#include <memory>
#include <stdexcept>

#include "platform/linux/graphics/gl_context.h"

namespace quillorbit::view_tests {

/// The graphics driver, whose misfortunes are the test's to decide. The contexts are real.
struct Graphics {
  explicit Graphics(bool bThere = true) {
    bDriver = bThere;
    bLost = false;
    nAsked = 0;
    contexts = std::make_shared<linux_adapter::GlContexts>(&NewContext);
  }

  /// The context that is asked next is lost.
  static void LoseContext() { bLost = true; }

  static inline std::atomic<bool> bDriver = true;  ///< whether contexts can be had
  static inline std::atomic<int> nAsked = 0;       ///< how often for one
  static constexpr const char* sNoDriver = "there is no driver at the moment";
  std::shared_ptr<linux_adapter::GlContexts> contexts;

 private:
  static std::shared_ptr<linux_adapter::GlContext> NewContext() {
    ++nAsked;
    if (!bDriver) throw std::runtime_error(sNoDriver);
    auto context = std::make_shared<linux_adapter::GlContext>();
    context->gl.GetGraphicsResetStatus = &ResetStatus;
    return context;
  }
  static GLenum ResetStatus() {
    return bLost.exchange(false) ? GLenum{GL_UNKNOWN_CONTEXT_RESET} : GLenum{GL_NO_ERROR};
  }

  static inline std::atomic<bool> bLost = false;
};

}  // namespace quillorbit::view_tests
