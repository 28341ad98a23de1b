// Which of many calls fails.

#ifndef LAUNCHER_TESTS_SUPPORT_FAILURE_PLAN_H_
#define LAUNCHER_TESTS_SUPPORT_FAILURE_PLAN_H_

namespace launcher::test {

class FailurePlan {
 public:
  // Makes the n-th call from now fail, counted from 1, and with `andAllAfter` every later one too.
  void Start(int n, bool andAllAfter) {
    callsLeft_ = n;
    andAllAfter_ = andAllAfter;
    hasFailed_ = false;
  }

  // Ends that. Returns true if any call failed.
  bool Stop() {
    callsLeft_ = 0;
    return hasFailed_;
  }

  // For the functions that fail: true if this call must. Changes nothing without a plan, so that
  // threads may share one.
  bool IsDue() {
    if (callsLeft_ == 0) return false;
    if (callsLeft_ > 1) return --callsLeft_ == 0;
    hasFailed_ = true;
    if (!andAllAfter_) callsLeft_ = 0;
    return true;
  }

 private:
  int callsLeft_ = 0;  // 0: none fails
  bool andAllAfter_ = false;
  bool hasFailed_ = false;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_FAILURE_PLAN_H_
