#include "platform/d3dx8/x_tokens.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include "platform/d3dx8/x_error.h"

namespace quillorbit::d3dx8 {
namespace {

constexpr double dLargest = 1e18;  // a product of two still is a 32-bit float

/// Whether a whole text is one number; std::from_chars takes no plus sign.
template <class T>
bool Parse(std::string_view text, T& value) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && pEnd == text.data() + text.size();
}

/// The beginning of a text from the file, for a message.
std::string Shown(std::string_view text) {
  std::string sShown(text.substr(0, 40));
  for (char& c : sShown)
    if (c < ' ' || c > '~') c = '?';
  return '"' + sShown + '"';
}

std::string Shown(const XToken& token) {
  switch (token.kind) {
    case XToken::Kind::Word:
    case XToken::Kind::Text:
      return Shown(token.text);
    case XToken::Kind::Guid:
      return "a GUID";
    case XToken::Kind::Integer:
    case XToken::Kind::Float:
      return "a number";
    case XToken::Kind::Open:
      return "\"{\"";
    case XToken::Kind::Close:
      return "\"}\"";
    case XToken::Kind::Other:
      return "a sign of templates";
    case XToken::Kind::End:
      break;
  }
  return "the end of the file";
}

}  // namespace

const XToken& XTokens::Peek() {
  if (!m_bPeeked) m_next = Scan();
  m_bPeeked = true;
  return m_next;
}

XToken XTokens::Take() {
  if (!m_bPeeked) return Scan();
  m_bPeeked = false;
  return m_next;
}

std::uint32_t XTokens::TakeInteger() {
  const XToken token = Take();
  if (token.kind == XToken::Kind::Integer) return static_cast<std::uint32_t>(token.dValue);
  std::uint32_t nValue = 0;
  if (token.kind != XToken::Kind::Word || !Parse(token.text, nValue))
    RefuseToken("a whole number", token);
  return nValue;
}

double XTokens::Number(const XToken& token) const {
  if (token.kind == XToken::Kind::Integer || token.kind == XToken::Kind::Float) return token.dValue;
  double dValue = 0;
  if (token.kind != XToken::Kind::Word || !Parse(token.text, dValue))
    RefuseToken("a number", token);
  return dValue;
}

float XTokens::TakeFloat() {
  const double dValue = Number(Take());
  if (!(std::abs(dValue) <= dLargest)) Refuse("a number is out of range");
  return static_cast<float>(dValue);
}

std::string_view XTokens::TakeText() {
  const XToken token = Take();
  if (token.kind != XToken::Kind::Text) RefuseToken("a text", token);
  return token.text;
}

std::uint32_t XTokens::TakeCount(std::uint32_t nValuesEach) {
  const std::uint32_t nCount = TakeInteger();
  CheckCount(nCount, nValuesEach);
  return nCount;
}

void XTokens::CheckCount(std::uint32_t nCount, std::uint32_t nValuesEach) const {
  if (std::uint64_t{nCount} * nValuesEach > ValuesLeft())
    Refuse("a count is larger than the rest of the file");
}

void XTokens::Refuse(const std::string& sWhy) const { RefuseModel(Place() + ": " + sWhy); }

void XTokens::RefuseToken(const char* pExpected, const XToken& token) const {
  Refuse(std::string(pExpected) + " is expected, not " + Shown(token));
}

}  // namespace quillorbit::d3dx8
