#include <gtest/gtest.h>

#include "orv/Path.h"

using orv::CString;
namespace path = orv::path;

TEST(Path, Directory)
{
    const char* const cases[][2] = {{"/usr/lib/liborvreduce.so", "/usr/lib"}, {"a/b/c.txt", "a/b"}, {"a//b", "a"},
                           {"/c.txt", "/"}, {"/", "/"}, {"liborvreduce.so", ""}, // no directory part at all
                           {"", ""}, {"a/b/", "a/b"}, {"./x", "."}};
    for (const auto& [input, want] : cases) EXPECT_STREQ(path::GetDirectory(CString(input)).c_str(), want) << input;
    EXPECT_EQ(path::GetFileName(CString("/usr/lib/a.so")), CString("a.so"));
    EXPECT_EQ(path::Combine(CString("/usr/lib/"), CString("/a.so")), CString("/usr/lib/a.so"));
    EXPECT_EQ(path::Combine(CString("/"), CString("a")), CString("/a"));
    EXPECT_EQ(path::Combine(CString(""), CString("a")), CString("a"));
}

TEST(Path, ExtensionKeepsItsDot)
{
    // A dot in a directory or at the start of a name is not an extension.
    const char* const cases[][2] = {{"cal.MXG", ".MXG"}, {"/data/cal.v2/table.mbp", ".mbp"}, {"archive.tar.gz", ".gz"},
                           {"cal", ""}, {"/data/cal.v2/table", ""}, {".profile", ""}, {"dir/..", ""},
                           {"..x.y", ".y"}, {"name.", "."}, {"", ""}};
    for (const auto& [input, want] : cases) EXPECT_STREQ(path::GetExtension(CString(input)).c_str(), want) << input;
}

TEST(Path, ChangeExtension)
{
    // The dot is added when missing; an empty extension removes it.
    const struct {
        const char* input;
        const char* extension;
        const char* want;
    } cases[] = {{"cal.MXG", ".mxo", "cal.mxo"}, {"dir/cal.MXG", "mbp", "dir/cal.mbp"}, {"cal", ".mxg", "cal.mxg"},
                 {"a.tar.gz", ".bz2", "a.tar.bz2"}, {"cal.mxg", "", "cal"}, {"dir.d/cal", ".x", "dir.d/cal.x"},
                 {".profile", ".bak", ".profile.bak"}, {"name.", ".txt", "name.txt"}};
    for (const auto& c : cases)
        EXPECT_STREQ(path::ChangeExtension(CString(c.input), CString(c.extension)).c_str(), c.want) << c.input;
}
