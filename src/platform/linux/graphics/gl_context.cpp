#include "platform/linux/graphics/gl_context.h"

#include <EGL/eglext.h>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace quillorbit::linux_adapter {
namespace {

[[noreturn]] void Refuse(const char* sWhat) {
  std::array<char, 16> sCode{};
  std::snprintf(sCode.data(), sCode.size(), "0x%04X", static_cast<unsigned>(eglGetError()));
  throw std::runtime_error(std::string("OpenGL: ") + sWhat + " (EGL error " + sCode.data() + ")");
}

bool Has(const char* sExtensions, const char* sExtension) {
  return sExtensions != nullptr && std::strstr(sExtensions, sExtension) != nullptr;
}

/// A display that draws off screen: without a window system where the driver supports that, else
/// the default one.
EGLDisplay OpenDisplay() {
  std::array<EGLDisplay, 2> displays = {EGL_NO_DISPLAY, EGL_NO_DISPLAY};
  if (Has(eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS), "EGL_MESA_platform_surfaceless")) {
    const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (getPlatformDisplay != nullptr)
      displays[0] = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
  }
  displays[1] = eglGetDisplay(EGL_DEFAULT_DISPLAY);
  for (EGLDisplay display : displays)
    if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr)) return display;
  Refuse("there is no driver");
}

}  // namespace

GlContext::GlContext() {
  try {
    Create();
  } catch (...) {
    Close();
    throw;
  }
}

thread_local const GlContext* GlContext::pCurrent = nullptr;

void GlContext::Create() {
  m_display = OpenDisplay();
  if (!eglBindAPI(EGL_OPENGL_API)) Refuse("the driver has OpenGL ES only");
  const char* const sExtensions = eglQueryString(m_display, EGL_EXTENSIONS);
  const bool bSurfaceless = Has(sExtensions, "EGL_KHR_surfaceless_context");

  const std::array<EGLint, 5> wanted = {EGL_SURFACE_TYPE, bSurfaceless ? 0 : EGL_PBUFFER_BIT,
                                        EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
  EGLConfig config = nullptr;
  EGLint nConfigs = 0;
  if (!eglChooseConfig(m_display, wanted.data(), &config, 1, &nConfigs) || nConfigs == 0)
    Refuse("the driver has no fitting configuration");

  // Ask for notification of a lost context where the driver supports it.
  const std::array<EGLint, 3> robust = {EGL_CONTEXT_OPENGL_RESET_NOTIFICATION_STRATEGY_KHR,
                                        EGL_LOSE_CONTEXT_ON_RESET_KHR, EGL_NONE};
  if (Has(sExtensions, "EGL_KHR_create_context"))
    m_context = eglCreateContext(m_display, config, EGL_NO_CONTEXT, robust.data());
  if (m_context == EGL_NO_CONTEXT)
    m_context = eglCreateContext(m_display, config, EGL_NO_CONTEXT, nullptr);
  if (m_context == EGL_NO_CONTEXT) Refuse("the driver makes no context");

  if (!bSurfaceless) {
    const std::array<EGLint, 5> onePixel = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
    m_surface = eglCreatePbufferSurface(m_display, config, onePixel.data());
    if (m_surface == EGL_NO_SURFACE) Refuse("the driver makes no surface");
  }
  MakeCurrent();
  LoadFunctions();
  pipeline = std::make_unique<GlPipeline>(gl);
  LetGo();
}

/// The display stays initialised: other contexts may be on it.
void GlContext::Close() {
  if (m_context == EGL_NO_CONTEXT) return;
  LetGo();
  if (m_surface != EGL_NO_SURFACE) eglDestroySurface(m_display, m_surface);
  eglDestroyContext(m_display, std::exchange(m_context, EGL_NO_CONTEXT));
}

void GlContext::MakeCurrent() {
  if (IsCurrent()) return;
  pCurrent = nullptr;  // whichever was
  // Each thread has its own bound API.
  if (eglBindAPI(EGL_OPENGL_API) == EGL_FALSE ||
      eglMakeCurrent(m_display, m_surface, m_surface, m_context) == EGL_FALSE)
    Refuse("the driver refuses its context");
  pCurrent = this;
}

void GlContext::LetGo() {
  if (!IsCurrent()) return;
  eglMakeCurrent(m_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  pCurrent = nullptr;
}

void GlContext::LoadFunctions() {
  const auto load = [](auto& function, const char* sName) {
    function =
        reinterpret_cast<std::remove_reference_t<decltype(function)>>(eglGetProcAddress(sName));
    if (function == nullptr)
      throw std::runtime_error(std::string("OpenGL: the driver has no ") + sName);
  };
#define QUILLORBIT_GL_LOAD(name) load(gl.name, "gl" #name);
  QUILLORBIT_GL_FUNCTIONS(QUILLORBIT_GL_LOAD)
#undef QUILLORBIT_GL_LOAD
  const auto* const sVersion = reinterpret_cast<const char*>(gl.GetString(GL_VERSION));
  if (sVersion == nullptr || std::strtod(sVersion, nullptr) < 2.1)
    throw std::runtime_error("OpenGL: the driver is older than 2.1");
  const auto* const sExtensions = reinterpret_cast<const char*>(gl.GetString(GL_EXTENSIONS));
  if (Has(sExtensions, "_robustness"))
    gl.GetGraphicsResetStatus = reinterpret_cast<PFNGLGETGRAPHICSRESETSTATUSPROC>(
        eglGetProcAddress(Has(sExtensions, "GL_KHR_robustness") ? "glGetGraphicsResetStatus"
                                                                : "glGetGraphicsResetStatusARB"));
}

bool GlContext::IsLost() {
  if (!m_bLost && gl.GetGraphicsResetStatus != nullptr) {
    MakeCurrent();
    m_bLost = gl.GetGraphicsResetStatus() != GL_NO_ERROR;
  }
  return m_bLost;
}

GlContexts::GlContexts(Maker make) : m_make(std::move(make)) {
  // Mesa's software driver draws on the thread that calls it. It would start one for each
  // processor, with the priority of this one: for so small a picture their meeting costs more than
  // the drawing.
  setenv("LP_NUM_THREADS", "0", 0);
  // No signal of the program's is for this thread, nor for those that the driver starts in it.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  m_next = std::async(std::launch::async, m_make);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

std::shared_ptr<GlContext> GlContexts::New() {
  const std::lock_guard lock(m_mutex);
  return m_next.valid() ? m_next.get() : Make();
}

bool GlContexts::Available() {
  const std::lock_guard lock(m_mutex);
  if (m_next.valid()) return true;  // New has been called before, and this was made meanwhile
  try {
    std::promise<std::shared_ptr<GlContext>> made;
    made.set_value(Make());
    m_next = made.get_future();
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

/// With the mutex held.
std::shared_ptr<GlContext> GlContexts::Make() {
  const auto now = std::chrono::steady_clock::now();
  if (now < m_retry) std::rethrow_exception(m_failure);
  try {
    return m_make();
  } catch (...) {
    m_failure = std::current_exception();
    m_retry = now + std::chrono::milliseconds(500);
    throw;
  }
}

}  // namespace quillorbit::linux_adapter
