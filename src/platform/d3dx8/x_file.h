#pragma once

#include <memory>
#include <string>

#include "platform/d3dx8/x_tokens.h"

namespace quillorbit::d3dx8 {

/// How many bytes a model file may have, and what it contains compressed: one that makes the most
/// of them loads within a second.
inline constexpr std::size_t nModelFileLimit = 16 << 20;

/// A model file by its first 16 bytes: "xof ", the version 0302 or 0303; "txt ", "bin ", "tzip" or
/// "bzip"; the bits of a floating-point number, 0032 or 0064.
class XFile {
 public:
  /// Throws D3DError when the bytes are no model file, or their compression is damaged.
  explicit XFile(std::string sBytes);
  XFile(const XFile&) = delete;
  XFile& operator=(const XFile&) = delete;

  [[nodiscard]] XTokens& Tokens() { return *m_tokens; }

 private:
  std::string m_sBytes;
  std::unique_ptr<XTokens> m_tokens;
};

}  // namespace quillorbit::d3dx8
