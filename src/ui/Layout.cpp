#include "ui/Layout.h"

#include "base/CarryOn.h"
#include "base/Trace.h"

namespace quillorbit {
namespace {

// Twips
constexpr float fLampGap = 30;
constexpr float fGroupGap = 60;
constexpr float fMargin = 120;

/// Width of everything in the row but the slider.
float FixedWidth(const Controls& c) {
  const auto n = static_cast<float>(c.lblButton.size());
  return n * c.lblButton[0]->Width() + c.lblStatic[0]->Width() + (n - 1) * fLampGap + fGroupGap +
         c.lblStatic[1]->Width() + c.txtServerPort->Width() + fGroupGap + c.lblStatic[2]->Width() +
         fGroupGap + c.chkDebug->Width();
}

}  // namespace

void Form_Resize(Controls& c) {
  const CarryOn step(Ignore{});
  if (c.frmMain->WindowState() == platform::WindowState::Minimized) {
    Trace("hide");
    step([&] { c.frmMain->Hide(); });
    return;
  }
  step([&] {
    c.picSurface->Move(0, 0, c.frmMain->ScaleWidth(),
                       c.frmMain->ScaleHeight() - c.picSetup->Height());
  });
}

void picSetup_Resize(Controls& c) {
  const CarryOn step(Ignore{});
  const float panelWidth = c.picSetup->ScaleWidth();
  float rowWidth = FixedWidth(c);
  // A panel that is too narrow asks for a negative width; the slider refuses it and stays.
  step([&] { c.sldFilter->Width(panelWidth - rowWidth - fMargin); });
  rowWidth = rowWidth + c.sldFilter->Width() - fMargin;

  float x = (panelWidth - rowWidth) / 2;
  const auto place = [&](platform::Control& control, float fGap) {
    step([&] { control.Left(x); });
    x = x + control.Width() + fGap;
  };
  place(*c.lblStatic[0], 0);
  for (const auto& lamp : c.lblButton)
    place(*lamp, lamp == c.lblButton.back() ? fGroupGap : fLampGap);
  place(*c.lblStatic[1], 0);
  place(*c.txtServerPort, fGroupGap);
  place(*c.lblStatic[2], 0);
  place(*c.sldFilter, fGroupGap);
  place(*c.chkDebug, 0);
}

}  // namespace quillorbit
