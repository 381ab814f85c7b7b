#pragma once

/// The project's version, set by the build; the fallback serves builds by a bare compiler call.
#ifndef ZYNGRAD_VERSION
#define ZYNGRAD_VERSION "0.1.0"
#endif
