#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/form.h"

namespace quillorbit::platform {

/// Buttons and icon of a message box, and its answers, with the platform's values.
enum MsgBoxFlags : std::uint32_t { MB_YESNO = 4, MB_ICONQUESTION = 32, MB_ICONINFORMATION = 64 };
enum MsgBoxAnswer { IDOK = 1, IDYES = 6, IDNO = 7 };

/// The window toolkit: forms, message boxes and the message loop.
class Toolkit {
 public:
  virtual ~Toolkit() = default;

  [[nodiscard]] virtual std::unique_ptr<Form> NewForm(const FormDesign& design) = 0;

  /// Shows a message box and returns the user's answer. Other events are delivered meanwhile. A box
  /// that is closed without an answer, by the user or because the program ends, returns IDOK, or
  /// IDNO where the user had a choice.
  virtual MsgBoxAnswer MsgBox(std::string_view sPrompt, std::uint32_t lFlags,
                              std::string_view sTitle) = 0;
  virtual void Beep() = 0;

  /// Delivers events until End was called or no form is loaded; returns the exit status.
  virtual int Run() = 0;
  /// Ends the program: Run, and every message box or menu open inside it, returns without
  /// delivering another event.
  virtual void End() = 0;
};

}  // namespace quillorbit::platform
