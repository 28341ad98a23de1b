// Makes what the library calls fail, one call after the other: functions of the system and of the
// runtime, requests for memory, and functions of the scripted libraries.

#ifndef LAUNCHER_TESTS_SUPPORT_FAULTS_H_
#define LAUNCHER_TESTS_SUPPORT_FAULTS_H_

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace launcher::test {

// Which of many calls fails.
class FailurePlan {
 public:
  // Makes the n-th call from now fail, counted from 1, and with `andAllAfter` every later one too.
  void Start(int n, bool andAllAfter) {
    callsLeft_ = n;
    andAllAfter_ = andAllAfter;
  }

  // Ends that. Returns true if any call failed.
  bool Stop() {
    callsLeft_ = 0;
    return std::exchange(hasFailed_, false);
  }

  // For the functions that fail: true if this call must. Changes nothing without a plan, so that
  // threads may share one.
  bool IsDue() {
    if (callsLeft_ == 0) return false;
    if (callsLeft_ > 1) return --callsLeft_ == 0;
    if (!andAllAfter_) callsLeft_ = 0;
    return hasFailed_ = true;
  }

 private:
  int callsLeft_ = 0;  // 0: none fails
  bool andAllAfter_ = false;
  bool hasFailed_ = false;
};

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

// "calls" and "memory".
std::vector<FaultKind> FaultKinds();

// The system's objects and the blocks of memory that are open. The tests' own may count too.
int OpenObjectCount();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_FAULTS_H_
