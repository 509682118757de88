#pragma once

#include <array>
#include <string>
#include <vector>

#include <QImage>
#include <QSize>

namespace quillorbit::reference {

struct Vector {
  double x = 0, y = 0, z = 0;
};

/// What a picture shows: the model's angles in degrees, the camera's place, and the light.
struct Pose {
  double ax = 0, ay = 0, az = 0, azr = 0;
  bool bSignal = true;
};

/// The phone's model, drawn in double precision from the formulas alone: slow, and without any
/// code of the program's.
class Model {
 public:
  /// Reads the X file and its textures. Throws std::runtime_error when one cannot be read.
  explicit Model(const std::string& sFolder);

  [[nodiscard]] QImage Picture(const Pose& pose, QSize size) const;

 private:
  struct Corner {
    Vector position, normal;
    double u, v;
  };
  struct Subset {
    Vector diffuse, emissive;
    QImage texture;
    std::vector<std::array<Corner, 3>> triangles;
  };
  std::vector<Subset> m_subsets;
};

}  // namespace quillorbit::reference
