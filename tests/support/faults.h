// Makes what the library calls fail, one call after the other: functions of the system and of the
// runtime, and requests for memory.

#ifndef LAUNCHER_TESTS_SUPPORT_FAULTS_H_
#define LAUNCHER_TESTS_SUPPORT_FAULTS_H_

#include <functional>
#include <string>
#include <vector>

#include "support/failure_plan.h"

namespace launcher::test {

// Calls of one kind; start and stop are those of a FailurePlan.
struct FaultKind {
  std::string name;
  std::function<void(int n, bool andAllAfter)> start;
  std::function<bool()> stop;
};

inline FaultKind PlannedFaults(const char* name, FailurePlan& plan) {
  return {name, [&plan](int n, bool andAllAfter) { plan.Start(n, andAllAfter); },
          [&plan] { return plan.Stop(); }};
}

// "calls", "calls without CNG", in which CNG makes no hash, and "memory".
std::vector<FaultKind> FaultKinds();

// The system's objects, and if they are counted the blocks of memory, that the library holds.
int OpenObjectCount();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_FAULTS_H_
