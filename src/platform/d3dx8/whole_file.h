#pragma once

#include <cstdint>
#include <string>

namespace quillorbit::d3dx8 {

/// The bytes of a file; its name is UTF-8. Where there is no file of that name, one is read whose
/// path differs in the case of ASCII letters alone: many models come from systems that ignore case.
/// Throws D3DError (D3DXERR_INVALIDDATA) when it is not a regular file that can be read, or longer
/// than `nLimit` bytes.
[[nodiscard]] std::string ReadWholeFile(const std::string& sFile, std::uintmax_t nLimit);

}  // namespace quillorbit::d3dx8
