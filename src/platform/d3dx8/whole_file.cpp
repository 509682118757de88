#include "platform/d3dx8/whole_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {
namespace {

namespace fs = std::filesystem;

bool AreEqualWithoutCase(const fs::path& a, const fs::path& b) {
  const auto small = [](char8_t c) { return c >= u8'A' && c <= u8'Z' ? c - u8'A' + u8'a' : c; };
  const std::u8string sA = a.u8string(), sB = b.u8string();
  return std::equal(sA.begin(), sA.end(), sB.begin(), sB.end(),
                    [&](char8_t x, char8_t y) { return small(x) == small(y); });
}

/// The entry of a folder whose name differs in case alone; of several the first in order. Empty
/// when there is none.
fs::path FindWithoutCase(const fs::path& folder, const fs::path& name) {
  fs::path found;
  std::error_code error;
  for (fs::directory_iterator i(folder, error); !error && i != fs::directory_iterator();
       i.increment(error))
    if (AreEqualWithoutCase(i->path().filename(), name) && (found.empty() || i->path() < found))
      found = i->path();
  return found;
}

/// The path of what is there under this path, or under one that differs in case; the path itself
/// when there is neither.
fs::path WithItsCase(const fs::path& path) {
  fs::path there;
  std::error_code error;
  for (const fs::path& part : path) {
    const fs::path next = there / part;
    there = fs::exists(next, error) ? next : FindWithoutCase(there, part);
    if (there.empty()) return path;
  }
  return there;
}

}  // namespace

std::string ReadWholeFile(const std::string& sFile, std::uintmax_t nLimit) {
  const auto refuse = [&](const std::string& sWhy) {
    throw platform::D3DError(platform::D3DXERR_INVALIDDATA, (sFile + ": " + sWhy).c_str());
  };
  const fs::path path = WithItsCase(std::u8string(sFile.begin(), sFile.end()));
  std::error_code error;
  if (!fs::is_regular_file(path, error)) refuse("there is no such file");
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff nSize = file.tellg();
  if (!file || nSize < 0) refuse("it cannot be read");
  if (static_cast<std::uintmax_t>(nSize) > nLimit)
    refuse("it is longer than " + std::to_string(nLimit >> 20U) + " MiB");
  std::string bytes(static_cast<std::size_t>(nSize), '\0');
  file.seekg(0);
  file.read(bytes.data(), static_cast<std::streamsize>(nSize));
  if (file.gcount() != nSize) refuse("it cannot be read");
  return bytes;
}

}  // namespace quillorbit::d3dx8
