#include "linux/graphics/reference_renderer.h"

#include <algorithm>
#include <array>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <vector>

#include <QMatrix4x4>
#include <QPolygonF>

namespace quillorbit::reference {
namespace {

constexpr float fModelScale = 4, fAmbientLight = 0x20 / 255.0F;

struct Corner {
  QPointF at;  ///< on the screen: pixels, with whole coordinates at their centres
  float w;
  QVector3D colour;
  float u, v;
};

QVector3D ToVector(const aiVector3D& v) { return {v.x, v.y, v.z}; }
QVector3D ToVector(const aiColor3D& c) { return {c.r, c.g, c.b}; }

/// All light that falls on a surface of white: from all around, and from two opposite sides.
QVector3D Light(const QVector3D& normal, const QMatrix4x4& camera, bool bSignal) {
  QVector3D sum = QVector3D(1, 1, 1) * fAmbientLight;
  for (const QVector3D direction : {QVector3D(0, -1, -1), QVector3D(0, 1, 1)}) {
    const QVector3D towards = -camera.mapVector(direction).normalized();
    sum += (bSignal ? QVector3D(3, 3, 3) : QVector3D(5, 0, 0)) *
           std::max(0.0F, QVector3D::dotProduct(normal, towards));
  }
  return sum;
}

/// The four nearest texels; the texture repeats.
QVector3D Sample(const QImage& texture, float u, float v) {
  const float x = u * static_cast<float>(texture.width()) - 0.5F;
  const float y = v * static_cast<float>(texture.height()) - 0.5F;
  const float fLeft = std::floor(x), fTop = std::floor(y);
  const auto wrapped = [](int n, int nSize) { return (n % nSize + nSize) % nSize; };
  QVector3D sum;
  for (const int i : {0, 1, 2, 3}) {
    const QColor c = texture.pixel(wrapped(static_cast<int>(fLeft) + i % 2, texture.width()),
                                   wrapped(static_cast<int>(fTop) + i / 2, texture.height()));
    sum += QVector3D(c.redF(), c.greenF(), c.blueF()) * (i % 2 == 0 ? 1 - (x - fLeft) : x - fLeft) *
           (i < 2 ? 1 - (y - fTop) : y - fTop);
  }
  return sum;
}

/// Twice the area of a triangle: positive when it is clockwise on the screen.
double Area(QPointF a, QPointF b, QPointF c) {
  return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

void FillTriangle(QImage& picture, const std::array<Corner, 3>& p, const QImage& texture) {
  if (Area(p[0].at, p[1].at, p[2].at) <= 0) return;  // counter-clockwise, or seen edge on
  const QPolygonF outline({p[0].at, p[1].at, p[2].at});
  const QRect box = outline.boundingRect().toAlignedRect() & picture.rect();
  for (int y = box.top(); y <= box.bottom(); ++y) {
    for (int x = box.left(); x <= box.right(); ++x) {
      // The weight of a corner: how far the opposite edge is, in perspective.
      std::array<float, 3> weights{};
      for (std::size_t i = 0; i < 3; ++i)
        weights[i] =
            static_cast<float>(Area(p[(i + 1) % 3].at, p[(i + 2) % 3].at, QPointF(x, y))) / p[i].w;
      if (*std::min_element(weights.begin(), weights.end()) < 0) continue;
      const auto [a, b, c] = weights;
      const float fSum = a + b + c;
      const QVector3D texel = Sample(texture, (a * p[0].u + b * p[1].u + c * p[2].u) / fSum,
                                     (a * p[0].v + b * p[1].v + c * p[2].v) / fSum);
      const QVector3D seen =
          255 * texel * (a * p[0].colour + b * p[1].colour + c * p[2].colour) / fSum;
      picture.setPixel(x, y, qRgb(qRound(seen.x()), qRound(seen.y()), qRound(seen.z())));
    }
  }
}

}  // namespace

QImage Picture(const std::string& sFolder, const Pose& pose, QSize size) {
  Assimp::Importer importer;
  // The importer turns X files to its own conventions; this turns them back.
  const aiScene* const pScene =
      importer.ReadFile(sFolder + "/testPlane.x", aiProcess_ConvertToLeftHanded);
  if (pScene == nullptr) throw std::runtime_error(importer.GetErrorString());
  const auto fHalfView = static_cast<float>(std::tan(std::numbers::pi / 8));  // of 45 degrees
  QMatrix4x4 camera, world;
  camera.scale(-1, 1, -1);  // left-handed
  camera.lookAt({pose.az, pose.azr, 90}, {0, 0, 0}, {0, 1, 0});
  world.scale(fModelScale);
  world.rotate(pose.ax, 0, 0, 1);
  world.rotate(pose.ay, 1, 0, 0);
  const QMatrix4x4 worldView = camera * world;
  QImage picture(size, QImage::Format_RGB32);
  picture.fill(Qt::black);
  // The meshes are the subsets; their nodes move nothing.
  for (unsigned iMesh = 0; iMesh < pScene->mNumMeshes; ++iMesh) {
    const aiMesh& mesh = *pScene->mMeshes[iMesh];
    const aiMaterial& material = *pScene->mMaterials[mesh.mMaterialIndex];
    aiColor3D diffuse, emissive;
    aiString sTexture;
    material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
    material.Get(AI_MATKEY_COLOR_EMISSIVE, emissive);
    material.GetTexture(aiTextureType_DIFFUSE, 0, &sTexture);
    const QImage texture((sFolder + "/" + sTexture.C_Str()).c_str());
    if (texture.isNull()) throw std::runtime_error("a texture cannot be read");
    const auto corner = [&](unsigned i) {
      // The inverse transpose of a rotation that scales by s is that matrix over s squared.
      const QVector3D normal =
          worldView.mapVector(ToVector(mesh.mNormals[i])) / (fModelScale * fModelScale);
      QVector3D colour =
          ToVector(emissive) + ToVector(diffuse) * Light(normal, camera, pose.bSignal);
      for (int k = 0; k < 3; ++k) colour[k] = std::min(colour[k], 1.0F);
      const QVector3D place = worldView.map(ToVector(mesh.mVertices[i]));
      const float w = place.z(), fView = fHalfView * w;
      const QPointF at((place.x() / fView + 1.0) * size.width() / 2,
                       (1.0 - place.y() / fView) * size.height() / 2);
      return Corner{at, w, colour, mesh.mTextureCoords[0][i].x, mesh.mTextureCoords[0][i].y};
    };
    for (const aiFace& face : std::vector(mesh.mFaces, mesh.mFaces + mesh.mNumFaces))
      for (unsigned i = 2; i < face.mNumIndices; ++i)
        FillTriangle(
            picture,
            {corner(face.mIndices[0]), corner(face.mIndices[i - 1]), corner(face.mIndices[i])},
            texture);
  }
  return picture;
}

}  // namespace quillorbit::reference
