// Stands in for the library's sibling "libzq.reduce.so": its directory is
// where the plug-in loader looks.
extern "C" __attribute__((visibility("default"))) int orvTestAnchor() { return 1; }
