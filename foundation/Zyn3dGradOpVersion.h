#pragma once

/// The version of the library, for code that has to compile against several:
///
///     #if ZYN3DGRADOP_VERSION >= ZYN3DGRADOP_MAKE_VERSION(0, 2, 0)
///
/// The build reads the project's version from the three lines of numbers, so this header is the one place to change it.
#define ZYN3DGRADOP_VERSION_MAJOR 0
#define ZYN3DGRADOP_VERSION_MINOR 1
#define ZYN3DGRADOP_VERSION_PATCH 0

/// A version as one number that can be compared. Minor and patch numbers stay below 1000.
#define ZYN3DGRADOP_MAKE_VERSION(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))
#define ZYN3DGRADOP_VERSION \
  ZYN3DGRADOP_MAKE_VERSION(ZYN3DGRADOP_VERSION_MAJOR, ZYN3DGRADOP_VERSION_MINOR, ZYN3DGRADOP_VERSION_PATCH)
