#include "platform/linux/graphics/dx8vb.h"

#include <cstdio>
#include <string>
#include <utility>

#include "platform/linux/graphics/direct3d8.h"
#include "platform/presentation/text.h"

namespace quillorbit::linux_adapter {
namespace {

/// Prints each reason, but not the same one twice in a row: every frame may try again.
d3dx8::Report StandardError() {
  return [last = std::make_shared<std::string>()](const char* sWhy) {
    if (std::exchange(*last, sWhy) != sWhy) std::fprintf(stderr, "quillorbit: %s\n", sWhy);
  };
}

class LinuxDirectX8 final : public platform::DirectX8 {
 public:
  LinuxDirectX8(std::shared_ptr<GlContexts> contexts, presentation::DrawingThreads& threads,
                d3dx8::Report report)
      : m_contexts(std::move(contexts)), m_threads(threads), m_report(std::move(report)) {}
  std::shared_ptr<platform::IDirect3D8> Direct3DCreate() override {
    return std::make_shared<LinuxDirect3D8>(m_contexts, m_threads, m_report);
  }

 private:
  std::shared_ptr<GlContexts> m_contexts;
  presentation::DrawingThreads& m_threads;
  d3dx8::Report m_report;
};

}  // namespace

LinuxDX8VB::LinuxDX8VB(platform::Fonts& fonts, std::shared_ptr<GlContexts> contexts,
                       presentation::DrawingThreads& threads)
    : Library(fonts, StandardError()), m_contexts(std::move(contexts)), m_threads(threads) {}

std::shared_ptr<platform::DirectX8> LinuxDX8VB::NewDirectX8() {
  return std::make_shared<LinuxDirectX8>(m_contexts, m_threads, m_report);
}

std::shared_ptr<platform::D3DX8> LinuxDX8VB::NewD3DX8() {
  return presentation::DrawTextsLater(Library::NewD3DX8());
}

}  // namespace quillorbit::linux_adapter
