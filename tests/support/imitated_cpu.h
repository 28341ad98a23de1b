// A processor that can do less than this one.

#ifndef LAUNCHER_TESTS_SUPPORT_IMITATED_CPU_H_
#define LAUNCHER_TESTS_SUPPORT_IMITATED_CPU_H_

#include <optional>

#include "platform/cpu_features.h"

namespace launcher::test {

// While it lives, the library's objects in this program see these features. Only for programs that
// are linked with --wrap for ThisCpu.
class ImitatedCpu {
 public:
  explicit ImitatedCpu(const CpuFeatures& imitated) { features = imitated; }
  ~ImitatedCpu() { features.reset(); }

  static inline std::optional<CpuFeatures> features;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_IMITATED_CPU_H_
