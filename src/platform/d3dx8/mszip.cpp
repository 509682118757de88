#include "platform/d3dx8/mszip.h"

#define ZLIB_CONST
#include <algorithm>
#include <cstdint>
#include <new>

#include <zlib.h>

#include "platform/d3dx8/x_error.h"
#include "platform/d3dx8/x_little_endian.h"

namespace quillorbit::d3dx8 {
namespace {

constexpr std::size_t nBlockLimit = 32768;  // also how far back a block may refer

/// zlib on raw deflate streams.
class Inflater {
 public:
  Inflater() {
    if (inflateInit2(&m_stream, -MAX_WBITS) != Z_OK) throw std::bad_alloc();
  }
  ~Inflater() { inflateEnd(&m_stream); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  /// Whether `deflated` is a whole stream of exactly `nSize` bytes, which go to `pOut`.
  bool Inflate(std::string_view deflated, std::string_view dictionary, char* pOut,
               std::size_t nSize) {
    inflateReset(&m_stream);
    inflateSetDictionary(&m_stream, Bytes(dictionary), static_cast<uInt>(dictionary.size()));
    m_stream.next_in = Bytes(deflated);
    m_stream.avail_in = static_cast<uInt>(deflated.size());
    m_stream.next_out = reinterpret_cast<Bytef*>(pOut);
    m_stream.avail_out = static_cast<uInt>(nSize);
    return inflate(&m_stream, Z_FINISH) == Z_STREAM_END && m_stream.avail_out == 0;
  }

 private:
  static const Bytef* Bytes(std::string_view s) { return reinterpret_cast<const Bytef*>(s.data()); }

  z_stream m_stream{};
};

}  // namespace

std::string InflateMszip(std::string_view compressed, std::size_t nLimit) {
  if (compressed.size() < 4) RefuseModel("the compressed data are cut off");
  const std::uint32_t nFileSize = LittleEndian<std::uint32_t>(compressed.data());
  compressed.remove_prefix(4);
  Inflater inflater;
  std::string out;
  while (compressed.size() >= 4) {
    const std::size_t nSize = LittleEndian<std::uint16_t>(compressed.data());
    const std::size_t nCompressed = LittleEndian<std::uint16_t>(compressed.data() + 2);
    compressed.remove_prefix(4);
    if (nCompressed > compressed.size()) RefuseModel("the compressed data are cut off");
    const std::string_view block = compressed.substr(0, nCompressed);
    compressed.remove_prefix(nCompressed);
    if (nSize == 0 || nSize > nBlockLimit || !block.starts_with("CK"))
      RefuseModel("the compressed data are damaged");
    if (nSize > nLimit - out.size())
      RefuseModel("the uncompressed file is longer than " + std::to_string(nLimit >> 20U) + " MiB");

    const std::size_t nBefore = out.size();
    out.resize(nBefore + nSize);
    const std::size_t nDictionary = std::min(nBefore, nBlockLimit);
    const std::string_view dictionary(out.data() + nBefore - nDictionary, nDictionary);
    if (!inflater.Inflate(block.substr(2), dictionary, out.data() + nBefore, nSize))
      RefuseModel("the compressed data are damaged");
  }
  // Some writers count the 16 bytes before the compressed data, others do not.
  if (out.size() + std::uint64_t{16} < nFileSize) RefuseModel("the compressed data are cut off");
  return out;
}

}  // namespace quillorbit::d3dx8
