// Stands between the test programs and the library (LD_PRELOAD), and notes which results its
// exports give: a line "EXPORT RESULT" for each, at the end of the file that RECORDED_RESULTS
// names. A line is written at one go, so that all threads, and the programs that a test starts,
// share it.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "launcher_dll.h"

namespace {

int OpenRecord() {
  const char* const path = std::getenv("RECORDED_RESULTS");
  return path != nullptr ? open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644) : -1;
}

const int record = OpenRecord();

// What was noted last of the results that share a slot. Two that take turns are noted again, which
// does no harm.
class Noted {
 public:
  // Answers whether it was noted before, and notes it.
  bool Note(std::uint64_t result) {
    // An empty slot holds 0. Turned over in its highest bit, no result that a test sees is that.
    const std::uint64_t mark = result ^ (std::uint64_t{1} << 63);
    return slots_[result % kSlots].exchange(mark) == mark;
  }

 private:
  static constexpr std::size_t kSlots = 64;
  std::atomic<std::uint64_t> slots_[kSlots];
};

void Write(const char* name, const std::string& result) {
  const std::string line = name + (' ' + result + '\n');
  if (write(record, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    std::perror("result_recorder");
    std::abort();
  }
}

template <class Call>
auto Recorded(Noted& noted, const char* name, Call call) {
  if constexpr (std::is_void_v<decltype(call())>) {
    static_cast<void>(noted);
    static_cast<void>(name);
    call();
  } else {
    const auto result = call();
    if (!noted.Note(static_cast<std::uint64_t>(result))) Write(name, std::to_string(result));
    return result;
  }
}

}  // namespace

// The library's own functions are found while this one is loaded, so that no call needs more stack
// or time than it must.
#define CALL(type, name, parameters, arguments)                                               \
  static const auto real_##name = reinterpret_cast<decltype(&name)>(dlsym(RTLD_NEXT, #name)); \
  static Noted noted_##name;                                                                  \
  type QX_CALL name parameters {                                                              \
    return Recorded(noted_##name, #name, [&] { return real_##name arguments; });              \
  }
#include "export_calls.inc"
#undef CALL
