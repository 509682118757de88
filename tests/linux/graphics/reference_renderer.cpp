#include "linux/graphics/reference_renderer.h"

#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include <QString>

namespace quillorbit::reference {
namespace {

/// Rows; points are row vectors and stand in front of it.
using Matrix = std::array<std::array<double, 4>, 4>;

constexpr double dModelScale = 4;
constexpr double dAmbientLight = 0x20 / 255.0;

double Dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector Cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Vector Times(const Vector& a, double d) { return {a.x * d, a.y * d, a.z * d}; }
Vector Times(const Vector& a, const Vector& b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }
Vector Plus(const Vector& a, const Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Vector Normalised(const Vector& a) { return Times(a, 1 / std::sqrt(Dot(a, a))); }
Vector Clamped(const Vector& a) {
  return {std::clamp(a.x, 0.0, 1.0), std::clamp(a.y, 0.0, 1.0), std::clamp(a.z, 0.0, 1.0)};
}

Matrix Product(const Matrix& a, const Matrix& b) {
  Matrix product{};
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t j = 0; j < 4; ++j)
      for (std::size_t k = 0; k < 4; ++k) product[i][j] += a[i][k] * b[k][j];
  return product;
}

/// A point (w = 1) or a direction (w = 0) by a matrix without projection.
Vector Transformed(const Vector& v, double w, const Matrix& m) {
  const auto column = [&](std::size_t j) {
    return v.x * m[0][j] + v.y * m[1][j] + v.z * m[2][j] + w * m[3][j];
  };
  return {column(0), column(1), column(2)};
}

Matrix World(const Pose& pose) {
  const double x = pose.ay * std::numbers::pi / 180, z = pose.ax * std::numbers::pi / 180;
  const Matrix aboutX = {{{1, 0, 0, 0},
                          {0, std::cos(x), std::sin(x), 0},
                          {0, -std::sin(x), std::cos(x), 0},
                          {0, 0, 0, 1}}};
  const Matrix aboutZ = {{{std::cos(z), std::sin(z), 0, 0},
                          {-std::sin(z), std::cos(z), 0, 0},
                          {0, 0, 1, 0},
                          {0, 0, 0, 1}}};
  const Matrix scaling = {
      {{dModelScale, 0, 0, 0}, {0, dModelScale, 0, 0}, {0, 0, dModelScale, 0}, {0, 0, 0, 1}}};
  return Product(Product(aboutX, aboutZ), scaling);
}

/// Left-handed, to the origin.
Matrix Camera(const Pose& pose) {
  const Vector eye = {pose.az, pose.azr, 90};
  const Vector z = Normalised(Times(eye, -1));
  const Vector x = Normalised(Cross({0, 1, 0}, z));
  const Vector y = Cross(z, x);
  return {{{x.x, y.x, z.x, 0},
           {x.y, y.y, z.y, 0},
           {x.z, y.z, z.z, 0},
           {-Dot(x, eye), -Dot(y, eye), -Dot(z, eye), 1}}};
}

/// A corner on the screen: pixels, with whole coordinates at their centres.
struct Point {
  double x, y, w;
  Vector colour;
  double u, v;
};

Point Projected(const Vector& atCamera, QSize size) {
  const double dScale = 1 / std::tan(std::numbers::pi / 8);  // half of 45 degrees
  const double w = atCamera.z;
  return {(atCamera.x * dScale / w + 1) * size.width() / 2,
          (1 - atCamera.y * dScale / w) * size.height() / 2,
          w,
          {},
          0,
          0};
}

/// All light that falls from two opposite sides, on a surface of white.
Vector Light(const Vector& normal, const Matrix& camera, bool bSignal) {
  const Vector colour = bSignal ? Vector{3, 3, 3} : Vector{5, 0, 0};
  Vector sum;
  for (const Vector& direction : {Vector{0, -1, -1}, Vector{0, 1, 1}}) {
    const Vector towards = Times(Normalised(Transformed(direction, 0, camera)), -1);
    sum = Plus(sum, Times(colour, std::max(0.0, Dot(normal, towards))));
  }
  return sum;
}

Vector Texel(const QImage& texture, int x, int y) {
  const auto wrapped = [](int n, int nSize) { return (n % nSize + nSize) % nSize; };
  const QRgb rgb = texture.pixel(wrapped(x, texture.width()), wrapped(y, texture.height()));
  return {qRed(rgb) / 255.0, qGreen(rgb) / 255.0, qBlue(rgb) / 255.0};
}

Vector Sample(const QImage& texture, double u, double v) {
  const double x = u * texture.width() - 0.5, y = v * texture.height() - 0.5;
  const int iLeft = static_cast<int>(std::floor(x)), iTop = static_cast<int>(std::floor(y));
  const double dRight = x - iLeft, dBottom = y - iTop;
  const auto row = [&](int iRow) {
    return Plus(Times(Texel(texture, iLeft, iRow), 1 - dRight),
                Times(Texel(texture, iLeft + 1, iRow), dRight));
  };
  return Plus(Times(row(iTop), 1 - dBottom), Times(row(iTop + 1), dBottom));
}

/// Twice the area of a triangle: positive when it is clockwise on the screen.
double Area(const Point& a, const Point& b, double x, double y) {
  return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
}

/// Whether a pixel's centre is on the inner side of an edge; the top and left ones are inside.
bool IsInside(const Point& a, const Point& b, double dArea) {
  return dArea > 0 || (dArea == 0 && (b.y < a.y || (b.y == a.y && b.x > a.x)));
}

void FillTriangle(QImage& picture, const std::array<Point, 3>& p, const QImage& texture) {
  const double dArea = Area(p[0], p[1], p[2].x, p[2].y);
  if (dArea <= 0) return;  // counter-clockwise, or seen edge on
  const auto [left, right] = std::minmax({p[0].x, p[1].x, p[2].x});
  const auto [top, bottom] = std::minmax({p[0].y, p[1].y, p[2].y});
  const auto first = [](double d) { return std::max(0, static_cast<int>(std::ceil(d))); };
  const auto last = [](double d, int n) { return std::min(n - 1, static_cast<int>(d)); };
  for (int y = first(top); y <= last(bottom, picture.height()); ++y) {
    for (int x = first(left); x <= last(right, picture.width()); ++x) {
      std::array<double, 3> weights{};  // of a corner: how far the opposite edge is
      double dSum = 0;
      bool bInside = true;
      for (std::size_t i = 0; i < 3; ++i) {
        const Point &a = p[(i + 1) % 3], &b = p[(i + 2) % 3];
        const double d = Area(a, b, x, y);
        bInside = bInside && IsInside(a, b, d);
        weights[i] = d / p[i].w;
        dSum += weights[i];
      }
      if (!bInside) continue;
      Vector colour;
      double u = 0, v = 0;
      for (std::size_t i = 0; i < 3; ++i) {
        const double dPart = weights[i] / dSum;
        colour = Plus(colour, Times(p[i].colour, dPart));
        u += p[i].u * dPart;
        v += p[i].v * dPart;
      }
      const Vector seen = Times(colour, Sample(texture, u, v));
      const auto byte = [](double d) { return static_cast<int>(std::lround(255 * d)); };
      picture.setPixel(x, y, qRgb(byte(seen.x), byte(seen.y), byte(seen.z)));
    }
  }
}

Vector ToVector(const aiVector3D& v) { return {v.x, v.y, v.z}; }
Vector ToVector(const aiColor3D& c) { return {c.r, c.g, c.b}; }

}  // namespace

Model::Model(const std::string& sFolder) {
  Assimp::Importer importer;
  // The importer turns X files to its own conventions; this turns them back.
  const aiScene* const pScene =
      importer.ReadFile(sFolder + "/testPlane.x", aiProcess_ConvertToLeftHanded);
  if (pScene == nullptr) throw std::runtime_error(importer.GetErrorString());

  m_subsets.resize(pScene->mNumMaterials);
  for (unsigned i = 0; i < pScene->mNumMaterials; ++i) {
    aiColor3D diffuse, emissive;
    aiString sTexture;
    const aiMaterial& material = *pScene->mMaterials[i];
    material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
    material.Get(AI_MATKEY_COLOR_EMISSIVE, emissive);
    material.GetTexture(aiTextureType_DIFFUSE, 0, &sTexture);
    Subset& subset = m_subsets[i];
    subset.diffuse = ToVector(diffuse);
    subset.emissive = ToVector(emissive);
    subset.texture = QImage(QString::fromStdString(sFolder + "/" + sTexture.C_Str()));
    if (subset.texture.isNull()) throw std::runtime_error("a texture cannot be read");
  }
  // The meshes are the subsets; their nodes move nothing.
  for (unsigned iMesh = 0; iMesh < pScene->mNumMeshes; ++iMesh) {
    const aiMesh& mesh = *pScene->mMeshes[iMesh];
    const auto corner = [&](unsigned i) {
      const aiVector3D& uv = mesh.mTextureCoords[0][i];
      return Corner{ToVector(mesh.mVertices[i]), ToVector(mesh.mNormals[i]), uv.x, uv.y};
    };
    for (unsigned iFace = 0; iFace < mesh.mNumFaces; ++iFace) {
      const aiFace& face = mesh.mFaces[iFace];
      for (unsigned i = 2; i < face.mNumIndices; ++i)
        m_subsets[mesh.mMaterialIndex].triangles.push_back(
            {corner(face.mIndices[0]), corner(face.mIndices[i - 1]), corner(face.mIndices[i])});
    }
  }
}

QImage Model::Picture(const Pose& pose, QSize size) const {
  const Matrix camera = Camera(pose);
  const Matrix worldView = Product(World(pose), camera);
  QImage picture(size, QImage::Format_RGB32);
  picture.fill(Qt::black);
  for (const Subset& subset : m_subsets) {
    const Vector unlit = Plus(subset.emissive, Times(subset.diffuse, dAmbientLight));
    for (const auto& triangle : subset.triangles) {
      std::array<Point, 3> points{};
      for (std::size_t i = 0; i < 3; ++i) {
        const Corner& corner = triangle[i];
        // The inverse transpose of a rotation that scales by s is that matrix over s squared.
        const Vector normal =
            Times(Transformed(corner.normal, 0, worldView), 1 / (dModelScale * dModelScale));
        points[i] = Projected(Transformed(corner.position, 1, worldView), size);
        points[i].colour =
            Clamped(Plus(unlit, Times(subset.diffuse, Light(normal, camera, pose.bSignal))));
        points[i].u = corner.u;
        points[i].v = corner.v;
      }
      FillTriangle(picture, points, subset.texture);
    }
  }
  return picture;
}

}  // namespace quillorbit::reference
