// A processor that can do less than this one.

#ifndef LAUNCHER_TESTS_SUPPORT_IMITATED_CPU_H_
#define LAUNCHER_TESTS_SUPPORT_IMITATED_CPU_H_

#include "platform/cpu_features.h"

namespace launcher::test {

// While it lives, the library's objects in this program see these features. Only for programs that
// are linked with --wrap for ThisCpu.
class ImitatedCpu {
 public:
  explicit ImitatedCpu(const CpuFeatures& features);
  ImitatedCpu(const ImitatedCpu&) = delete;
  ImitatedCpu& operator=(const ImitatedCpu&) = delete;
  ~ImitatedCpu();
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_IMITATED_CPU_H_
