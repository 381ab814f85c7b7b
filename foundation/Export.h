#pragma once

/// Marks the classes that the shared library exports; everything else in it is hidden.
#if defined(__GNUC__)
#define ZYN_EXPORT __attribute__((visibility("default")))
#else
#define ZYN_EXPORT
#endif
