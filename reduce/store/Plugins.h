#pragma once
// Plug-in loading. A plug-in is a shared library named liborvreduce*.so in
// the library's directory that exports
//
//     extern "C" bool orvInitPlugin();
//
// which registers its types with the factories. It must return false before
// it registers anything if it declines: a declined plug-in is unloaded.
#include <atomic>

namespace orv::reduce::priv {

// Set (0 -> 1) by the call that runs the search, before the search runs.
extern std::atomic<unsigned char> loaded;

// Loads the plug-ins once per process. Every factory accessor calls it; a
// call that arrives while another thread loads returns without waiting.
void LoadDLLs();

} // namespace orv::reduce::priv
