#include "platform/d3dx8/x_text_tokens.h"

#include <algorithm>

namespace quillorbit::d3dx8 {
namespace {

/// White space, control characters and separators.
bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' ' || c == ';' || c == ','; }

bool IsSign(char c) { return c == '{' || c == '}' || c == '<' || c == '>' || c == '"'; }

}  // namespace

XToken XTextTokens::Scan() {
  SkipBlanks();
  m_nTokenAt = m_nAt;
  if (m_nAt == m_text.size()) return {XToken::Kind::End};
  switch (m_text[m_nAt]) {
    case '{':
      return ScanSign(XToken::Kind::Open);
    case '}':
      return ScanSign(XToken::Kind::Close);
    case '>':
      return ScanSign(XToken::Kind::Other);
    case '"':
      return ScanText();
    case '<':
      return ScanGuid();
    default:
      return ScanWord();
  }
}

void XTextTokens::SkipBlanks() {
  for (; m_nAt < m_text.size(); ++m_nAt) {
    if (m_text[m_nAt] == '#' || AtComment()) {
      m_nAt = std::min(m_text.find('\n', m_nAt), m_text.size());
      if (m_nAt == m_text.size()) return;
    }
    if (!IsBlank(m_text[m_nAt])) return;
  }
}

bool XTextTokens::AtComment() const { return m_text.substr(m_nAt).starts_with("//"); }

XToken XTextTokens::ScanSign(XToken::Kind kind) {
  ++m_nAt;
  return {kind};
}

XToken XTextTokens::ScanText() {
  const std::size_t nBegin = m_nAt + 1;
  const std::size_t nEnd = m_text.find_first_of("\"\n", nBegin);
  if (nEnd == std::string_view::npos || m_text[nEnd] == '\n') Refuse("a text has no closing quote");
  m_nAt = nEnd + 1;
  return {XToken::Kind::Text, m_text.substr(nBegin, nEnd - nBegin)};
}

XToken XTextTokens::ScanGuid() {
  const std::size_t nBegin = m_nAt + 1;
  const std::size_t nEnd = m_text.find_first_of(">\n", nBegin);
  if (nEnd == std::string_view::npos || m_text[nEnd] == '\n') Refuse("a GUID has no closing \">\"");
  m_nAt = nEnd + 1;
  m_sGuid.clear();
  for (const char c : m_text.substr(nBegin, nEnd - nBegin))
    if (!IsBlank(c)) m_sGuid += static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return {XToken::Kind::Guid, m_sGuid};
}

XToken XTextTokens::ScanWord() {
  const std::size_t nBegin = m_nAt;
  do ++m_nAt;
  while (m_nAt < m_text.size() && !IsBlank(m_text[m_nAt]) && !IsSign(m_text[m_nAt]) &&
         !AtComment());
  return {XToken::Kind::Word, m_text.substr(nBegin, m_nAt - nBegin)};
}

// A value takes at least one digit and one separator.
std::size_t XTextTokens::ValuesLeft() const { return (m_text.size() - m_nAt) / 2; }

std::string XTextTokens::Place() const {
  const auto nLine = 1 + std::count(m_text.data(), m_text.data() + m_nTokenAt, '\n');
  return "line " + std::to_string(nLine);
}

}  // namespace quillorbit::d3dx8
