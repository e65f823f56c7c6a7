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
    return file;
}

store::Resource Folder() {
    store::Resource folder = File();
    folder.isCollection = true;
    return folder;
}

std::string Set(store::Resource& resource, std::string_view name, const std::string& value) {
    return FindLiveProperty(name)->set(resource, value);
}

std::string Element(std::string_view name, const store::Resource& resource) {
    std::string xml;
    AppendElement(*FindLiveProperty(name), resource, xml);
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
              "<P:privileges>rw</P:privileges><P:visibility>show</P:visibility></P:syncproperties>");
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

}  // namespace
}  // namespace service::tree
