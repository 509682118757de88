#include "platform/linux/profile/xml_document.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include "linux/support.h"
#include "platform/linux/process/resources.h"

namespace quillorbit::linux_tests {
namespace {

using namespace std::string_literals;

class XmlDocument : public testing::Test {
 protected:
  /// The text of a document in a file of these bytes.
  std::string Load(std::string_view sBytes) {
    WriteFile(m_profile, sBytes);
    return m_document->load(m_profile) ? m_document->text() : "(refused)";
  }
  std::string Warning(const std::string& sPath) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_document->load(sPath));
    return testing::internal::GetCapturedStderr();
  }

  /// Returns when the disk has it.
  void Save(const std::string& sPath, std::string_view sXml) {
    linux_adapter::LinuxXmlLibrary library(std::chrono::minutes(1));
    const auto document = library.NewDOMDocument();
    EXPECT_TRUE(document->loadXML(sXml));
    document->save(sPath);
  }

  linux_adapter::LinuxXmlLibrary m_library;
  const std::unique_ptr<platform::DOMDocument> m_document = m_library.NewDOMDocument();
  TemporaryFolder m_folder;
  std::string m_profile = m_folder / "test.setup";
};

TEST_F(XmlDocument, IsBuiltIndentedAndSavedWithEveryText) {
  const auto stylesheet = m_library.NewDOMDocument();
  ASSERT_TRUE(stylesheet->loadXML(linux_adapter::LinuxResources().LoadResData(11, "SETUP_XSL")));
  const auto root = m_document->createElement("r"), element = m_document->createElement("a");
  const std::string sText = " a&b &amp; &#65;\t\r<t>]]>\xC3\xA4\xF0\x9F\x8E\xAE\xEF\xBB\xBF ";
  element->text(sText);
  for (const auto& sBad : {"\x01"s, "a\0b"s, "\xC3"s, "\xED\xA0\x80"s, "\xEF\xBF\xBF"s})
    EXPECT_THROW(element->text(sBad), std::runtime_error);
  for (const auto& sBad : {""s, "1a"s, "a b"s, "a\0"s, "a:b"s, "\xFF"s})
    EXPECT_THROW((void)m_document->createElement(sBad), std::runtime_error);
  root->appendChild(*element);
  m_document->appendChild(*root);
  const std::string sIndented = m_document->transformNode(*stylesheet);
  EXPECT_TRUE(sIndented.starts_with(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\n  <a> a&amp;b &amp;amp;"));
  ASSERT_TRUE(m_document->loadXML(sIndented));
  m_document->save(m_profile);
  ASSERT_TRUE(m_document->load(m_profile));
  EXPECT_EQ(m_document->selectSingleNode("r")->selectSingleNode("a")->text(), sText);
}

TEST_F(XmlDocument, FindsTheFirstChildElementWhichOutlivesTheContent) {
  ASSERT_TRUE(m_document->loadXML(
      "<!--a--><r>x<b>0</b><a>1<c>2</c><!-- --><![CDATA[<3>]]></a><a>4</a><p:d xmlns:p='u'/></r>"));
  const auto root = m_document->selectSingleNode("r"), kept = root->selectSingleNode("a");
  EXPECT_EQ(m_document->text(), "x012<3>4");
  for (const char* sName : {"c", "d", "", "A", "p:d"})
    EXPECT_EQ(root->selectSingleNode(sName), nullptr) << sName;
  root->text("new");
  ASSERT_FALSE(m_document->loadXML("<r>"));
  EXPECT_EQ(m_document->selectSingleNode("r"), nullptr);
  EXPECT_EQ(kept->text(), "12<3>");
}

TEST_F(XmlDocument, IsReadInTheEncodingThatTheFileAnnounces) {
  std::string sLittle, sBig;
  for (const char c : "<?xml version='1.0' encoding='UTF-32'?><r>\xE4</r>"s) {
    sLittle += c + "\0\0\0"s;
    sBig += "\0\0\0"s + c;
  }
  for (const std::string& sBytes :
       {"<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE4</r>"s, "\xEF\xBB\xBF<r>\xC3\xA4</r>"s,
        "\xFF\xFE<\0r\0>\0\xE4\0<\0/\0r\0>\0"s, "\xFE\xFF\0<\0r\0>\0\xE4\0<\0/\0r\0>"s, sLittle,
        sBig, "\xFF\xFE\0\0"s + sLittle, "\0\0\xFE\xFF"s + sBig})
    EXPECT_EQ(Load(sBytes), "\xC3\xA4") << sBytes;
}

TEST_F(XmlDocument, IsRefusedWhenItIsBrokenOrNamesOtherFilesOrCostsTooMuch) {
  const std::string sUrl = "'file://" + (m_folder / "other").string() + "'";
  WriteFile(m_folder / "other", "<s>other</s>");
  std::string sAttributes, sNamespaces;
  for (int i = 0; i < 60'000; ++i) sAttributes += " a" + std::to_string(i) + "=''";
  for (int i = 0; i < 250; ++i) sNamespaces += "<r xmlns:a" + std::to_string(i) + "='u'>";
  for (int i = 0; i < 250; ++i) sNamespaces += "</r>";
  EXPECT_EQ(Load("<!DOCTYPE r><r a=''>d</r>"), "d");
  for (const std::string& sXml :
       {""s, "<r>a"s, "<r/><r/>"s, "<r>\xE4</r>"s, "<!DOCTYPE r><r>&x;</r>"s,
        "<?xml version='1.0' encoding='nonsense'?><r/>"s, "<!DOCTYPE r [<!ENTITY x 'y'>]><r/>"s,
        "<!DOCTYPE r [<!ENTITY % x SYSTEM " + sUrl + ">%x;]><r/>",
        "<!DOCTYPE r SYSTEM " + sUrl + "><r/>", "<r" + sAttributes + "/>", sNamespaces})
    EXPECT_EQ(Load(sXml), "(refused)") << sXml.substr(0, 60);

  const std::string sLongest = "<r>" + std::string(1'048'576 - 7, 'x') + "</r>";
  EXPECT_EQ(Load(sLongest).size(), 1'048'576U - 7);
  EXPECT_THROW(m_document->save(m_profile), std::system_error);  // longer with its declaration
  WriteFile(m_profile, sLongest + ' ');
  EXPECT_EQ(Warning(m_profile),
            "quillorbit: " + m_profile + " is larger than 1048576 bytes, so it is ignored\n");
  const std::string sPipe = m_folder / "pipe";
  ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
  EXPECT_EQ(Warning(sPipe), "quillorbit: " + sPipe + " is not a regular file, so it is ignored\n");
}

TEST_F(XmlDocument, ReplacesItsFileAndKeepsLinkModeAndWhatWasRefused) {
  const std::string sLink = m_folder / "link", sTarget = m_folder / "target";
  std::filesystem::create_symlink("target", sLink);
  for (const char* sBroken : {"<r>1", "<r>2"}) {
    WriteFile(sTarget, sBroken);
    ASSERT_EQ(chmod(sTarget.c_str(), 0606), 0);
    Save(sLink, "<r>new</r>");
    struct stat status {};
    EXPECT_EQ(lstat(sTarget.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0606u);
  }
  EXPECT_EQ(ReadFile(sLink), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>new</r>\n");
  EXPECT_TRUE(std::filesystem::is_symlink(sLink));
  EXPECT_EQ(ReadFile(sTarget + ".refused") + ReadFile(sTarget + ".refused-1"), "<r>1<r>2");
  for (const char* sPath : {"", "missing/test.setup"})
    EXPECT_THROW(Save(m_folder / sPath, "<r/>"), std::system_error) << sPath;
}

}  // namespace
}  // namespace quillorbit::linux_tests
