#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

#include "reduce/store/Plugins.h"
#include "reduce/store/ReduceObjectFactory.h"

extern char** environ;

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
    const std::string host = dir + "/reduce_store_plugin_host";
    char outPath[] = "/tmp/orvstore-outXXXXXX";
    char errPath[] = "/tmp/orvstore-errXXXXXX";
    int outFd = mkstemp(outPath), errFd = mkstemp(errPath);
    ASSERT_GE(outFd, 0);
    ASSERT_GE(errFd, 0);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outFd, 1);
    posix_spawn_file_actions_adddup2(&actions, errFd, 2);
    posix_spawn_file_actions_addchdir_np(&actions, "/");
    char* argv[] = {const_cast<char*>(host.c_str()), const_cast<char*>(dir.c_str()), nullptr};
    pid_t pid = 0;
    int spawned = posix_spawn(&pid, host.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    ASSERT_EQ(spawned, 0);
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    close(outFd);
    close(errFd);
    const std::string out = ReadFile(outPath), err = ReadFile(errPath);
    unlink(outPath);
    unlink(errPath);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << out << err;

    // The plug-in's type stands before every built-in type, once.
    EXPECT_NE(out.find("first=StorePluginObject\n"), std::string::npos) << out;
    EXPECT_NE(out.find("registered=1\n"), std::string::npos) << out;
    EXPECT_NE(out.find("created=1600\n"), std::string::npos) << out;
    EXPECT_NE(out.find("loadedFlag=1\n"), std::string::npos) << out;
    // One load although eight threads met at the loader and the plug-in's
    // init called the factory accessor itself.
    EXPECT_NE(out.find("initCount=1\n"), std::string::npos) << out;
    // Without init function: a warning, and it stays loaded.
    EXPECT_NE(out.find("noinitLoaded=1\n"), std::string::npos) << out;
    EXPECT_EQ(Count(err, "Warning: Missing init function in plugin: liborvreducetestnoinit.so\n"), 1u) << err;
    // An init that returns false: unloaded.
    EXPECT_NE(out.find("declinesLoaded=0\n"), std::string::npos) << out;
    // A file that is no library: dlerror()'s text on its own line.
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
