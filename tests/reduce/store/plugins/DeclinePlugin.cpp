// A plug-in that declines: it returns false before registering anything.
extern "C" __attribute__((visibility("default"))) bool orvInitPlugin() { return false; }
