// What the library calls, made to fail one by one: functions of the system and the runtime, and
// requests for memory.

#ifndef LAUNCHER_TESTS_SUPPORT_FAULTS_H_
#define LAUNCHER_TESTS_SUPPORT_FAULTS_H_

#include <set>
#include <string>
#include <vector>

namespace launcher::test {

struct FaultKind {
  const char* name;
  bool failsMemory;  // else calls
  bool isOfDigests;  // only of use for exports that make a digest
  // As FailurePlan's Start and Stop.
  void (*start)(int n, bool andAllAfter);
  bool (*stop)();
};

const std::vector<FaultKind>& FaultKinds();

// The system's functions that have failed on purpose so far.
std::set<std::string> FailedCalls();

// What the library holds open of the system's objects and, where that is counted, of memory.
int OpenObjectCount();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_FAULTS_H_
