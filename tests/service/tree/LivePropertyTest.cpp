#include "service/tree/LiveProperty.h"

#include <gmock/gmock.h>

namespace service::tree {
namespace {

store::Resource File() {
    store::Resource file;
    file.id = 17;
    file.parent = 4;
    file.name = "b c.txt";
    file.itemId = "store-17";
    file.owner = "anna";
    file.version = 3;
    file.size = 1234;
    file.modified = 1795169730500000000;
    return file;
}

store::Resource Folder() {
    store::Resource folder = File();
    folder.isCollection = true;
    return folder;
}

// By "{namespace}name", or the name alone in DAV:.
protocol::PropertyName NameOf(const std::string& name) {
    const std::size_t end = name.find('}');
    return end == std::string::npos ? protocol::PropertyName{"DAV:", name}
                                    : protocol::PropertyName{name.substr(1, end - 1), name.substr(end + 1)};
}

std::string Set(store::Resource& resource, const std::string& name, const std::string& value) {
    return FindLiveProperty(NameOf(name))->set(resource, value);
}

std::string Element(const std::string& name, const store::Resource& resource) {
    std::string xml;
    AppendElement(*FindLiveProperty(NameOf(name)), resource, xml);
    return xml;
}

TEST(LiveProperty, IsMissingWhereItIsEmpty) {
    EXPECT_EQ(Element("syncoption", File()), "");
    EXPECT_EQ(Element("attribute", File()), "");
    EXPECT_EQ(Element("checksummd5", File()), "");
    EXPECT_EQ(Element("getcontentlength", Folder()), "");
    EXPECT_EQ(Element("getetag", Folder()), "");
    EXPECT_EQ(Element("getcontentlength", File()), "<D:getcontentlength>1234</D:getcontentlength>");
}

TEST(LiveProperty, SyncPropertiesHaveOnlyThoseThatAreNotEmpty) {
    EXPECT_EQ(Element("syncproperties", File()),
              "<P:syncproperties><P:resourceid>17</P:resourceid><P:parentid>4</P:parentid><P:version>3</P:version>"
              "<P:versionid>store-17-3</P:versionid><P:itemid>store-17</P:itemid><P:ownerid>anna</P:ownerid>"
              "<P:privileges>rw</P:privileges><P:visibility>show</P:visibility>"
              "<O:mtime>1795169730.5</O:mtime></P:syncproperties>");
}

TEST(LiveProperty, ClassTypeFollowsTheKindUntilItIsSet) {
    store::Resource file = File();
    store::Resource folder = Folder();
    EXPECT_THAT(Element("resourceclasstype", file), testing::HasSubstr(">drovane.objects.File<"));
    EXPECT_THAT(Element("resourceclasstype", folder), testing::HasSubstr(">drovane.objects.Folder<"));
    EXPECT_EQ(Set(folder, "resourceclasstype", "DROVANE.Objects.form"), "");
    EXPECT_THAT(Element("resourceclasstype", folder), testing::HasSubstr(">DROVANE.Objects.form<"));
    EXPECT_EQ(Set(folder, "resourceclasstype", ""), "");
    EXPECT_THAT(Element("resourceclasstype", folder), testing::HasSubstr(">drovane.objects.Folder<"));
    EXPECT_EQ(Set(file, "resourceclasstype", "drovane.objects.Memo"), "");
}

TEST(LiveProperty, ClassTypeThatTheResourceCannotHaveIsRefused) {
    store::Resource file = File();
    store::Resource folder = Folder();
    EXPECT_NE(Set(folder, "resourceclasstype", "drovane.objects.FILE"), "");
    for (const char* type : {"Folder", "Project", "Form"}) {
        EXPECT_EQ(Set(folder, "resourceclasstype", std::string("drovane.objects.") + type), "");
        EXPECT_NE(Set(file, "resourceclasstype", std::string("drovane.objects.") + type), "");
    }
    for (const char* type : {"Folder", "drovane.objects.", "drovane.objects.<b>", "other.objects.File"}) {
        EXPECT_NE(Set(file, "resourceclasstype", type), "");
    }
    EXPECT_EQ(file.classType, "");
}

TEST(LiveProperty, ValuesAreChecked) {
    store::Resource file = File();
    store::Resource folder = Folder();
    EXPECT_EQ(Set(file, "visibility", "hide"), "");
    EXPECT_NE(Set(file, "visibility", "Hide"), "");
    EXPECT_NE(Set(file, "visibility", ""), "");
    EXPECT_NE(Set(file, "ownerid", ""), "");
    EXPECT_NE(Set(file, "privileges", ""), "");
    EXPECT_EQ(Set(file, "attribute", " "), "");
    EXPECT_EQ(Set(file, "attribute", "~"), "");
    EXPECT_NE(Set(file, "attribute", "ab"), "");
    EXPECT_NE(Set(file, "attribute", "\x7F"), "");
    EXPECT_NE(Set(file, "attribute", "\xC3\xA4"), "");
    EXPECT_EQ(Set(file, "linksextractedat", "Fri, 20 Nov 2026 10:15:30 GMT"), "");
    EXPECT_EQ(Set(file, "linksextractedat", "2026-11-20T10:15:30Z"), "");
    EXPECT_NE(Set(file, "linksextractedat", "20.11.2026"), "");
    EXPECT_NE(Set(folder, "linksextractedat", "2026-11-20T10:15:30Z"), "");
    EXPECT_EQ(file.attribute, "~");
    EXPECT_EQ(file.visibility, "hide");
}

TEST(LiveProperty, DisplayNameIsTheNameUnlessSet) {
    store::Resource file = File();
    EXPECT_THAT(Element("displayname", file), testing::HasSubstr(">b c.txt<"));
    Set(file, "displayname", "A & B");
    EXPECT_THAT(Element("displayname", file), testing::HasSubstr(">A &amp; B<"));
}

TEST(LiveProperty, TimeOfAFileIsKeptToTheNanosecond) {
    store::Resource file = File();
    EXPECT_EQ(Set(file, "{urn:ovsync}mtime", "1795169730.000000001"), "");
    EXPECT_EQ(Element("{urn:ovsync}mtime", file), "<O:mtime>1795169730.000000001</O:mtime>");
    EXPECT_EQ(Element("getlastmodified", file), "<D:getlastmodified>Fri, 20 Nov 2026 10:15:30 GMT</D:getlastmodified>");
    for (const char* bad : {"", "x", "-1", "1.", ".5", "1,5", "9999999999999999999"}) {
        EXPECT_NE(Set(file, "{urn:ovsync}mtime", bad), "") << bad;
    }
    EXPECT_EQ(file.modified, 1795169730000000001);
    store::Resource folder = Folder();
    EXPECT_NE(Set(folder, "{urn:ovsync}mtime", "1"), "");
    EXPECT_EQ(Element("{urn:ovsync}mtime", folder), "");
}

TEST(LiveProperty, OnlyAFileThatIsExecutableSaysSo) {
    const std::string name = "{http://apache.org/dav/props/}executable";
    store::Resource file = File();
    EXPECT_EQ(Element(name, file), "");
    EXPECT_EQ(Set(file, name, "T"), "");
    EXPECT_EQ(Element(name, file), "<A:executable>T</A:executable>");
    EXPECT_THAT(Element("syncproperties", file), testing::HasSubstr("<A:executable>T</A:executable>"));
    for (const char* off : {"F", ""}) {
        EXPECT_EQ(Set(file, name, "T"), "");
        EXPECT_EQ(Set(file, name, off), "");
        EXPECT_FALSE(file.isExecutable);
    }
    EXPECT_NE(Set(file, name, "true"), "");
    store::Resource folder = Folder();
    EXPECT_NE(Set(folder, name, "T"), "");
}

}  // namespace
}  // namespace service::tree
