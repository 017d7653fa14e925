// Runs in the plug-in folder's arrangement (see CMakeLists.txt) and reports
// on standard output what the loader did at library start; reduce_store_tests
// checks the report. Also calls the factory from several threads at once.
#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "reduce/store/Plugins.h"
#include "reduce/store/ReduceObjectFactory.h"

extern "C" int orvTestAnchor();

namespace {

bool IsLoaded(const std::string& directory, const char* file)
{
    void* handle = dlopen((directory + file).c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace orv::reduce;
    if (argc < 2 || orvTestAnchor() != 1) return 2;
    std::string directory = std::string(argv[1]) + "/";

    // Several threads arrive at the loader at once: one of them loads, the
    // others go on without waiting. Then several threads read the factory.
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            ++ready;
            while (ready.load() < 8) {
            }
            priv::LoadDLLs();
        });
    for (std::thread& t : threads) t.join();
    threads.clear();

    std::atomic<int> created{0};
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i)
                if (reduceObjectFactory().CreateByName("StorePluginObject")) ++created;
        });
    for (std::thread& t : threads) t.join();

    orv::TArray<orv::CString> names;
    reduceObjectFactory().GetNames(names);
    printf("first=%s\n", names.size() ? names[0].c_str() : "");
    int occurrences = 0;
    for (const orv::CString& n : names) occurrences += n == "StorePluginObject";
    printf("registered=%d\n", occurrences);
    printf("created=%d\n", created.load());
    printf("loadedFlag=%d\n", static_cast<int>(priv::loaded.load()));

    void* plugin = dlopen((directory + "liborvreducetestregister.so").c_str(), RTLD_NOW | RTLD_NOLOAD);
    auto count = plugin ? reinterpret_cast<int (*)()>(dlsym(plugin, "orvTestPluginInitCount")) : nullptr;
    printf("initCount=%d\n", count ? count() : -1);
    if (plugin) dlclose(plugin);
    printf("noinitLoaded=%d\n", IsLoaded(directory, "liborvreducetestnoinit.so"));
    printf("declinesLoaded=%d\n", IsLoaded(directory, "liborvreducetestdeclines.so"));
    fflush(stdout);
    return 0;
}
