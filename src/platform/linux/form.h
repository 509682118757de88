#pragma once

#include <functional>

#include "platform/form.h"
#include "platform/linux/controls.h"

namespace quillorbit::linux_adapter {

/// A top-level window. `onUnloaded` is called with it when it has been unloaded.
class LinuxForm final : public WidgetContainer<platform::Form> {
 public:
  LinuxForm(const platform::FormDesign& design, std::function<void(LinuxForm&)> onUnloaded);
  ~LinuxForm() override;

  [[nodiscard]] platform::WindowHandle hWnd() const override;
  [[nodiscard]] std::string Caption() const override;
  void Caption(std::string_view sCaption) override;
  [[nodiscard]] bool Visible() const override;
  void Show() override;
  void Hide() override;
  [[nodiscard]] platform::WindowState WindowState() const override;
  void WindowState(platform::WindowState eState) override;
  void Width(float fWidth) override;
  void Height(float fHeight) override;
  [[nodiscard]] float ScaleWidth() const override;
  [[nodiscard]] float ScaleHeight() const override;
  [[nodiscard]] std::unique_ptr<platform::Timer> NewTimer(int iInterval, bool bEnabled) override;
  void Unload() override { RequestUnload(platform::UnloadReason::FormCode); }

  void RequestUnload(platform::UnloadReason eReason);

 private:
  class Window;

  [[nodiscard]] QWidget* ContainerWidget() override;

  std::unique_ptr<Window> m_window;
  std::function<void(LinuxForm&)> m_onUnloaded;
  bool m_bUnloaded = false;
};

}  // namespace quillorbit::linux_adapter
