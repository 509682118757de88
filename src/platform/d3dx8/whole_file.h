#pragma once

#include <cstdint>
#include <string>

namespace quillorbit::d3dx8 {

/// The bytes of a file; its name is UTF-8. Throws D3DError (D3DXERR_INVALIDDATA) when it is not a
/// regular file that can be read, or longer than `nLimit` bytes.
[[nodiscard]] std::string ReadWholeFile(const std::string& sFile, std::uintmax_t nLimit);

}  // namespace quillorbit::d3dx8
