#include <dlfcn.h>
#include <pthread.h>
#include <sys/mman.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <iterator>
#include <new>
#include <stdexcept>

#include "support/guarded_buffer.h"
#include "support/system.h"

namespace launcher::test {

const char* const kLineEnd = "\n";
const bool kTriesEverything = true;
const bool kHasDirect3D = false;
const int kManyFiles = 20000;

std::string PathBeside(const std::string& name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

std::string ProgramBeside(const std::string& name) { return PathBeside(name); }

void SetLibraryPath(const std::string& folder) {
  if (folder.empty()) {
    unsetenv("LD_LIBRARY_PATH");
  } else {
    setenv("LD_LIBRARY_PATH", folder.c_str(), 1);
  }
}

void* LoadFunction(const std::string& path, const char* name) {
  void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const function = library != nullptr ? dlsym(library, name) : nullptr;
  if (function == nullptr) throw std::runtime_error(dlerror());
  return function;
}

void MakeLink(const std::string& target, const std::string& link) {
  std::filesystem::create_symlink(target, link);
}

void RemoveLink(const std::string& link) { std::filesystem::remove(link); }

bool SystemRemovesLinks() { return true; }

void RunInThreads(int count, const std::function<void(int number)>& body, std::size_t stackSize) {
  struct Run {
    const std::function<void(int)>& body;
    int number;
    pthread_t thread;
  };
  const auto start = [](void* argument) -> void* {
    const Run& run = *static_cast<Run*>(argument);
    run.body(run.number);
    return nullptr;
  };
  pthread_attr_t attributes = {};
  pthread_attr_init(&attributes);
  if (stackSize != 0) pthread_attr_setstacksize(&attributes, stackSize);
  std::deque<Run> runs;
  for (int i = 0; i < count; ++i) {
    runs.push_back({body, i, {}});
    if (pthread_create(&runs.back().thread, &attributes, start, &runs.back()) != 0) std::abort();
  }
  for (const Run& run : runs) pthread_join(run.thread, nullptr);
  pthread_attr_destroy(&attributes);
}

std::uint8_t* MapWithGuardPage(std::size_t size) {
  void* const pages =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::bad_alloc();
  auto* const bytes = static_cast<std::uint8_t*>(pages);
  mprotect(bytes + size - kPageSize, kPageSize, PROT_NONE);
  return bytes;
}

void UnmapPages(std::uint8_t* pages, std::size_t size) { munmap(pages, size); }

void KeepDigestLoaded() {}

int OpenHandleCount() {
  const std::filesystem::directory_iterator handles("/proc/self/fd");
  return static_cast<int>(std::distance(begin(handles), end(handles)));
}

}  // namespace launcher::test
