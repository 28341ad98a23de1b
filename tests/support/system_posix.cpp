#include <dlfcn.h>
#include <pthread.h>
#include <sys/mman.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "support/system.h"

namespace launcher::test {

std::string PathBeside(const std::string& name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

std::string ProgramBeside(const std::string& name) { return PathBeside(name); }

// An empty variable is as none.
void SetLibraryPath(const std::string& folder) { setenv("LD_LIBRARY_PATH", folder.c_str(), 1); }

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

void RunInThread(std::size_t stackSize, std::function<void()> body,
                 const std::function<void()>& meanwhile) {
  const auto start = [](void* run) -> void* {
    (*static_cast<std::function<void()>*>(run))();
    return nullptr;
  };
  pthread_attr_t attributes = {};
  pthread_attr_init(&attributes);
  if (stackSize != 0) pthread_attr_setstacksize(&attributes, stackSize);
  pthread_t thread = 0;
  if (pthread_create(&thread, &attributes, start, &body) != 0) std::abort();
  meanwhile();
  pthread_join(thread, nullptr);
}

std::shared_ptr<std::uint8_t> MapBeforeGuardPage(std::size_t size) {
  constexpr std::size_t kPage = 4096;
  const std::size_t used = (size + kPage - 1) / kPage * kPage;
  void* const pages =
      mmap(nullptr, used + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* const guard = static_cast<std::uint8_t*>(pages) + used;
  mprotect(guard, kPage, PROT_NONE);
  return {guard - size, [=](std::uint8_t*) { munmap(pages, used + kPage); }};
}

}  // namespace launcher::test
