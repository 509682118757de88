#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/event.h"

namespace quillorbit::platform {

/// An item of a menu. An "&" in the caption marks its access key. It is created visible and
/// enabled, without a caption.
class MenuItem {
 public:
  virtual ~MenuItem() = default;

  [[nodiscard]] virtual std::string Caption() const = 0;
  virtual void Caption(std::string_view sCaption) = 0;
  virtual void Visible(bool bVisible) = 0;
  virtual void Enabled(bool bEnabled) = 0;

  Event<> Click;  ///< the user has chosen the item
};

/// A popup menu of a form. It is destroyed before the form.
class Menu {
 public:
  virtual ~Menu() = default;

  /// Adds an item below the others. It exists until the object returned here is destroyed, which
  /// must happen before the menu is destroyed.
  [[nodiscard]] virtual std::unique_ptr<MenuItem> NewItem() = 0;
};

}  // namespace quillorbit::platform
