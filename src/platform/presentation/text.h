#pragma once

#include <memory>

#include "platform/dx8vb.h"

namespace quillorbit::presentation {

/// The library for newest-frame devices: it leaves the drawing of texts to the thread that draws
/// the frame. `library` is used there with the device behind, and for everything else.
[[nodiscard]] std::shared_ptr<platform::D3DX8> DrawTextsLater(
    std::shared_ptr<platform::D3DX8> library);

}  // namespace quillorbit::presentation
