#include "platform/linux/dx8vb.h"

#include "platform/linux/direct3d8.h"

namespace quillorbit::linux_adapter {
namespace {

class LinuxDirectX8 final : public platform::DirectX8 {
 public:
  explicit LinuxDirectX8(std::shared_ptr<GlContexts> contexts) : m_contexts(std::move(contexts)) {}
  std::shared_ptr<platform::IDirect3D8> Direct3DCreate() override {
    return std::make_shared<LinuxDirect3D8>(m_contexts);
  }

 private:
  std::shared_ptr<GlContexts> m_contexts;
};

}  // namespace

std::shared_ptr<platform::DirectX8> LinuxDX8VB::NewDirectX8() {
  return std::make_shared<LinuxDirectX8>(m_contexts);
}

}  // namespace quillorbit::linux_adapter
