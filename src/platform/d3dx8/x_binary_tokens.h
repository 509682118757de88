#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/d3dx8/x_tokens.h"

namespace quillorbit::d3dx8 {

/// The binary form: 16-bit codes, least significant byte first, and what belongs to each.
class XBinaryTokens : public XTokens {
 public:
  /// `bytes`, which has to outlive this, is read from `nBegin` on; a floating-point number has
  /// `nFloatSize` bytes: 4 or 8.
  XBinaryTokens(std::string_view bytes, std::size_t nBegin, std::size_t nFloatSize)
      : m_bytes(bytes), m_nAt(nBegin), m_nFloatSize(nFloatSize) {}

 protected:
  XToken Scan() override;
  [[nodiscard]] std::size_t ValuesLeft() const override;
  [[nodiscard]] std::string Place() const override;

 private:
  /// The next token, unless it is a separator or the beginning of a list.
  bool ScanCode(XToken& token);
  XToken ScanString();
  XToken ScanValue();
  void BeginList(bool bFloats);
  std::string_view TakeBytes(std::size_t nCount);
  std::string_view TakeCountedBytes();
  template <class Unsigned>
  Unsigned TakeUnsigned();

  std::string_view m_bytes;
  std::size_t m_nAt;
  std::size_t m_nFloatSize;
  std::size_t m_nTokenAt = 0;
  std::uint32_t m_nListLeft = 0;  ///< values of the list that is being read
  bool m_bFloatList = false;
};

}  // namespace quillorbit::d3dx8
