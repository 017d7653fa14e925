#include <gtest/gtest.h>

#include <random>
#include <string>

#include "orv/File.h"
#include "orv/XMLFile.h"

using orv::CMemFile;
using orv::CString;
using orv::CXMLFile;
using orv::IFile;
using orv::SNameValuePair;
using orv::TArray;
using orv::TSharedPtr;
using CNode = CXMLFile::CNode;

namespace {

TSharedPtr<IFile> FileOf(const std::string& text)
{
    auto* f = new CMemFile();
    f->Create();
    f->Write(text.data(), text.size());
    f->SeekToBegin();
    return TSharedPtr<IFile>(f);
}

std::string Saved(const CXMLFile& xml)
{
    auto* f = new CMemFile();
    f->Create();
    TSharedPtr<IFile> p(f);
    if (!xml.Save(p)) return "(save failed)";
    return std::string(reinterpret_cast<const char*>(f->data()), f->size());
}

TArray<SNameValuePair> Attributes(std::initializer_list<std::pair<const char*, const char*>> list)
{
    TArray<SNameValuePair> out;
    for (auto& [n, v] : list) out.add(SNameValuePair(CString(n), CString(v)));
    return out;
}

// A region list document, built the way its writer builds one.
void BuildRoiList(CXMLFile& xml)
{
    ASSERT_NE(xml.Insert(new CNode(CString("roiList"),
                                   Attributes({{"activeRoiIndex", "0"}, {"imageHeight", "240"},
                                               {"imageWidth", "320"}, {"version", "1.6"}})),
                         true),
              nullptr);
    xml.Insert(new CNode(CString("imageRoi"), Attributes({{"paletteIndex", "-1"}, {"color", "#808080"}})), false);
    CNode* rois = xml.Insert(new CNode(CString("rois")), true);
    ASSERT_EQ(xml.GetCurr(), rois);
    for (int i = 1; i <= 3; ++i) {
        CNode* roi = rois->InsertChild(
            new CNode(CString("roi"), Attributes({{"name", CString::FromFormat("Rectangle %d", i).c_str()},
                                                  {"drawName", i == 2 ? "T" : "F"}})),
            true);
        CNode* points = roi->InsertChild(new CNode(CString("points")), true);
        for (int k = 0; k < 2; ++k) {
            auto* pt = new CNode(CString("point"));
            pt->SetAttribute(CString("x"), CString::FromFormat("%d", 10 * i + k));
            pt->SetAttribute(CString("y"), CString("0.5"));
            points->InsertChild(pt, true);
        }
    }
}

} // namespace

TEST(XMLFile, BuildSaveLoadNavigate)
{
    CXMLFile xml;
    BuildRoiList(xml);
    std::string text = Saved(xml);
    EXPECT_EQ(text.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>", 0), 0u) << text;
    // Attributes are written in the order they were given.
    EXPECT_NE(text.find("<roiList activeRoiIndex=\"0\" imageHeight=\"240\" imageWidth=\"320\" version=\"1.6\">"),
              std::string::npos)
        << text;

    CXMLFile back;
    ASSERT_TRUE(back.Load(FileOf(text)));
    CNode* root = back.GetCurr();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(back.FindFirst("roiList"), root);
    EXPECT_TRUE(root->GetAttributes().Exists("version"));
    EXPECT_FALSE(root->GetAttributes().Exists("Version")); // exact case
    EXPECT_STREQ(root->GetAttributes()["missing"].c_str(), "");
    EXPECT_STREQ(root->GetAttribute("missing", CString("-1")).c_str(), "-1");
    EXPECT_STREQ(root->GetAttribute("imageWidth", CString("-1")).c_str(), "320");

    CNode* image = root->FindChild("imageRoi");
    ASSERT_NE(image, nullptr);
    EXPECT_STREQ(image->GetAttribute("color").c_str(), "#808080");
    EXPECT_EQ(root->FindChild("nothing"), nullptr);

    CNode* rois = root->FindChild("rois");
    ASSERT_NE(rois, nullptr);
    std::string names;
    int points = 0;
    for (CNode* roi = rois->FindChild("roi"); roi; roi = roi->FindNext("roi")) {
        names += std::string(roi->GetAttribute("name").c_str()) + ";";
        for (CNode* p = roi->FindChild("points")->FindChild("point"); p; p = p->FindNext("point")) ++points;
    }
    EXPECT_EQ(names, "Rectangle 1;Rectangle 2;Rectangle 3;");
    EXPECT_EQ(points, 6);
    EXPECT_EQ(rois->ChildCount(), 3u);

    // FindFirst searches in document order and moves the current node.
    CNode* firstPoint = back.FindFirst("point");
    ASSERT_NE(firstPoint, nullptr);
    EXPECT_EQ(back.GetCurr(), firstPoint);
    EXPECT_STREQ(firstPoint->GetAttribute("x").c_str(), "10");
    EXPECT_EQ(back.FindFirst("absent"), nullptr);
    EXPECT_EQ(back.GetCurr(), firstPoint);
    EXPECT_EQ(back.FindFirst(nullptr), root);

    // Saving the loaded document gives the same text.
    EXPECT_EQ(Saved(back), text);
}

TEST(XMLFile, TextEscapingAndWhatIsKept)
{
    CXMLFile xml;
    CNode* root = xml.Insert(new CNode(CString("data")), true);
    root->SetAttribute(CString("quote"), CString("a \"b\" & <c> 'd'"));
    root->SetAttribute(CString("unit"), CString("\xC2\xB0" "C")); // degrees Celsius in UTF-8
    CNode* note = root->InsertChild(new CNode(CString("note")), true);
    note->SetText(CString("1 < 2 && 3 > 2"));
    root->InsertChild(new CNode(CString("first")), false);
    root->SetAttribute(CString("quote"), CString("replaced & kept in place"));

    CXMLFile back;
    ASSERT_TRUE(back.Load(FileOf(Saved(xml))));
    CNode* r = back.GetRoot();
    EXPECT_STREQ(r->GetAttribute("quote").c_str(), "replaced & kept in place");
    EXPECT_STREQ(r->GetAttribute("unit").c_str(), "\xC2\xB0" "C");
    EXPECT_STREQ(r->GetAttributes().at(0).name.c_str(), "quote");
    EXPECT_STREQ(r->FirstChild()->GetName().c_str(), "first");
    EXPECT_STREQ(r->FindChild("note")->GetText().c_str(), "1 < 2 && 3 > 2");

    // Comments, processing instructions and the document type go; CDATA and
    // character data of one element are joined; entities are not expanded.
    const std::string input =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]>\n"
        "<!-- head --><r k='v'><?pi x?><t>one<![CDATA[<two>]]>three<!-- c --></t><u>&b;</u></r>\n";
    ASSERT_TRUE(back.Load(FileOf(input)));
    r = back.GetRoot();
    EXPECT_EQ(r->ChildCount(), 2u);
    EXPECT_STREQ(r->FindChild("t")->GetText().c_str(), "one<two>three");
    EXPECT_LT(r->FindChild("u")->GetText().length(), 10u);
}

TEST(XMLFile, LoadRefusesBadInputAndKeepsTheDocument)
{
    CXMLFile xml;
    ASSERT_TRUE(xml.Load(FileOf("<keep a=\"1\"/>")));
    EXPECT_FALSE(xml.Load(TSharedPtr<IFile>()));
    for (const char* bad : {"", "   ", "just text", "<a><b></a>", "<a/><b/>", "<a/>trailing", "<a x=1/>",
                            "<?xml version=\"1.0\"?>", "<a>", "SROI\x01\x05", "<a b='1' b='2'", "\xFF\xFE\x00"}) {
        EXPECT_FALSE(xml.Load(FileOf(bad))) << bad;
        ASSERT_NE(xml.GetRoot(), nullptr);
        EXPECT_STREQ(xml.GetRoot()->GetName().c_str(), "keep") << bad;
        EXPECT_EQ(xml.GetCurr(), xml.GetRoot());
    }

    // Reading starts at the file's position.
    TSharedPtr<IFile> f = FileOf("junk<pos/>");
    f->Seek(4, IFile::seekBegin);
    EXPECT_TRUE(xml.Load(f));
    EXPECT_STREQ(xml.GetRoot()->GetName().c_str(), "pos");

    // Every cut of a valid document, and random damage to it, is refused or
    // read, never a crash.
    CXMLFile source;
    BuildRoiList(source);
    const std::string good = Saved(source);
    for (size_t n = 0; n < good.size(); ++n) {
        CXMLFile x;
        x.Load(FileOf(good.substr(0, n)));
    }
    std::mt19937 rng(1);
    for (int k = 0; k < 500; ++k) {
        std::string damaged = good;
        for (int j = 0; j < 4; ++j) damaged[rng() % damaged.size()] = static_cast<char>(rng());
        CXMLFile x;
        if (x.Load(FileOf(damaged))) (void)Saved(x);
    }
}

TEST(XMLFile, SaveRefusals)
{
    CXMLFile empty;
    EXPECT_EQ(Saved(empty), "(save failed)");
    CXMLFile xml;
    xml.Insert(new CNode(CString("ok")), true);
    EXPECT_FALSE(xml.Save(TSharedPtr<IFile>()));
    CNode* bad = xml.GetCurr()->InsertChild(new CNode(CString("has space")), true);
    EXPECT_EQ(Saved(xml), "(save failed)");
    bad->SetName(CString("fine"));
    bad->SetAttribute(CString("1st"), CString("x"));
    EXPECT_EQ(Saved(xml), "(save failed)");
    bad->GetAttributes().Remove("1st");
    EXPECT_NE(Saved(xml), "(save failed)");

    // A write that does not go through is a failure.
    unsigned char small[16];
    CMemFile narrow;
    narrow.Attach(small, sizeof small, false);
    EXPECT_FALSE(xml.Save(TSharedPtr<IFile>(&narrow, orv::noDestroy)));
}

TEST(XMLFile, OwnershipRules)
{
    CXMLFile xml;
    EXPECT_EQ(xml.Insert(nullptr, true), nullptr);
    CNode* root = xml.Insert(new CNode(CString("root")), false);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(xml.GetCurr(), root); // the first node is current anyway
    CNode* a = xml.Insert(new CNode(CString("a")), true);
    CNode* b = xml.Insert(new CNode(CString("b")), false); // inside a
    EXPECT_EQ(b->GetParent(), a);
    EXPECT_EQ(xml.GetCurr(), a);

    // Nodes already in a tree are refused and not taken.
    EXPECT_EQ(xml.Insert(b, true), nullptr);
    EXPECT_EQ(xml.Insert(root, true), nullptr);
    EXPECT_EQ(root->InsertChild(b, true), nullptr);
    EXPECT_EQ(b->GetParent(), a);
    CXMLFile other;
    CNode* otherRoot = other.Insert(new CNode(CString("o")), true);
    EXPECT_EQ(root->InsertChild(otherRoot, true), nullptr);
    EXPECT_EQ(xml.Insert(otherRoot, true), nullptr);

    // A free subtree moves in whole; a node cannot go below itself.
    auto* branch = new CNode(CString("branch"));
    CNode* leaf = branch->InsertChild(new CNode(CString("leaf")), true);
    EXPECT_EQ(branch->InsertChild(branch, true), nullptr);
    EXPECT_EQ(leaf->InsertChild(branch, true), nullptr);
    EXPECT_EQ(root->InsertChild(branch, false), branch);
    EXPECT_EQ(root->FirstChild(), branch);
    EXPECT_EQ(xml.FindFirst("leaf"), leaf);

    // Deleting an inserted node unlinks it; a current node inside it moves
    // to the deleted node's parent.
    EXPECT_TRUE(xml.SetCurr(leaf));
    delete branch;
    EXPECT_EQ(xml.GetCurr(), root);
    EXPECT_EQ(root->FirstChild(), a);
    EXPECT_EQ(root->ChildCount(), 1u);
    EXPECT_FALSE(xml.SetCurr(otherRoot));
    EXPECT_FALSE(xml.SetCurr(nullptr));

    EXPECT_FALSE(root->RemoveChild(b)); // not its child
    EXPECT_TRUE(a->RemoveChild(b));
    EXPECT_EQ(a->FirstChild(), nullptr);

    // Deleting the root empties the file; a node made and never inserted is
    // its maker's.
    delete xml.GetRoot();
    EXPECT_EQ(xml.GetRoot(), nullptr);
    EXPECT_EQ(xml.GetCurr(), nullptr);
    CNode* again = xml.Insert(new CNode(CString("again")), false);
    EXPECT_EQ(xml.GetRoot(), again);
    xml.Clear();
    EXPECT_EQ(xml.GetRoot(), nullptr);
    delete new CNode(CString("never inserted"));
}

TEST(XMLFile, DeepDocumentsNeedNoDeepStack)
{
    constexpr int kDepth = 200000;
    std::string text;
    text.reserve(kDepth * 8);
    for (int i = 0; i < kDepth; ++i) text += "<n>";
    text += "bottom";
    for (int i = 0; i < kDepth; ++i) text += "</n>";
    CXMLFile xml;
    ASSERT_TRUE(xml.Load(FileOf(text)));
    CNode* n = xml.GetRoot();
    int depth = 1;
    while (n->FirstChild()) n = n->FirstChild(), ++depth;
    EXPECT_EQ(depth, kDepth);
    EXPECT_STREQ(n->GetText().c_str(), "bottom");
    // The deepest node deleted first walks up; then the whole tree goes.
    xml.SetCurr(n);
    delete n;
    EXPECT_EQ(xml.GetCurr()->FirstChild(), nullptr);
    xml.Clear();

    // Saving indents, so a moderately deep document is enough to check it.
    CXMLFile chain;
    CNode* top = chain.Insert(new CNode(CString("n")), true);
    for (int i = 1; i < 3000; ++i) top = top->InsertChild(new CNode(CString("n")), true);
    top->SetText(CString("bottom"));
    CXMLFile chainBack;
    ASSERT_TRUE(chainBack.Load(FileOf(Saved(chain))));
    int chainDepth = 1;
    for (n = chainBack.GetRoot(); n->FirstChild(); n = n->FirstChild()) ++chainDepth;
    EXPECT_EQ(chainDepth, 3000);
    EXPECT_STREQ(n->GetText().c_str(), "bottom");
}
