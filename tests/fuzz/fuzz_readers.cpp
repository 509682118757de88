#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/d3dx8/image_file.h"
#include "platform/d3dx8/mesh_geometry.h"
#include "platform/d3dx8/x_reader.h"

using namespace quillorbit;

namespace {

/// Whether every index is one of something that is there.
bool IsSound(const d3dx8::MeshGeometry& geometry) {
  return std::all_of(geometry.triangles.begin(), geometry.triangles.end(), [&](const auto& t) {
    return std::max({t.a, t.b, t.c}) < geometry.vertices.size() &&
           t.iSubset < std::max<std::size_t>(geometry.materials.size(), 1);
  });
}

}  // namespace

// Whatever is in a file, it becomes a model or an image, or is refused.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pBytes, std::size_t nBytes) {
  std::string sBytes(reinterpret_cast<const char*>(pBytes), nBytes);
  d3dx8::ImageBudget budget{.nPixels = 1U << 18U, .nFileBytes = nBytes};  // small ones are fast
  try {
    if (!sBytes.starts_with("xof "))
      static_cast<void>(d3dx8::DecodeImage(sBytes, budget));
    else if (!IsSound(d3dx8::BuildGeometry(d3dx8::ReadXModel(std::move(sBytes)))))
      std::abort();
  } catch (const platform::D3DError&) {
    return 0;
  }
  return 0;
}
