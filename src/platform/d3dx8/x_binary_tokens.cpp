#include "platform/d3dx8/x_binary_tokens.h"

#include <bit>

#include "platform/d3dx8/x_little_endian.h"

namespace quillorbit::d3dx8 {
namespace {

// The codes of the format's definition. Those from 12 to 18 are the brackets and dots of templates,
// those from 40 to 52 their types.
enum Code : std::uint16_t {
  codeName = 1,
  codeString = 2,
  codeInteger = 3,
  codeGuid = 5,
  codeIntegerList = 6,
  codeFloatList = 7,
  codeOpen = 10,
  codeClose = 11,
  codeFirstBracket = 12,
  codeLastBracket = 18,
  codeComma = 19,
  codeSemicolon = 20,
  codeTemplate = 31,
  codeFirstType = 40,
  codeLastType = 52,
};

bool IsOfTemplates(std::uint16_t nCode) {
  return (nCode >= codeFirstBracket && nCode <= codeLastBracket) ||
         (nCode >= codeFirstType && nCode <= codeLastType);
}

}  // namespace

XToken XBinaryTokens::Scan() {
  XToken token{XToken::Kind::End};
  while (true) {
    m_nTokenAt = m_nAt;
    if (m_nListLeft > 0) return ScanValue();
    if (m_nAt == m_bytes.size() || ScanCode(token)) return token;
  }
}

bool XBinaryTokens::ScanCode(XToken& token) {
  const auto nCode = TakeUnsigned<std::uint16_t>();
  switch (nCode) {
    case codeName:
      token = {XToken::Kind::Word, TakeCountedBytes()};
      return true;
    case codeString:
      token = ScanString();
      return true;
    case codeInteger:
      token = {XToken::Kind::Integer, {}, double(TakeUnsigned<std::uint32_t>())};
      return true;
    case codeGuid:
      token = {XToken::Kind::Guid, TakeBytes(16)};
      return true;
    case codeIntegerList:
    case codeFloatList:
      BeginList(nCode == codeFloatList);
      return false;
    case codeOpen:
      token = {XToken::Kind::Open};
      return true;
    case codeClose:
      token = {XToken::Kind::Close};
      return true;
    case codeComma:
    case codeSemicolon:
      return false;
    case codeTemplate:
      token = {XToken::Kind::Word, "template"};
      return true;
    default:
      if (!IsOfTemplates(nCode)) Refuse("there is no such code as " + std::to_string(nCode));
      token = {XToken::Kind::Other};
      return true;
  }
}

XToken XBinaryTokens::ScanString() {
  const XToken token = {XToken::Kind::Text, TakeCountedBytes()};
  // The separator behind it has 32 bits by the format's definition, and 16 in most files.
  if (m_bytes.size() - m_nAt >= 4) {
    const auto nNext = LittleEndian<std::uint32_t>(m_bytes.data() + m_nAt);
    if (nNext == codeComma || nNext == codeSemicolon) m_nAt += 4;
  }
  return token;
}

void XBinaryTokens::BeginList(bool bFloats) {
  m_bFloatList = bFloats;
  const auto nCount = TakeUnsigned<std::uint32_t>();
  if (nCount > (m_bytes.size() - m_nAt) / (bFloats ? m_nFloatSize : 4))
    Refuse("a list is longer than the rest of the file");
  m_nListLeft = nCount;
}

XToken XBinaryTokens::ScanValue() {
  --m_nListLeft;
  if (!m_bFloatList) return {XToken::Kind::Integer, {}, double(TakeUnsigned<std::uint32_t>())};
  const double dValue = m_nFloatSize == 8
                            ? std::bit_cast<double>(TakeUnsigned<std::uint64_t>())
                            : double{std::bit_cast<float>(TakeUnsigned<std::uint32_t>())};
  return {XToken::Kind::Float, {}, dValue};
}

std::string_view XBinaryTokens::TakeBytes(std::size_t nCount) {
  if (nCount > m_bytes.size() - m_nAt) Refuse("the file is cut off");
  m_nAt += nCount;
  return m_bytes.substr(m_nAt - nCount, nCount);
}

std::string_view XBinaryTokens::TakeCountedBytes() {
  return TakeBytes(TakeUnsigned<std::uint32_t>());
}

template <class Unsigned>
Unsigned XBinaryTokens::TakeUnsigned() {
  return LittleEndian<Unsigned>(TakeBytes(sizeof(Unsigned)).data());
}

std::size_t XBinaryTokens::ValuesLeft() const { return (m_bytes.size() - m_nAt) / 4; }

std::string XBinaryTokens::Place() const { return "byte " + std::to_string(m_nTokenAt); }

}  // namespace quillorbit::d3dx8
