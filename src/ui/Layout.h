#pragma once

#include "ui/Controls.h"

namespace quillorbit {

// The resize rules. A step that fails is ignored.

/// A minimised window hides, and lives on as its tray icon; otherwise the drawing surface fills
/// what the setup panel leaves of the client area.
void Form_Resize(Controls& controls);

/// Places the panel's controls in one centred row, whose slider takes the free width.
void picSetup_Resize(Controls& controls);

}  // namespace quillorbit
