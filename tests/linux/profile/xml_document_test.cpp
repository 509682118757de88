#include "platform/linux/profile/xml_document.h"

#include <csignal>
#include <gtest/gtest.h>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "linux/support.h"
#include "platform/linux/process/resources.h"

namespace quillorbit::linux_tests {
namespace {

using platform::DOMDocument;
using platform::IXMLDOMNode;

class LinuxXmlTest : public testing::Test {
 protected:
  std::unique_ptr<DOMDocument> NewDocument() { return m_library.NewDOMDocument(); }
  void Append(DOMDocument& document, IXMLDOMNode& parent, const char* sName,
              std::string_view sText) {
    const auto element = document.createElement(sName);
    element->text(sText);
    parent.appendChild(*element);
  }
  /// A document <r><t>TEXT</t></r> that was built, saved and loaded again.
  std::string RoundTrip(std::string_view sText) {
    const auto written = NewDocument();
    const auto root = written->createElement("r");
    Append(*written, *root, "t", sText);
    written->appendChild(*root);
    written->save(m_profile);
    const auto read = NewDocument();
    if (!read->load(m_profile)) return "(not well formed)";
    return read->selectSingleNode("r")->selectSingleNode("t")->text();
  }
  bool Loads(std::string_view sBytes) {
    WriteFile(m_profile, sBytes);
    return NewDocument()->load(m_profile);
  }
  /// The text of the root element of a file of these bytes.
  std::string RootText(std::string_view sBytes) {
    WriteFile(m_profile, sBytes);
    const auto document = NewDocument();
    return document->load(m_profile) ? document->selectSingleNode("r")->text() : "(refused)";
  }
  std::vector<std::string> FilesInFolder() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
      names.push_back(entry.path().filename());
    return names;
  }

  linux_adapter::LinuxXmlLibrary m_library;
  TemporaryFolder m_folder;
  std::string m_profile = m_folder / "test.setup";
};

TEST_F(LinuxXmlTest, BuildsIndentsAndSavesADocument) {
  const std::string sStylesheet = linux_adapter::LinuxResources().LoadResData(11, "SETUP_XSL");
  EXPECT_EQ(sStylesheet.size(), 391u);
  const auto stylesheet = NewDocument();
  ASSERT_TRUE(stylesheet->loadXML(sStylesheet));
  const auto document = NewDocument();
  const auto root = document->createElement("profile");
  Append(*document, *root, "port", "5000");
  Append(*document, *root, "msg8", "Filter: ");
  document->appendChild(*root);
  constexpr const char* sExpected =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<profile>\n  <port>5000</port>\n  <msg8>Filter: </msg8>\n</profile>\n";
  const std::string sIndented = document->transformNode(*stylesheet);
  EXPECT_EQ(sIndented, sExpected);
  EXPECT_EQ(root->transformNode(*stylesheet), sExpected);  // the stylesheet is not used up
  ASSERT_TRUE(document->loadXML(sIndented));
  document->save(m_profile);
  EXPECT_EQ(ReadFile(m_profile), sExpected);
  EXPECT_THROW((void)linux_adapter::LinuxResources().LoadResData(12, "SETUP_XSL"),
               std::runtime_error);
}

TEST_F(LinuxXmlTest, KeepsEveryTextThatXmlCanHold) {
  for (const char* sText :
       {"", " ", " a  b ", "a & b &amp; &#65; &lt;", "<t>]]></t>", "\"'", "\t\n\r\r\n",
        "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xAE", "\xEF\xBB\xBF", "\xC2\x85\xE2\x80\xA8"})
    EXPECT_EQ(RoundTrip(sText), sText);
}

TEST_F(LinuxXmlTest, RefusesWhatXmlCannotHoldAndKeepsTheOldText) {
  const auto document = NewDocument();
  const auto element = document->createElement("a");
  element->text("old");
  using namespace std::string_view_literals;
  for (const auto sText : {"\x01"sv, "a\0b"sv, "\x7F\x80"sv, "\xC3"sv, "\xC0\xAF"sv,
                           "\xED\xA0\x80"sv, "\xEF\xBF\xBF"sv, "\xF4\x90\x80\x80"sv})
    EXPECT_THROW(element->text(sText), std::runtime_error);
  EXPECT_EQ(element->text(), "old");
  for (const auto sName : {""sv, "1a"sv, "a b"sv, "<"sv, "a\0"sv, "a:b"sv, "\xFF"sv})
    EXPECT_THROW((void)document->createElement(sName), std::runtime_error);
  EXPECT_THROW(document->text("text"), std::runtime_error);
}

TEST_F(LinuxXmlTest, SelectsTheFirstChildElementAndReadsItsWholeText) {
  const auto document = NewDocument();
  ASSERT_TRUE(
      document->loadXML("<!--a--><r>x<b>0</b><a>1<c>2</c><!-- --><![CDATA[<3>]]></a>"
                        "<a>4</a><p:d xmlns:p='u'>5</p:d></r>"));
  const auto root = document->selectSingleNode("r");
  EXPECT_EQ(root->selectSingleNode("a")->text(), "12<3>");
  EXPECT_EQ(document->text(), "x012<3>45");
  for (const char* sName : {"c", "d", "", "A", "p:d"})
    EXPECT_EQ(root->selectSingleNode(sName), nullptr) << sName;
  EXPECT_EQ(document->selectSingleNode("a"), nullptr);
  const auto kept = root->selectSingleNode("a");
  root->text("new");  // the old children are out of the tree, but not gone
  EXPECT_EQ(root->text(), "new");
  EXPECT_EQ(kept->text(), "12<3>");
  ASSERT_FALSE(document->loadXML("<r>"));
  EXPECT_EQ(document->selectSingleNode("r"), nullptr);
  EXPECT_EQ(kept->text(), "12<3>");
}

TEST_F(LinuxXmlTest, ReadsTheEncodingThatAFileDeclares) {
  using namespace std::string_literals;
  EXPECT_EQ(RootText("<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE4</r>"), "\xC3\xA4");
  EXPECT_EQ(RootText("\xEF\xBB\xBF<r>\xC3\xA4</r>"), "\xC3\xA4");
  EXPECT_EQ(RootText("\xFF\xFE<\0r\0>\0\xE4\0<\0/\0r\0>\0"s), "\xC3\xA4");
  EXPECT_EQ(RootText("\xFE\xFF\0<\0r\0>\0\xE4\0<\0/\0r\0>"s), "\xC3\xA4");
  EXPECT_EQ(RootText("<r>\xE4</r>"), "(refused)");
  EXPECT_EQ(RootText("<?xml version='1.0' encoding='nonsense'?><r>\xE4</r>"), "(refused)");

  const auto document = NewDocument();
  for (const char* sXml : {"<?xml version='1.0' encoding='UTF-16'?><r>\xC3\xA4</r>",
                           "<?xml version='1.0' encoding='nonsense'?><r>\xC3\xA4</r>",
                           "\xEF\xBB\xBF<r>\xC3\xA4</r>"}) {
    ASSERT_TRUE(document->loadXML(sXml)) << sXml;  // a text in UTF-8 whatever it declares
    EXPECT_EQ(document->text(), "\xC3\xA4");
  }
  WriteFile(m_profile, "<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE4</r>");
  ASSERT_TRUE(document->load(m_profile));
  document->selectSingleNode("r")->text("\xC3\xB6\xE2\x82\xAC");
  document->save(m_profile);
  EXPECT_EQ(ReadFile(m_profile),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<r>\xF6&#8364;</r>\n");
}

TEST_F(LinuxXmlTest, RefusesEveryDoctypeAndReadsNoOtherFile) {
  const auto secret = m_folder / "secret";
  WriteFile(secret, "<s>secret</s>");
  const std::string sUrl = "file://" + secret.string();
  std::string sLaughs = "<!DOCTYPE r [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 12; ++i) {
    const std::string sInner = "&a" + std::to_string(i - 1) + ";";
    sLaughs += "<!ENTITY a" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) sLaughs += sInner;
    sLaughs += "'>";
  }
  testing::internal::CaptureStderr();
  for (const std::string& sXml :
       {sLaughs + "]><r>&a11;</r>", std::string("<!DOCTYPE r><r/>"),
        "<!DOCTYPE r [<!ENTITY x SYSTEM '" + sUrl + "'>]><r>&x;</r>",
        "<!DOCTYPE r [<!ENTITY % x SYSTEM '" + sUrl + "'>%x;]><r/>",
        "<!DOCTYPE r SYSTEM '" + sUrl + "'><r/>", std::string("<r>&undeclared;</r>")}) {
    EXPECT_FALSE(Loads(sXml)) << sXml.substr(0, 100);
    EXPECT_FALSE(NewDocument()->loadXML(sXml));
  }
  const auto document = NewDocument();
  ASSERT_TRUE(document->loadXML("<r/>"));
  const auto empty = NewDocument();
  EXPECT_THROW((void)document->transformNode(*empty), std::runtime_error);
  EXPECT_THROW((void)document->transformNode(*document), std::runtime_error);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LinuxXmlTest, RefusesBrokenAndEndlessFiles) {
  const std::string sWhole = "<?xml version='1.0'?><r><a b='c'>d</a><!--e--></r>";
  for (std::size_t n = 0; n < sWhole.size(); ++n) EXPECT_FALSE(Loads(sWhole.substr(0, n))) << n;
  EXPECT_TRUE(Loads(sWhole));
  EXPECT_FALSE(Loads(sWhole + "<r/>"));
  std::string sDeep;
  for (int i = 0; i < 100000; ++i) sDeep += "<a>";
  EXPECT_FALSE(Loads(sDeep));

  WriteFile(m_profile, "<r>");
  std::filesystem::resize_file(m_profile, 100'000'000);  // sparse
  EXPECT_FALSE(NewDocument()->load(m_profile));
  EXPECT_FALSE(NewDocument()->loadXML("<r>" + std::string(100'000'000, 'x') + "</r>"));

  const std::string sPipe = m_folder / "pipe";
  ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
  for (const std::string& sPath : {sPipe, std::string("/dev/zero"), m_folder.Path().string(),
                                   std::string(m_folder / "missing"), std::string()})
    EXPECT_FALSE(NewDocument()->load(sPath)) << sPath;
}

TEST_F(LinuxXmlTest, SavesOverTheOldFileAsAWholeAndKeepsLinksAndPermissions) {
  const auto document = NewDocument();
  ASSERT_TRUE(document->loadXML("<r>new</r>"));
  const mode_t old = umask(027);
  document->save(m_profile);
  umask(old);
  struct stat status {};
  ASSERT_EQ(stat(m_profile.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);

  std::filesystem::create_directory(m_folder / "sub");
  const std::string sTarget = m_folder / "sub/target", sLink = m_folder / "link";
  WriteFile(sTarget, "old");
  ASSERT_EQ(chmod(sTarget.c_str(), 0606), 0);
  std::filesystem::create_symlink("sub/target", m_folder / "link2");
  std::filesystem::create_symlink(m_folder / "link2", sLink);
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(m_folder.Path());
  document->save("link");  // a path without a folder, too
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::is_symlink(sLink));
  EXPECT_EQ(ReadFile(sTarget), ReadFile(m_profile));
  ASSERT_EQ(stat(sTarget.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0606u);
  std::filesystem::remove(sTarget);
  document->save(sLink);  // to where the link would lead
  EXPECT_EQ(ReadFile(sTarget), ReadFile(m_profile));
}

TEST_F(LinuxXmlTest, LeavesTheOldFileWholeWhenItCannotSave) {
  const auto document = NewDocument();
  EXPECT_THROW(document->save(m_profile), std::system_error);  // it is empty
  ASSERT_TRUE(document->loadXML("<r>" + std::string(100'000, 'x') + "</r>"));
  WriteFile(m_profile, "old");

  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{4096, limit.rlim_max};
  std::signal(SIGXFSZ, SIG_IGN);  // the write then fails half-way, as on a full disk
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_THROW(document->save(m_profile), std::system_error);
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(ReadFile(m_profile), "old");
  EXPECT_EQ(FilesInFolder(), std::vector<std::string>{"test.setup"});

  std::filesystem::create_symlink("loop", m_folder / "loop");
  const std::string sPipe = m_folder / "pipe";
  ASSERT_EQ(mkfifo(sPipe.c_str(), 0600), 0);
  for (const std::string& sPath : {std::string("/proc/self/test.setup"), m_folder.Path().string(),
                                   sPipe, std::string(m_folder / "missing/test.setup"),
                                   std::string(m_folder / "loop"), std::string()})
    EXPECT_THROW(document->save(sPath), std::system_error) << sPath;
  EXPECT_TRUE(std::filesystem::is_fifo(sPipe));
}

}  // namespace
}  // namespace quillorbit::linux_tests
