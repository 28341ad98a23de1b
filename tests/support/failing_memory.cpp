#include "support/failing_memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#include "support/failure_plan.h"

// The linker leads every call of malloc here; the true one has this name then.
extern "C" void* __real_malloc(std::size_t size);

namespace {

launcher::test::FailurePlan plan;

void* Allocate(std::size_t size) { return plan.IsDue() ? nullptr : __real_malloc(size); }

}  // namespace

extern "C" void* __wrap_malloc(std::size_t size) { return Allocate(size); }

void* operator new(std::size_t size) {
  void* const block = Allocate(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

namespace launcher::test {

void FailAllocation(int n, bool andAllAfter) { plan.Start(n, andAllAfter); }
bool StopFailingAllocations() { return plan.Stop(); }

}  // namespace launcher::test
