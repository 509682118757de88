#pragma once

#include <string>

#include <QImage>

namespace quillorbit::reference {

/// What a picture shows: the model's angles in degrees, the camera's place, and the light.
struct Pose {
  float ax = 0, ay = 0, az = 0, azr = 0;
  bool bSignal = true;
};

/// The phone's model from the X file and the textures in a folder, drawn from the formulas alone:
/// slow, and without any code of the program's. Throws std::runtime_error when one cannot be read.
[[nodiscard]] QImage Picture(const std::string& sFolder, const Pose& pose, QSize size);

}  // namespace quillorbit::reference
