#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/controls.h"
#include "platform/event.h"
#include "platform/menu.h"
#include "platform/timer.h"

namespace quillorbit::platform {

/// An icon's handle; 0 is none.
using IconHandle = std::uint32_t;

enum class WindowState { Normal = 0, Minimized = 1, Maximized = 2 };

/// Why a form is about to be unloaded.
enum class UnloadReason {
  ControlMenu = 0,  ///< the window's own close command: close button, window menu, keystroke
  FormCode = 1,     ///< Unload was called
  AppWindows = 2,   ///< the session ends, or the system asks the program to end
};

struct FormDesign {
  std::string_view sName;
  std::string_view sClass;  ///< the window class, by which other programs know it
  std::string_view sCaption;
  const char* sIcon;                ///< the icon resource of its window
  float fScaleWidth, fScaleHeight;  ///< client area in twips
  Font font;
};

/// A top-level window. It is created hidden.
///
/// Unloading: whatever the reason, the form raises QueryUnload. Unless a handler cancels, it then
/// raises Unloaded and hides for good; neither it nor its controls and timers raise any event after
/// that.
/// The object stays valid until its owner destroys it.
class Form : public Container {
 public:
  [[nodiscard]] virtual WindowHandle hWnd() const = 0;
  /// The window's own icon, as it was designed.
  [[nodiscard]] virtual IconHandle Icon() const = 0;

  [[nodiscard]] virtual std::string Caption() const = 0;
  virtual void Caption(std::string_view sCaption) = 0;
  [[nodiscard]] virtual bool Visible() const = 0;
  /// Not modal. The form comes to the front and gets the focus, also when it is visible already.
  virtual void Show() = 0;
  virtual void Hide() = 0;
  [[nodiscard]] virtual platform::WindowState WindowState() const = 0;
  virtual void WindowState(platform::WindowState eState) = 0;

  virtual void Width(float fWidth) = 0;                 ///< outer width in twips, frame included
  virtual void Height(float fHeight) = 0;               ///< outer height in twips, frame included
  [[nodiscard]] virtual float ScaleWidth() const = 0;   ///< client width in twips
  [[nodiscard]] virtual float ScaleHeight() const = 0;  ///< client height in twips

  [[nodiscard]] virtual std::unique_ptr<Timer> NewTimer(int iInterval, bool bEnabled) = 0;

  [[nodiscard]] virtual std::unique_ptr<Menu> NewMenu(std::string_view sCaption) = 0;
  /// Shows a menu of this form at the mouse cursor with its default item, if any, and returns when
  /// the menu has closed; a menu that is open already stays as it is. Other events are delivered
  /// meanwhile, Click of the chosen item among them.
  virtual void PopupMenu(Menu& menu, std::uint32_t lFlags, MenuItem* pDefaultItem) = 0;

  virtual void Unload() = 0;  ///< does nothing to a form that is unloaded already

  Event<bool&, UnloadReason> QueryUnload;  ///< true cancels
  Event<> Unloaded;
  Event<> Resize;  ///< resized, minimised or restored; docked children are in place already
  Event<> Paint;
  Event<std::int32_t> MouseMove;  ///< the mouse's x coordinate in pixels; nothing needs y
};

}  // namespace quillorbit::platform
