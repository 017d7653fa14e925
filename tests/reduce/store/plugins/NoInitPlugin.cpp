// Matches the plug-in pattern but exports no init function.
extern "C" __attribute__((visibility("default"))) int orvTestNoInit() { return 2; }
