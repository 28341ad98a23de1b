// How fast the library is on this machine.

#ifndef LAUNCHER_TOOLS_BFBR_RATES_H_
#define LAUNCHER_TOOLS_BFBR_RATES_H_

#include "bfbr/container_file.h"
#include "bfbr/options.h"

namespace launcher {

// Times encoding and decoding of some sizes and prints the rates. Answers the exit code.
int MeasureRates(const Options& options, const Key& key);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_RATES_H_
