#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quillorbit::d3dx8 {

/// Undoes the compression of an X file. `compressed` is what follows the file's first 16 bytes: the
/// size of the whole uncompressed file, 32 bits, and the blocks. A block is its uncompressed and
/// its compressed size, 16 bits each, and the compressed bytes: "CK" and a raw deflate stream (RFC
/// 1951), which may repeat what is up to 32 KiB before it. Throws D3DError when the data are
/// damaged or would become longer than `nLimit` bytes.
[[nodiscard]] std::string InflateMszip(std::string_view compressed, std::size_t nLimit);

}  // namespace quillorbit::d3dx8
