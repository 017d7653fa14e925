#include <gtest/gtest.h>

#include "orv/Path.h"

using orv::CString;
namespace path = orv::path;

namespace {
std::string Dir(const char* p) { return path::GetDirectory(CString(p)).c_str(); }
std::string Ext(const char* p) { return path::GetExtension(CString(p)).c_str(); }
std::string Change(const char* p, const char* e) { return path::ChangeExtension(CString(p), CString(e)).c_str(); }
} // namespace

TEST(Path, Directory)
{
    EXPECT_EQ(Dir("/usr/lib/liborvreduce.so"), "/usr/lib");
    EXPECT_EQ(Dir("a/b/c.txt"), "a/b");
    EXPECT_EQ(Dir("a//b"), "a");
    EXPECT_EQ(Dir("/c.txt"), "/");
    EXPECT_EQ(Dir("/"), "/");
    EXPECT_EQ(Dir("liborvreduce.so"), ""); // no directory part at all
    EXPECT_EQ(Dir(""), "");
    EXPECT_EQ(Dir("a/b/"), "a/b");
    EXPECT_EQ(Dir("./x"), ".");
    EXPECT_EQ(path::GetFileName(CString("/usr/lib/a.so")), CString("a.so"));
    EXPECT_EQ(path::Combine(CString("/usr/lib/"), CString("/a.so")), CString("/usr/lib/a.so"));
    EXPECT_EQ(path::Combine(CString("/"), CString("a")), CString("/a"));
    EXPECT_EQ(path::Combine(CString(""), CString("a")), CString("a"));
}

TEST(Path, ExtensionKeepsItsDot)
{
    EXPECT_EQ(Ext("cal.MXG"), ".MXG");
    EXPECT_EQ(Ext("/data/cal.v2/table.mbp"), ".mbp");
    EXPECT_EQ(Ext("archive.tar.gz"), ".gz");
    EXPECT_EQ(Ext("cal"), "");
    EXPECT_EQ(Ext("/data/cal.v2/table"), ""); // a dot in a directory is not an extension
    EXPECT_EQ(Ext(".profile"), "");
    EXPECT_EQ(Ext("dir/.."), "");
    EXPECT_EQ(Ext("..x.y"), ".y");
    EXPECT_EQ(Ext("name."), ".");
    EXPECT_EQ(Ext(""), "");
    // The form compares directly with the table file extensions.
    EXPECT_EQ(orv::scasecmp(path::GetExtension(CString("cal.MXG")), CString(".mxg")), 0);
}

TEST(Path, ChangeExtension)
{
    EXPECT_EQ(Change("cal.MXG", ".mxo"), "cal.mxo");
    EXPECT_EQ(Change("dir/cal.MXG", "mbp"), "dir/cal.mbp"); // the dot is added
    EXPECT_EQ(Change("cal", ".mxg"), "cal.mxg");
    EXPECT_EQ(Change("a.tar.gz", ".bz2"), "a.tar.bz2");
    EXPECT_EQ(Change("cal.mxg", ""), "cal"); // empty removes
    EXPECT_EQ(Change("dir.d/cal", ".x"), "dir.d/cal.x");
    EXPECT_EQ(Change(".profile", ".bak"), ".profile.bak");
    EXPECT_EQ(Change("name.", ".txt"), "name.txt");
}
