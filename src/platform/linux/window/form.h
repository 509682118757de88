#pragma once

#include <functional>

#include <QMenu>
#include <QPixmap>
#include <QPointer>

#include "platform/form.h"
#include "platform/linux/desktop/window_commands.h"
#include "platform/linux/window/controls.h"

namespace quillorbit::linux_adapter {

/// A top-level window with an icon of its own. `onUnloaded` is called with the form after it was
/// unloaded.
class LinuxForm final : public WidgetContainer<platform::Form> {
 public:
  LinuxForm(const platform::FormDesign& design, platform::IconHandle hIcon,
            std::function<void(LinuxForm&)> onUnloaded);
  ~LinuxForm() override;

  [[nodiscard]] platform::WindowHandle hWnd() const override;
  [[nodiscard]] platform::IconHandle Icon() const override { return m_hIcon; }
  [[nodiscard]] std::string Caption() const override { return m_sCaption; }
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
  [[nodiscard]] std::unique_ptr<platform::Menu> NewMenu(std::string_view sCaption) override;
  void PopupMenu(platform::Menu& menu, std::uint32_t lFlags,
                 platform::MenuItem* pDefaultItem) override;
  void Unload() override { RequestUnload(platform::UnloadReason::FormCode); }

  void RequestUnload(platform::UnloadReason eReason);
  /// Carries out what another copy of the program asks of the window.
  void Obey(WindowCommand eCommand);
  /// A null image removes the icon.
  void SetLargeIcon(const QPixmap& image);
  void SetSmallIcon(const QPixmap& image);
  /// The newest menu, if it still exists.
  [[nodiscard]] QMenu* MenuWidget() const { return m_menu; }

 private:
  class Window;

  [[nodiscard]] QWidget* ContainerWidget() override;
  void BringToFront();
  void ShowIcons();

  std::unique_ptr<Window> m_window;
  std::string m_sCaption;
  const platform::IconHandle m_hIcon;
  QPixmap m_largeIcon, m_smallIcon;
  QPointer<QMenu> m_menu;
  bool m_bShownBefore = false;
  std::function<void(LinuxForm&)> m_onUnloaded;
  bool m_bUnloaded = false;
};

}  // namespace quillorbit::linux_adapter
