#include <dlfcn.h>
#include <pthread.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <vector>

#include "support/system.h"

namespace launcher::test {

const bool kHasDirect3D = false;

const char* const kLineEnd = "\n";

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

void RunInThread(std::size_t stackSize, void (*body)()) {
  const auto run = [](void* argument) -> void* {
    reinterpret_cast<void (*)()>(argument)();
    return nullptr;
  };
  pthread_attr_t attributes = {};
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, stackSize);
  pthread_t thread = {};
  const bool hasStarted =
      pthread_create(&thread, &attributes, run, reinterpret_cast<void*>(body)) == 0;
  pthread_attr_destroy(&attributes);
  if (!hasStarted) throw std::runtime_error("no thread");
  pthread_join(thread, nullptr);
}

void RunInThreads(int count, void (*body)(int number)) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(body, i);
  for (std::thread& thread : threads) thread.join();
}

const bool kTriesEverything = true;

const int kManyFiles = 20000;

void KeepDigestLoaded() {}

int OpenHandleCount() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    count += entry.path().empty() ? 0 : 1;
  }
  return count;
}

}  // namespace launcher::test
