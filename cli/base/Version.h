#pragma once

/// The project's version. The build sets it; the fallback serves a bare compiler call.
#ifndef ZYNGRAD_VERSION
#define ZYNGRAD_VERSION "0.1.0"
#endif
