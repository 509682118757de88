#include "platform/linux/profile/xml_library.h"

#include <stdexcept>

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

/// Called at a DOCTYPE, before anything in it has been read.
void RefuseDoctype(void* pContext, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* const context = static_cast<xmlParserCtxtPtr>(pContext);
  context->wellFormed = 0;  // stopping alone would leave it a good document
  xmlStopParser(context);
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
  const ParserContext context(xmlNewParserCtxt());
  if (!context) throw std::bad_alloc();
  context->sax->internalSubset = RefuseDoctype;
  int options = XML_PARSE_NONET | XML_PARSE_NOCDATA | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  const char* sEncoding = nullptr;
  if (eEncoding == XmlEncoding::utf8) {
    options |= XML_PARSE_IGNORE_ENC;
    sEncoding = "UTF-8";
  }
  return XmlDocPointer(xmlCtxtReadMemory(context.get(), sXml.data(), static_cast<int>(sXml.size()),
                                         nullptr, sEncoding, options));
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
