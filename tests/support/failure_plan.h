// Which of many calls is to fail.

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

  // Ends that. Answers whether any call was made to fail.
  bool Stop() {
    callsLeft_ = 0;
    return hasFailed_;
  }

  // For what is called: whether this call is to fail. Changes nothing unless one is.
  bool IsDue() {
    if (callsLeft_ == 0) return false;
    if (callsLeft_ > 1) {
      --callsLeft_;
      return false;
    }
    hasFailed_ = true;
    if (!andAllAfter_) callsLeft_ = 0;
    return true;
  }

 private:
  int callsLeft_ = 0;  // 0: none is to fail
  bool andAllAfter_ = false;
  bool hasFailed_ = false;
};

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_FAILURE_PLAN_H_
