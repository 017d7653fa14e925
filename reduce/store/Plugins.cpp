#include "reduce/store/Plugins.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <sys/auxv.h>

#include <cstdio>

#include "orv/File.h"
#include "orv/Path.h"
#include "orv/String.h"

namespace orv::reduce {

namespace {

bool LoadDLLsImpl()
{
    CString directory = "./";
    const CString prefix = "lib";
    const CString suffix = ".so";

    // The sibling library only anchors the directory; its origin wins when it
    // is in the process.
    if (void* anchor = dlopen("libzq.reduce.so", RTLD_NOW | RTLD_NOLOAD)) {
        char origin[PATH_MAX + 1] = {};
        directory = dlinfo(anchor, RTLD_DI_ORIGIN, origin) == 0 ? CString(origin) : CString();
        dlclose(anchor); // balances the reference that RTLD_NOLOAD took
        if (!directory.empty() && directory.c_str()[directory.length() - 1] != '/') directory += "/";
    }
    // Only an empty origin gets here, since the string starts as "./"; the
    // order of these fallbacks is intended.
    if (directory.empty()) {
        Dl_info info{};
        if (dladdr(reinterpret_cast<void*>(&priv::LoadDLLs), &info) && info.dli_fname)
            directory = path::GetDirectory(info.dli_fname);
    }
    if (directory.empty()) {
        const char* executable = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
        if (executable) directory = path::GetDirectory(executable);
    }
    if (directory.empty()) directory = "./";

    const CString self = prefix + "orvreduce" + suffix;
    CDirectoryListing listing = fileSystem()->List(directory, prefix + "orvreduce*" + suffix);
    for (const CDirectoryEntry& entry : listing) {
        if (scasecmp(entry.name, self) == 0) continue; // this library
        void* handle = dlopen(entry.fullPath.c_str(), RTLD_NOW);
        if (!handle) {
            // Standard error, not the log: this may run before the log is ready.
            const char* error = dlerror();
            fprintf(stderr, "%s\n", error ? error : "");
            continue;
        }
        using InitFunction = bool (*)();
        auto init = reinterpret_cast<InitFunction>(dlsym(handle, "orvInitPlugin"));
        if (!init) {
            // The library stays loaded.
            fprintf(stderr, "Warning: Missing init function in plugin: %s\n", entry.name.c_str());
            continue;
        }
        if (!init()) dlclose(handle);
    }
    return true;
}

} // namespace

namespace priv {

std::atomic<unsigned char> loaded{0};

void LoadDLLs()
{
    if (loaded.load(std::memory_order_acquire) != 0) return;
    // The flag is set before the work, so a plug-in whose init calls a factory
    // accessor does not recurse, and a thread arriving meanwhile goes on
    // without the plug-ins still to come.
    unsigned char expected = 0;
    if (loaded.compare_exchange_strong(expected, 1, std::memory_order_acq_rel)) LoadDLLsImpl();
}

} // namespace priv

} // namespace orv::reduce
