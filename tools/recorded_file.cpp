#include "tools/recorded_file.h"

#include <array>
#include <span>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include "platform/linux/process/file_descriptor.h"
#include "tools/system_call.h"

namespace quillorbit::tools {
namespace {

/// More than four hours at 200 datagrams a second.
constexpr std::size_t nMaxMebibytes = 64;

std::vector<std::byte> ReadAll(const std::string& sPath) {
  const linux_adapter::FileDescriptor file(
      Checked(open(sPath.c_str(), O_RDONLY | O_CLOEXEC), sPath));
  std::vector<std::byte> content;
  std::array<std::byte, 65536> block;
  while (const auto nRead = Checked(read(file.Get(), block.data(), block.size()), sPath)) {
    content.insert(content.end(), block.begin(), block.begin() + nRead);
    if (content.size() > nMaxMebibytes << 20)
      throw std::runtime_error(sPath + ": is longer than " + std::to_string(nMaxMebibytes) +
                               " MiB");
  }
  return content;
}

}  // namespace

std::vector<MotionData> ReadRecordedFile(const std::string& sPath) {
  const std::vector<std::byte> content = ReadAll(sPath);
  if (content.empty()) throw std::runtime_error(sPath + ": holds no datagram");
  if (content.size() % MotionData::nBytes != 0)
    throw std::runtime_error(sPath + ": its size is not a multiple of 20 bytes");

  std::vector<MotionData> datagrams;
  datagrams.reserve(content.size() / MotionData::nBytes);
  for (std::span<const std::byte> rest(content); !rest.empty();
       rest = rest.subspan(MotionData::nBytes))
    datagrams.push_back(MotionData::FromBytes(rest.first<MotionData::nBytes>()));
  return datagrams;
}

}  // namespace quillorbit::tools
