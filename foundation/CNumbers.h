#pragma once

#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

/// As long as this lives, the calling thread writes and reads numbers as the language C does, with a point before
/// the decimals, whatever the program told setlocale: printed lines and settings files are the same everywhere.
class CNumbers {
 public:
  CNumbers() : c_(newlocale(LC_ALL_MASK, "C", nullptr)), former_(uselocale(c_)) {}
  ~CNumbers() {
    uselocale(former_);
    if (c_ != nullptr) freelocale(c_);
  }
  CNumbers(CNumbers const&) = delete;
  CNumbers& operator=(CNumbers const&) = delete;

 private:
  locale_t c_;  // null when there is no memory for it; the former locale then stays
  locale_t former_;
};
