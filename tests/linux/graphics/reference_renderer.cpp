#include "linux/graphics/reference_renderer.h"

#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include <QMatrix4x4>

namespace quillorbit::reference {
namespace {

/// A corner on the screen: pixels, with whole coordinates at their centres.
struct Point {
  double x, y, w;
  QVector3D colour;
  float u, v;
};

/// All light that falls from two opposite sides, on a surface of white.
QVector3D Light(const QVector3D& normal, const QMatrix4x4& camera, bool bSignal) {
  QVector3D sum;
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
  QVector3D sum;
  for (const int i : {0, 1, 2, 3}) {
    const auto wrapped = [](int n, int nSize) { return (n % nSize + nSize) % nSize; };
    const QRgb c = texture.pixel(wrapped(static_cast<int>(fLeft) + i % 2, texture.width()),
                                 wrapped(static_cast<int>(fTop) + i / 2, texture.height()));
    sum += QVector3D(static_cast<float>(qRed(c)), static_cast<float>(qGreen(c)),
                     static_cast<float>(qBlue(c))) *
           (i % 2 == 0 ? 1 - (x - fLeft) : x - fLeft) * (i < 2 ? 1 - (y - fTop) : y - fTop);
  }
  return sum;
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
  if (Area(p[0], p[1], p[2].x, p[2].y) <= 0) return;  // counter-clockwise, or seen edge on
  const auto [left, right] = std::minmax({p[0].x, p[1].x, p[2].x});
  const auto [top, bottom] = std::minmax({p[0].y, p[1].y, p[2].y});
  const int nLast = std::min(picture.height() - 1, static_cast<int>(bottom));
  for (int y = std::max(0, static_cast<int>(std::ceil(top))); y <= nLast; ++y) {
    for (int x = std::max(0, static_cast<int>(std::ceil(left)));
         x <= std::min(picture.width() - 1, static_cast<int>(right)); ++x) {
      QVector3D colour;
      float u = 0, v = 0, fSum = 0;
      bool bInside = true;
      for (std::size_t i = 0; i < 3; ++i) {  // the weight of a corner: how far the opposite edge is
        const Point &a = p[(i + 1) % 3], &b = p[(i + 2) % 3];
        const double dArea = Area(a, b, x, y);
        const auto fWeight = static_cast<float>(dArea / p[i].w);
        bInside = bInside && IsInside(a, b, dArea);
        colour += p[i].colour * fWeight;
        u += p[i].u * fWeight;
        v += p[i].v * fWeight;
        fSum += fWeight;
      }
      if (!bInside) continue;
      const QVector3D seen = colour / fSum * Sample(texture, u / fSum, v / fSum);
      picture.setPixel(x, y, qRgb(qRound(seen.x()), qRound(seen.y()), qRound(seen.z())));
    }
  }
}

QVector3D ToVector(const aiVector3D& v) { return {v.x, v.y, v.z}; }
QVector3D ToVector(const aiColor3D& c) { return {c.r, c.g, c.b}; }

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
    pScene->mMaterials[i]->Get(AI_MATKEY_COLOR_DIFFUSE, diffuse);
    pScene->mMaterials[i]->Get(AI_MATKEY_COLOR_EMISSIVE, emissive);
    pScene->mMaterials[i]->GetTexture(aiTextureType_DIFFUSE, 0, &sTexture);
    const QImage texture((sFolder + "/" + sTexture.C_Str()).c_str());
    if (texture.isNull()) throw std::runtime_error("a texture cannot be read");
    m_subsets[i] = {ToVector(diffuse), ToVector(emissive), texture, {}};
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
  constexpr float fModelScale = 4, fAmbientLight = 0x20 / 255.0F;
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
  for (const Subset& subset : m_subsets) {
    for (const auto& triangle : subset.triangles) {
      std::array<Point, 3> points{};
      for (std::size_t i = 0; i < 3; ++i) {
        const auto& [position, normal, u, v] = triangle[i];
        // The inverse transpose of a rotation that scales by s is that matrix over s squared.
        const QVector3D turned = worldView.mapVector(normal) / (fModelScale * fModelScale);
        const QVector3D light = Light(turned, camera, pose.bSignal);
        QVector3D colour =
            subset.emissive + subset.diffuse * (light + QVector3D(1, 1, 1) * fAmbientLight);
        for (int k = 0; k < 3; ++k) colour[k] = std::clamp(colour[k], 0.0F, 1.0F);
        const QVector3D place = worldView.map(position);
        const float w = place.z(), fView = fHalfView * w;
        points[i] = {(place.x() / fView + 1.0) * size.width() / 2,
                     (1.0 - place.y() / fView) * size.height() / 2,
                     w,
                     colour,
                     u,
                     v};
      }
      FillTriangle(picture, points, subset.texture);
    }
  }
  return picture;
}

}  // namespace quillorbit::reference
