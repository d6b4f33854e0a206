#ifndef CONFIG_UPDATE_EXPORT_H_
#define CONFIG_UPDATE_EXPORT_H_

// Marks what the shared library exports. It stands on single functions and
// constants rather than on classes, so that the members that a compiler adds by
// itself never become part of the binary interface.
#define CONFIG_UPDATE_EXPORT __attribute__((visibility("default")))

#endif  // CONFIG_UPDATE_EXPORT_H_
