#include "platform/d3dx8/x_file.h"

#include <string_view>
#include <utility>

#include "platform/d3dx8/mszip.h"
#include "platform/d3dx8/x_binary_tokens.h"
#include "platform/d3dx8/x_error.h"
#include "platform/d3dx8/x_text_tokens.h"

namespace quillorbit::d3dx8 {

XFile::XFile(std::string sBytes) : m_sBytes(std::move(sBytes)) {
  std::size_t nBegin = 16;
  const std::string sHead = m_sBytes.substr(0, nBegin);
  if (sHead.size() < nBegin || !sHead.starts_with("xof ")) RefuseModel("it is no X file");
  const std::string_view version = std::string_view(sHead).substr(4, 4);
  const std::string_view form = std::string_view(sHead).substr(8, 4);
  const std::string_view floatBits = std::string_view(sHead).substr(12, 4);
  if (version != "0302" && version != "0303") RefuseModel("X files of its version are unknown");
  if (floatBits != "0032" && floatBits != "0064")
    RefuseModel("its floating-point numbers have neither 32 nor 64 bits");

  const bool bText = form == "txt " || form == "tzip";
  if (!bText && form != "bin " && form != "bzip") RefuseModel("X files of its form are unknown");
  if (form == "tzip" || form == "bzip") {
    m_sBytes = InflateMszip(std::string_view(m_sBytes).substr(nBegin), nModelFileLimit);
    nBegin = 0;
  }
  if (bText)
    m_tokens = std::make_unique<XTextTokens>(m_sBytes, nBegin);
  else
    m_tokens = std::make_unique<XBinaryTokens>(m_sBytes, nBegin, floatBits == "0064" ? 8U : 4U);
}

}  // namespace quillorbit::d3dx8
