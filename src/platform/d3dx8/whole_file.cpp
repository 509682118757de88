#include "platform/d3dx8/whole_file.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/dx8vb.h"

namespace quillorbit::d3dx8 {

std::string ReadWholeFile(const std::string& sFile, std::uintmax_t nLimit) {
  const auto refuse = [&](const char* sWhy) {
    throw platform::D3DError(platform::D3DXERR_INVALIDDATA, (sFile + ": " + sWhy).c_str());
  };
  const std::filesystem::path path(std::u8string(sFile.begin(), sFile.end()));
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) refuse("there is no such file");
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff nSize = file.tellg();
  if (!file || nSize < 0) refuse("it cannot be read");
  if (static_cast<std::uintmax_t>(nSize) > nLimit) refuse("it is too long");
  std::string bytes(static_cast<std::size_t>(nSize), '\0');
  file.seekg(0);
  file.read(bytes.data(), static_cast<std::streamsize>(nSize));
  if (file.gcount() != nSize) refuse("it cannot be read");
  return bytes;
}

}  // namespace quillorbit::d3dx8
