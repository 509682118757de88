#pragma once

#include <array>
#include <string>
#include <vector>

#include <QImage>
#include <QVector3D>

namespace quillorbit::reference {

/// What a picture shows: the model's angles in degrees, the camera's place, and the light.
struct Pose {
  float ax = 0, ay = 0, az = 0, azr = 0;
  bool bSignal = true;
};

/// The phone's model, drawn from the formulas alone: slow, and without any code of the program's.
class Model {
 public:
  /// Reads the X file and its textures. Throws std::runtime_error when one cannot be read.
  explicit Model(const std::string& sFolder);

  [[nodiscard]] QImage Picture(const Pose& pose, QSize size) const;

 private:
  struct Corner {
    QVector3D position, normal;
    float u, v;
  };
  struct Subset {
    QVector3D diffuse, emissive;
    QImage texture;
    std::vector<std::array<Corner, 3>> triangles;
  };
  std::vector<Subset> m_subsets;
};

}  // namespace quillorbit::reference
