#pragma once

namespace zyngrad {

/// Moves a file to a place that must be free, in one step where the file system can do that. Sets errno like rename.
bool MoveToFreePlace(char const* from, char const* to);

/// Exchanges two files of one folder in one step. Sets errno; EINVAL or ENOSYS: this file system cannot do it.
bool ExchangeFiles(char const* one, char const* other);

}  // namespace zyngrad
