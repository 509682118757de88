#include "settings/CSetup.h"

#include <algorithm>
#include <exception>
#include <stdexcept>

#include "base/Numbers.h"
#include "settings/Messages.h"

namespace quillorbit {
namespace {

constexpr std::string_view sRootElement = "quillorbit_profile";
constexpr std::uint16_t lStylesheetId = 11;
constexpr std::string_view sStylesheetType = "SETUP_XSL";

std::string MessageElement(std::size_t lIndex) { return "msg" + std::to_string(lIndex); }

void AppendElement(platform::DOMDocument& document, platform::IXMLDOMNode& parent,
                   std::string_view sName, std::string_view sText) {
  const auto element = document.createElement(sName);
  element->text(sText);
  parent.appendChild(*element);
}

/// The text of the node's first child element of that name; the default text when there is none,
/// when there is no node, or when the reading fails.
std::string ReadElement(platform::IXMLDOMNode* pNode, std::string_view sName,
                        std::string_view sDefault) {
  try {
    if (pNode != nullptr) {
      if (const auto element = pNode->selectSingleNode(sName)) return element->text();
    }
  } catch (const std::exception&) {
  }
  return std::string(sDefault);
}

}  // namespace

CSetup::CSetup(platform::Process& process, platform::Resources& resources,
               platform::XmlLibrary& xml)
    : m_process(process), m_xml(xml) {
  std::copy(defaultMessages.begin(), defaultMessages.end(), MessageTexts.begin());
  try {
    IndentStylesheet = resources.LoadResData(lStylesheetId, sStylesheetType);
  } catch (const std::exception&) {
    IndentStylesheet.clear();
  }
}

std::string_view CSetup::Msg(std::int16_t Index) const {
  if (Index < 0 || static_cast<std::size_t>(Index) >= MessageTexts.size()) return {};
  return MessageTexts[static_cast<std::size_t>(Index)];
}

bool CSetup::Load(const std::string& file) {
  const std::string path = ProfilePath(file);
  const auto document = m_xml.NewDOMDocument();
  if (!document->load(path)) return false;
  Deserialize(*document);
  return true;
}

bool CSetup::Save(const std::string& file) {
  const std::string path = ProfilePath(file);
  const auto stylesheet = m_xml.NewDOMDocument();
  if (!stylesheet->loadXML(IndentStylesheet))
    throw std::runtime_error("The stylesheet of the profile is missing");
  const auto document = m_xml.NewDOMDocument();
  Serialize(*document);
  if (!document->loadXML(document->transformNode(*stylesheet)))
    throw std::runtime_error("The profile could not be indented");
  document->save(path);
  return true;
}

void CSetup::Serialize(platform::DOMDocument& Src) const {
  const auto root = Src.createElement(sRootElement);
  AppendElement(Src, *root, "port", Decimal(Port));
  AppendElement(Src, *root, "samples", Decimal(Samples));
  AppendElement(Src, *root, "debug", DebugMode ? "1" : "0");
  for (std::size_t i = 0; i < MessageTexts.size(); ++i)
    AppendElement(Src, *root, MessageElement(i), MessageTexts[i]);
  Src.appendChild(*root);
}

void CSetup::Deserialize(platform::IXMLDOMNode& Src) {
  const auto root = Src.selectSingleNode(sRootElement);
  Port = RoundToInt32(ReadNumber(ReadElement(root.get(), "port", "5000")));
  Samples = RoundToInt32(ReadNumber(ReadElement(root.get(), "samples", "30")));
  DebugMode = ReadNumber(ReadElement(root.get(), "debug", "False")) != 0;
  for (std::size_t i = 0; i < MessageTexts.size(); ++i)
    MessageTexts[i] = ReadElement(root.get(), MessageElement(i), MessageTexts[i]);
}

std::string CSetup::ProfilePath(const std::string& file) const {
  if (!file.empty()) return file;
  return m_process.Path() + m_process.PathSeparator() + m_process.EXEName() + ".setup";
}

}  // namespace quillorbit
