#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "reduce/store/Plugins.h"
#include "reduce/store/ReduceObjectFactory.h"

namespace orv::reduce {
namespace {

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

size_t Count(const std::string& text, const std::string& what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) ++n;
    return n;
}

// The plug-ins are loaded at library start, so they are checked in a child
// process set up for them (tests/reduce/store/CMakeLists.txt), started from a
// working directory that holds no plug-ins: the folder is found through the
// anchor library, not the working directory.
TEST(PluginTest, LoaderRegistersSkipsAndUnloadsAsRequired)
{
    const std::string dir = ORV_STORE_PLUGIN_DIR;
    char outPath[] = "/tmp/orvstore-outXXXXXX";
    char errPath[] = "/tmp/orvstore-errXXXXXX";
    int outFd = mkstemp(outPath), errFd = mkstemp(errPath);
    ASSERT_GE(outFd, 0);
    ASSERT_GE(errFd, 0);
    close(outFd);
    close(errFd);
    const std::string command =
        "cd / && '" + dir + "/reduce_store_plugin_host' '" + dir + "' >" + outPath + " 2>" + errPath;
    const int status = std::system(command.c_str());
    const std::string out = ReadFile(outPath), err = ReadFile(errPath);
    unlink(outPath);
    unlink(errPath);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << out << err;

    // The plug-in's type stands before every built-in type, once. One load
    // although eight threads met at the loader and the plug-in's init called
    // the factory accessor itself. A plug-in without init function stays
    // loaded; one whose init returns false is unloaded.
    for (const char* line : {"first=StorePluginObject\n", "registered=1\n", "created=1600\n", "loadedFlag=1\n",
                             "initCount=1\n", "noinitLoaded=1\n", "declinesLoaded=0\n"}) {
        EXPECT_EQ(Count(out, line), 1u) << line << out;
    }
    // The missing init gives a warning; a file that is no library gives
    // dlerror()'s text on its own line.
    EXPECT_EQ(Count(err, "Warning: Missing init function in plugin: liborvreducetestnoinit.so\n"), 1u) << err;
    EXPECT_EQ(Count(err, dir + "/liborvreducetestbroken.so: "), 1u) << err;
    EXPECT_EQ(Count(err, "\n"), 2u) << err;
}

// This program has no anchor and runs where no plug-in lies: only its own
// and the built-in types.
TEST(PluginTest, NoPluginsWithoutTheFolder)
{
    EXPECT_FALSE(reduceObjectFactory().IsRegistered("StorePluginObject"));
    EXPECT_EQ(priv::loaded.load(), 1);
    priv::LoadDLLs(); // no second search
    EXPECT_FALSE(reduceObjectFactory().IsRegistered("StorePluginObject"));
}

} // namespace
} // namespace orv::reduce
