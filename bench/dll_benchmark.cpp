// Times the DLL itself, and parts of the work of its calls.
//
//   dll_benchmark RESULTS calls
//       whole calls, digests by the system's two services, the kernels
//   dll_benchmark RESULTS lookups OUTPUT
//       a lookup with this program's standard output, which OUTPUT describes
//
// Appends a line for each measurement to the file RESULTS: what was timed, the size in bytes or 0,
// and microseconds, separated by tabs. Repetitions are interleaved. Exit status: 0 if all ran.

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "cipher/blowfish.h"
#include "cipher/built_in_key.h"
#include "cipher/ecb_kernels.h"
#include "cipher/sha256.h"
#include "config/string_table.h"
#include "launcher_dll.h"
#include "one_block.h"
#include "platform/win32.h"

namespace {

using namespace launcher;
using Bytes = std::vector<std::uint8_t>;

constexpr int kRepetitions = 15;
constexpr std::uint32_t kDecodedSize = 2048;
const std::uint8_t* const kKey = reinterpret_cast<const std::uint8_t*>(kBuiltInKey);
constexpr std::uint32_t kKeyLength = sizeof kBuiltInKey - 1;

// The DLL's functions. This program also contains the library's objects, for the kernels.
struct Dll {
  HMODULE module = LoadLibraryA("LauncherDll.dll");
  decltype(&file_cipher_encode) encode = Get<decltype(encode)>("_file_cipher_encode@12");
  decltype(&file_cipher_decode) decode = Get<decltype(decode)>("_file_cipher_decode@28");
  decltype(&QX_Decode) decodeKeyed = Get<decltype(decodeKeyed)>("_QX_Decode@20");
  decltype(&QX_LoadString) loadString = Get<decltype(loadString)>("_QX_LoadString@12");

 private:
  template <class Function>
  Function Get(const char* name) const {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  }
};
const Dll dll;

struct Timed {
  std::string name;
  std::uint32_t size;  // in bytes; 0 if only the time counts
  std::function<bool()> run;
};

double Seconds() {
  LARGE_INTEGER count;
  LARGE_INTEGER frequency;
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// Repeats the run until it takes some milliseconds, and writes the time of one run. Returns false
// if a run fails.
bool Measure(const Timed& timed, std::FILE* results) {
  for (int runs = 1;; runs *= 2) {
    const double start = Seconds();
    for (int i = 0; i < runs; ++i) {
      if (!timed.run()) {
        std::fprintf(stderr, "dll_benchmark: %s fails\n", timed.name.c_str());
        return false;
      }
    }
    const double taken = Seconds() - start;
    if (taken < 0.005 && runs <= 1 << 20) continue;
    std::fprintf(results, "%s\t%u\t%.4f\n", timed.name.c_str(), timed.size, taken / runs * 1e6);
    return true;
  }
}

template <class Service>
bool Digest(const Bytes& data) {
  Service service;
  std::uint8_t digest[kDigestSize];
  return service.Create() && service.Update(data.data(), static_cast<std::uint32_t>(data.size())) &&
         service.Finish(digest);
}

// Whole calls at one size, and the digests that they contain.
void AddCalls(std::uint32_t size, std::vector<Timed>& all) {
  const Bytes payload(size, 'x');
  Bytes container(file_cipher_get_encode_size(size));
  dll.encode(payload.data(), size, container.data());

  all.push_back({"file_cipher_encode", size, [=, output = container]() mutable {
                   return dll.encode(payload.data(), size, output.data()) == 0;
                 }});
  // A container is deciphered in place, so each run needs a copy.
  all.push_back({"file_cipher_decode", size, [=, block = container]() mutable {
                   std::uint32_t decodedSize = 0;
                   std::uint32_t offset = 0;
                   std::memcpy(block.data(), container.data(), block.size());
                   return dll.decode(block.data(), static_cast<std::uint32_t>(block.size()), kKey,
                                     std::int32_t{kKeyLength}, &decodedSize, &offset, nullptr) == 0;
                 }});
  all.push_back({"digest by CNG", size, [=] { return Digest<CngSha256>(payload); }});
  all.push_back({"digest by CryptoAPI", size, [=] { return Digest<CryptoApiSha256>(payload); }});
  if (size != kDecodedSize) return;
  all.push_back({"QX_Decode", size, [=, block = container]() mutable {
                   std::uint32_t decodedSize = 0;
                   std::uint32_t offset = 0;
                   std::memcpy(block.data(), container.data(), block.size());
                   return dll.decodeKeyed(block.data(), static_cast<std::int32_t>(block.size()),
                                          &decodedSize, &offset, 1) == 0;
                 }});
}

bool LookUp() {
  char text[64];
  return dll.loadString(kCipherKeyLabel, text, sizeof text) == 0;
}

bool ReadSettings() {
  char text[4096];
  std::FILE* const file = std::fopen("config.json", "r");
  if (file == nullptr) return false;
  const bool isRead = std::fread(text, 1, sizeof text, file) > 0;
  return std::fclose(file) == 0 && isRead;
}

std::vector<Timed> Calls() {
  std::vector<Timed> all;
  for (const std::uint32_t size : {64u, kDecodedSize, 65536u, 1048576u}) AddCalls(size, all);
  all.push_back({"three lookups", 0, [] { return LookUp() && LookUp() && LookUp(); }});

  constexpr std::uint32_t kRegionSize = 65536;
  const Bytes region(kRegionSize);
  for (const EcbKernel& kernel : kEcbKernels) {
    if (!kernel.runsOn(ThisCpu())) continue;
    all.push_back(
        {std::string("cipher, ") + kernel.name, kRegionSize, [&kernel, data = region]() mutable {
           kernel.transform(kBuiltInKeyContext.p, kBuiltInKeyContext.s, data.data(), data.size());
           return true;
         }});
  }
  all.push_back({"cipher, one block at a time", kRegionSize, [data = region]() mutable {
                   bench::EncipherOneBlockAtATime(kBuiltInKeyContext, data.data(), data.size());
                   return true;
                 }});
  all.push_back({"key set-up", 0, [] {
                   // One byte less, since the built-in key itself is not set up at run time.
                   BlowfishContext context;
                   ContextForKey(kKey, kKeyLength - 1, context);
                   return true;
                 }});
  return all;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const std::string what = argumentCount > 2 ? arguments[2] : "";
  const bool timesLookups = what == "lookups" && argumentCount == 4;
  if (!timesLookups && !(what == "calls" && argumentCount == 3)) {
    std::fprintf(stderr, "usage: dll_benchmark RESULTS calls | RESULTS lookups OUTPUT\n");
    return 2;
  }
  std::FILE* const results = std::fopen(arguments[1], "a");
  if (results == nullptr) {
    std::fprintf(stderr, "dll_benchmark: cannot open %s\n", arguments[1]);
    return 1;
  }

  if (dll.module == nullptr) {
    std::fprintf(stderr, "dll_benchmark: no LauncherDll.dll beside the program\n");
    return 1;
  }

  std::vector<Timed> all;
  if (timesLookups) {
    all = {{std::string("lookup, output to ") + arguments[3], 0, LookUp},
           {"config.json, opened and read", 0, ReadSettings}};
  } else {
    all = Calls();
  }
  bool isRight = LookUp();  // creates config.json
  for (int i = 0; i < kRepetitions; ++i) {
    for (const Timed& timed : all) isRight = isRight && Measure(timed, results);
  }
  return std::fclose(results) == 0 && isRight ? 0 : 1;
}
