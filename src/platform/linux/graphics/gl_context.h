#pragma once

#include <EGL/egl.h>
#include <chrono>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <mutex>

#include "platform/linux/graphics/gl_functions.h"
#include "platform/linux/graphics/gl_pipeline.h"

namespace quillorbit::linux_adapter {

/// An OpenGL context (2.1 or later) that draws off screen and needs no display, with the one
/// program that draws. The resources that belong to it hold it. It can be current on one thread at
/// a time.
class GlContext {
 public:
  /// Throws std::runtime_error when there is no OpenGL. The context is current nowhere, so another
  /// thread may use it.
  GlContext();
  ~GlContext() { Close(); }
  GlContext(const GlContext&) = delete;
  GlContext& operator=(const GlContext&) = delete;

  /// Makes it current for the calls that follow. Throws std::runtime_error when the driver refuses.
  void MakeCurrent();
  /// Whether it is, on this thread.
  [[nodiscard]] bool IsCurrent() const { return pCurrent == this; }
  /// Leaves it to another thread.
  void LetGo();
  /// Frees all that the driver holds. It has to be current here or nowhere, and is of no use then.
  void Close();
  /// Whether the driver has lost the context, with all that was in it (a reset of the graphics
  /// card). A lost context stays lost; a new one may be available.
  [[nodiscard]] bool IsLost();

  GlFunctions gl;
  std::unique_ptr<GlPipeline> pipeline;

 private:
  void Create();
  void LoadFunctions();

  EGLDisplay m_display = EGL_NO_DISPLAY;
  EGLContext m_context = EGL_NO_CONTEXT;
  EGLSurface m_surface = EGL_NO_SURFACE;  ///< where the driver wants one
  bool m_bLost = false;
  static thread_local const GlContext* pCurrent;
};

/// Makes contexts. The first is made beside the program's start, because the driver takes its time
/// to load. After a failure it does not try again for half a second, because it may be asked for
/// each datagram. Any thread may ask.
class GlContexts {
 public:
  using Maker = std::function<std::shared_ptr<GlContext>()>;

  /// `make` throws std::runtime_error when there is no OpenGL.
  explicit GlContexts(Maker make = [] { return std::make_shared<GlContext>(); });

  /// Throws std::runtime_error when there is no OpenGL.
  [[nodiscard]] std::shared_ptr<GlContext> New();
  /// Whether the next New succeeds.
  [[nodiscard]] bool Available();

 private:
  std::shared_ptr<GlContext> Make();

  std::mutex m_mutex;  // for what follows
  Maker m_make;
  std::exception_ptr m_failure;  ///< the last one, which counts until then
  std::chrono::steady_clock::time_point m_retry;
  std::future<std::shared_ptr<GlContext>> m_next;
};

}  // namespace quillorbit::linux_adapter
