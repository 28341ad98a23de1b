// One plan for the process, since a planned call can be made by any thread.

#include "platform/posix/faults.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <utility>

namespace launcher::posix {
namespace {

struct Plan {
  const char* name = nullptr;
  int callsUntilFailure = 0;
  bool andAllAfter = false;
  bool isActive = false;
  bool hasFailed = false;
  const char* alwaysFails = nullptr;
};

std::mutex planMutex;
Plan plan;
bool isRecording = false;
std::vector<std::string> recordedCalls;

std::atomic<int> objectCount{0};
thread_local DWORD lastError = 0;  // each thread has its own, as on Windows

}  // namespace

void FailCall(const char* name, int n, bool andAllAfter) {
  const std::lock_guard<std::mutex> lock(planMutex);
  plan = {name, n, andAllAfter, true, false, nullptr};
}

void FailEveryCall(const char* name) {
  const std::lock_guard<std::mutex> lock(planMutex);
  plan.alwaysFails = name;
}

bool StopFailing() {
  const std::lock_guard<std::mutex> lock(planMutex);
  plan.isActive = false;
  plan.alwaysFails = nullptr;
  return plan.hasFailed;
}

void StartRecording() {
  const std::lock_guard<std::mutex> lock(planMutex);
  isRecording = true;
}

std::vector<std::string> StopRecording() {
  const std::lock_guard<std::mutex> lock(planMutex);
  isRecording = false;
  return std::exchange(recordedCalls, {});
}

bool MustFail(const char* name) {
  const std::lock_guard<std::mutex> lock(planMutex);
  if (isRecording) recordedCalls.push_back(name);
  if (plan.alwaysFails != nullptr && std::strcmp(plan.alwaysFails, name) == 0) {
    lastError = kErrorGeneralFailure;
    return true;
  }
  if (!plan.isActive) return false;
  if (plan.name != nullptr && std::strcmp(plan.name, name) != 0) return false;
  if (plan.callsUntilFailure > 1) {
    --plan.callsUntilFailure;
    return false;
  }
  plan.hasFailed = true;
  plan.isActive = plan.andAllAfter;
  lastError = kErrorGeneralFailure;
  return true;
}

BOOL Fail(DWORD error) {
  lastError = error;
  return FALSE;
}

void CountObject(int change) { objectCount += change; }

int OpenObjectCount() { return objectCount; }

}  // namespace launcher::posix

DWORD GetLastError() { return launcher::posix::lastError; }
