#include "platform/linux/profile/xml_library.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxslt/security.h>
#include <libxslt/transform.h>
#include <libxslt/xslt.h>
#include <libxslt/xsltInternals.h>
#include <libxslt/xsltutils.h>

namespace quillorbit::linux_adapter {
namespace {

template <auto Free>
struct FreeBy {
  template <class T>
  void operator()(T* p) const {
    Free(p);
  }
};
void FreeXmlChars(xmlChar* p) { xmlFree(p); }

using ParserContext = std::unique_ptr<xmlParserCtxt, FreeBy<xmlFreeParserCtxt>>;
using Stylesheet = std::unique_ptr<xsltStylesheet, FreeBy<xsltFreeStylesheet>>;
using TransformContext = std::unique_ptr<xsltTransformContext, FreeBy<xsltFreeTransformContext>>;
using XmlChars = std::unique_ptr<xmlChar, FreeBy<FreeXmlChars>>;

void Silence(void*, const char*, ...) {}

void DenyAllToStylesheets() {
  const xsltSecurityPrefsPtr preferences = xsltNewSecurityPrefs();  // for the process's whole life
  if (preferences == nullptr) throw std::bad_alloc();
  for (const xsltSecurityOption option :
       {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE, XSLT_SECPREF_CREATE_DIRECTORY,
        XSLT_SECPREF_READ_NETWORK, XSLT_SECPREF_WRITE_NETWORK})
    xsltSetSecurityPrefs(preferences, option, xsltSecurityForbid);
  xsltSetDefaultSecurityPrefs(preferences);
}

/// Called at a DOCTYPE, before its internal subset is read. Allows none that could declare
/// entities.
void CheckDoctype(void* pContext, const xmlChar*, const xmlChar* pPublicId,
                  const xmlChar* pSystemId) {
  auto* const context = static_cast<xmlParserCtxtPtr>(pContext);
  const bool bHasInternalSubset = *context->input->cur == '[';
  if (pPublicId == nullptr && pSystemId == nullptr && !bHasInternalSubset) return;
  context->wellFormed = 0;  // stopping alone would leave it a good document
  xmlStopParser(context);
}

/// The input that the parser has not read yet.
struct Input {
  std::string_view sRest;
  xmlParserCtxtPtr context;
  bool bRefused = false;
};

/// Gives the parser the next part of its input; -1 when the document is refused. The parser
/// compares each attribute of an element with all the others, and each prefix with all the
/// namespaces in scope, so that their numbers have to be bounded. Small parts keep what it reads
/// ahead small.
int ReadPart(void* pInput, char* pBuffer, int nBufferBytes) {
  constexpr int nMostAttributes = 100;
  constexpr int nMostNamespaces = 100;
  constexpr std::size_t nPartBytes = 1024;
  Input& input = *static_cast<Input*>(pInput);
  // The parser needs five places for an attribute and two for a namespace.
  if (input.context->maxatts > 5 * 2 * nMostAttributes ||  // it makes room for twice as many
      input.context->nsNr > 2 * nMostNamespaces) {
    input.bRefused = true;
    return -1;
  }
  const std::size_t nBytes =
      std::min({input.sRest.size(), nPartBytes, static_cast<std::size_t>(nBufferBytes)});
  std::memcpy(pBuffer, input.sRest.data(), nBytes);
  input.sRest.remove_prefix(nBytes);
  return static_cast<int>(nBytes);
}

/// Recognises UTF-32, which libxml2 takes for UTF-16 or for big-endian, and removes the byte order
/// mark, which libxml2 leaves in a text whose encoding it is given. Null for other encodings.
const char* TakeEncoding(std::string_view& sXml) {
  using namespace std::string_view_literals;
  for (const auto& [sMark, sEncoding] : {std::pair("\xFF\xFE\0\0"sv, "UTF-32LE"),
                                         {"\0\0\xFE\xFF"sv, "UTF-32BE"},
                                         {"\xEF\xBB\xBF"sv, "UTF-8"}}) {
    if (!sXml.starts_with(sMark)) continue;
    sXml.remove_prefix(sMark.size());
    return sEncoding;
  }
  if (sXml.starts_with("<\0\0\0"sv)) return "UTF-32LE";
  return sXml.starts_with("\0\0\0<"sv) ? "UTF-32BE" : nullptr;
}

std::string ToString(const xmlChar* pText, int nLength) {
  return {reinterpret_cast<const char*>(pText), static_cast<std::size_t>(nLength)};
}

}  // namespace

void XmlDocDeleter::operator()(_xmlDoc* pDoc) const { xmlFreeDoc(pDoc); }

void InitXmlLibraries() {
  static const bool bDone = [] {
    xmlInitParser();
    xmlSetGenericErrorFunc(nullptr, Silence);
    xsltSetGenericErrorFunc(nullptr, Silence);
    DenyAllToStylesheets();
    return true;
  }();
  (void)bDone;
}

XmlDocPointer ParseXml(std::string_view sXml, XmlEncoding eEncoding) {
  if (sXml.size() > nXmlLimit) return nullptr;
  xmlSetGenericErrorFunc(nullptr, Silence);  // each thread has its own
  const ParserContext context(xmlNewParserCtxt());
  if (!context) throw std::bad_alloc();
  context->sax->internalSubset = CheckDoctype;
  int options = XML_PARSE_NONET | XML_PARSE_NOCDATA | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  const char* sEncoding = TakeEncoding(sXml);
  if (eEncoding == XmlEncoding::utf8) sEncoding = "UTF-8";
  if (sEncoding != nullptr) options |= XML_PARSE_IGNORE_ENC;
  Input input{sXml, context.get()};
  XmlDocPointer doc(
      xmlCtxtReadIO(context.get(), ReadPart, nullptr, &input, nullptr, sEncoding, options));
  return input.bRefused ? nullptr : std::move(doc);
}

std::string SerializeXml(_xmlDoc& document) {
  const char* sEncoding =
      document.encoding == nullptr ? "UTF-8" : reinterpret_cast<const char*>(document.encoding);
  xmlChar* pText = nullptr;
  int nLength = 0;
  xmlDocDumpMemoryEnc(&document, &pText, &nLength, sEncoding);
  const XmlChars owner(pText);
  return pText == nullptr ? std::string() : ToString(pText, nLength);
}

std::string TransformXml(_xmlDoc& document, const _xmlDoc& stylesheet) {
  // Compiling changes the document, and a compiled stylesheet owns it: hence the copy.
  XmlDocPointer copy(xmlCopyDoc(const_cast<xmlDocPtr>(&stylesheet), 1));
  if (!copy) throw std::bad_alloc();
  const Stylesheet compiled(xsltParseStylesheetDoc(copy.get()));
  if (!compiled) throw std::runtime_error("not an XSLT stylesheet");
  (void)copy.release();

  const TransformContext context(xsltNewTransformContext(compiled.get(), &document));
  if (!context) throw std::bad_alloc();
  const XmlDocPointer result(
      xsltApplyStylesheetUser(compiled.get(), &document, nullptr, nullptr, nullptr, context.get()));
  if (!result || context->state != XSLT_STATE_OK)
    throw std::runtime_error("the XSLT stylesheet failed");

  xmlChar* pText = nullptr;
  int nLength = 0;
  const int outcome = xsltSaveResultToString(&pText, &nLength, result.get(), compiled.get());
  const XmlChars owner(pText);
  if (outcome != 0) throw std::runtime_error("the stylesheet's result cannot be written");
  return pText == nullptr ? std::string() : ToString(pText, nLength);
}

}  // namespace quillorbit::linux_adapter
