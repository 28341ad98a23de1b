// Memory that runs out on purpose, for what is linked into the program: operator new and malloc.

#ifndef LAUNCHER_TESTS_SUPPORT_FAILING_MEMORY_H_
#define LAUNCHER_TESTS_SUPPORT_FAILING_MEMORY_H_

namespace launcher::test {

// Makes the n-th request from now fail, counted from 1, and with `andAllAfter` every later one too.
void FailAllocation(int n, bool andAllAfter);

// Ends that. Answers whether any request was made to fail.
bool StopFailingAllocations();

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_FAILING_MEMORY_H_
