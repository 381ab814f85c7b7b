#pragma once

#include "foundation/Processor.h"

/// @file
/// Included in front of a source file, takes its code for special instructions away.

#undef ZYN_HAS_TARGETS
#define ZYN_HAS_TARGETS 0
