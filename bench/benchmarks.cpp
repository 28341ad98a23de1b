// Benchmarks of the cipher, the containers, the look-ups and file removal, compared with other code
// for the same work. scripts/bench.sh runs them and makes docs/benchmarks.md from the results.
//
// Names are FAMILY/WHO/SIZE. WHO begins with "ours" for this library.

#include <benchmark/benchmark.h>
#include <openssl/sha.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "cipher/blowfish.h"
#include "cipher/built_in_key.h"
#include "cipher/ecb.h"
#include "cipher/ecb_kernels.h"
#include "launcher_dll.h"
#include "one_block.h"
#include "peers.h"
#include "support/imitated_cpu.h"

namespace launcher::bench {
namespace {

namespace fs = std::filesystem;

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kKey[] = {'A', 'n', 'o', 't', 'h', 'e', 'r', ' ',
                                 'k', 'e', 'y', ',', ' ', '1', '6', '.'};
constexpr std::uint8_t kBuiltIn[] = {'7', 'E', '3', 'A', '9', '0', 'C', '2',
                                     'D', '1', 'F', '8', '6', 'B', '4', '5'};

std::string Sized(const std::string& name, std::size_t size) {
  return name + '/' + std::to_string(size);
}

void SetBytes(benchmark::State& state, std::size_t size) {
  state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

// Runs `body` on a region of `size` bytes.
template <class Body>
void OnRegion(const std::string& name, std::size_t size, Body body) {
  benchmark::RegisterBenchmark(Sized(name, size).c_str(), [=](benchmark::State& state) mutable {
    Bytes region(size, 0x5A);
    for (auto _ : state) {
      body(region.data(), size);
      benchmark::ClobberMemory();
    }
    SetBytes(state, size);
  });
}

BlowfishContext ContextOfKey() {
  BlowfishContext context;
  BlowfishSetKey(context, kKey, sizeof kKey);
  return context;
}

void RegisterCiphers() {
  const BlowfishContext context = ContextOfKey();
  for (const std::size_t size : {2048u, 65536u, 1048576u}) {
    for (const EcbKernel& kernel : kEcbKernels) {
      if (!kernel.runsOn(ThisCpu())) continue;
      const auto transform = kernel.transform;
      OnRegion(std::string("cipher/ours, ") + kernel.name, size,
               [=](std::uint8_t* region, std::size_t count) {
                 transform(context.p, context.s, region, count);
               });
    }
    OnRegion("cipher/ours, one block at a time", size,
             [=](std::uint8_t* region, std::size_t count) {
               EncipherOneBlockAtATime(context, region, count);
             });
    for (const Peer& peer : Peers()) {
      const std::shared_ptr<Cipher> cipher = peer.make();
      cipher->SetKey(kKey, sizeof kKey);
      OnRegion("cipher/" + peer.name, size,
               [=](std::uint8_t* region, std::size_t count) { cipher->Encipher(region, count); });
    }
  }
}

void RegisterKeySetups() {
  benchmark::RegisterBenchmark("key setup/ours", [](benchmark::State& state) {
    BlowfishContext own;
    for (auto _ : state) {
      benchmark::DoNotOptimize(&ContextForKey(kKey, sizeof kKey, own));
      benchmark::ClobberMemory();
    }
  });
  for (const Peer& peer : Peers()) {
    const std::shared_ptr<Cipher> cipher = peer.make();
    benchmark::RegisterBenchmark(("key setup/" + peer.name).c_str(), [=](benchmark::State& state) {
      for (auto _ : state) cipher->SetKey(kKey, sizeof kKey);
    });
  }
}

// Does what a peer must do for a container, with the native library's layout and SHA-256.
void PeerEncodes(Cipher& cipher, Bytes& block, const Bytes& payload) {
  std::memcpy(block.data(), "BFBR", 4);
  StoreLittleEndian(block.data() + 4, static_cast<std::uint32_t>(payload.size()));
  SHA256(payload.data(), payload.size(), block.data() + 8);
  std::memcpy(block.data() + 40, payload.data(), payload.size());
  cipher.SetKey(kKey, sizeof kKey);
  cipher.Encipher(block.data() + 4, block.size() - 4);
}

void PeerDecodes(Cipher& cipher, Bytes& block, std::size_t payloadSize) {
  cipher.SetKey(kKey, sizeof kKey);
  cipher.Decipher(block.data() + 4, block.size() - 4);
  std::uint8_t digest[32];
  SHA256(block.data() + 40, payloadSize, digest);
  benchmark::DoNotOptimize(std::memcmp(digest, block.data() + 8, 32));
}

void RegisterContainers() {
  const CpuFeatures own = ThisCpu();
  const CpuFeatures plain = {};
  for (const std::uint32_t size : {64u, 2048u, 65536u, 1048576u, 16777216u}) {
    const std::uint32_t blockSize = file_cipher_get_encode_size(size);
    const auto registerEncode = [=](const std::string& name, const CpuFeatures& cpu) {
      benchmark::RegisterBenchmark(Sized(name, size).c_str(), [=](benchmark::State& state) {
        const test::ImitatedCpu imitated(cpu);
        const Bytes payload(size, 0x5A);
        Bytes block(blockSize);
        for (auto _ : state) file_cipher_encode(payload.data(), size, block.data());
        SetBytes(state, size);
      });
    };
    // Decoding changes the container, so each run starts with a copy. The time includes the copy,
    // for the peers too.
    const auto registerDecode = [=](const std::string& name, const std::uint8_t* key,
                                    const CpuFeatures& cpu) {
      benchmark::RegisterBenchmark(Sized(name, size).c_str(), [=](benchmark::State& state) {
        const test::ImitatedCpu imitated(cpu);
        const Bytes payload(size, 0x5A);
        Bytes made(blockSize);
        file_cipher_encode(payload.data(), size, made.data());
        // For another key: deciphers the container and enciphers it with that key.
        if (std::memcmp(key, kBuiltIn, sizeof kBuiltIn) != 0) {
          std::uint32_t payloadSize = 0;
          std::uint32_t offset = 0;
          file_cipher_decode(made.data(), blockSize, kBuiltIn, 16, &payloadSize, &offset, nullptr);
          const BlowfishContext context = ContextOfKey();
          TransformSideBySide(context.p, context.s, made.data() + 4, blockSize - 4);
        }
        Bytes block(blockSize);
        CipherCode result = 0;
        for (auto _ : state) {
          std::memcpy(block.data(), made.data(), blockSize);
          std::uint32_t payloadSize = 0;
          std::uint32_t offset = 0;
          result |=
              file_cipher_decode(block.data(), blockSize, key, 16, &payloadSize, &offset, nullptr);
        }
        if (result != 0) state.SkipWithError("does not decode");
        SetBytes(state, size);
      });
    };
    registerEncode("encode/ours, built-in key", own);
    registerEncode("encode/ours, built-in key, side by side", plain);
    registerDecode("decode/ours, built-in key", kBuiltIn, own);
    registerDecode("decode/ours, another key", kKey, own);
    registerDecode("decode/ours, another key, side by side", kKey, plain);
    for (const Peer& peer : Peers()) {
      const std::shared_ptr<Cipher> cipher = peer.make();
      benchmark::RegisterBenchmark(Sized("encode/" + peer.name, size).c_str(),
                                   [=](benchmark::State& state) {
                                     const Bytes payload(size, 0x5A);
                                     Bytes block(blockSize);
                                     for (auto _ : state) PeerEncodes(*cipher, block, payload);
                                     SetBytes(state, size);
                                   });
      benchmark::RegisterBenchmark(Sized("decode/" + peer.name, size).c_str(),
                                   [=](benchmark::State& state) {
                                     const Bytes made(blockSize, 0x5A);
                                     Bytes block(blockSize);
                                     for (auto _ : state) {
                                       std::memcpy(block.data(), made.data(), blockSize);
                                       PeerDecodes(*cipher, block, size);
                                     }
                                     SetBytes(state, size);
                                   });
    }
  }
}

void RegisterLookups() {
  benchmark::RegisterBenchmark("lookup/ours", [](benchmark::State& state) {
    char text[256];
    for (auto _ : state) QX_LoadString(1001, text, sizeof text);
  });
  // Only opens, reads and parses the file, as a program with the JSON library would.
  benchmark::RegisterBenchmark("lookup/JSON library alone", [](benchmark::State& state) {
    QX_IsStaging();  // creates the file
    for (auto _ : state) {
      std::ifstream file("config.json");
      nlohmann::json document;
      file >> document;
      benchmark::DoNotOptimize(document);
    }
  });
}

void MakeTree() {
  constexpr int kFolders = 20;
  constexpr int kFilesInEach = 1000;
  for (int i = 0; i < kFolders; ++i) {
    const std::string folder = "tree/" + std::to_string(i);
    fs::create_directories(folder);
    for (int j = 0; j < kFilesInEach; ++j) std::ofstream(folder + '/' + std::to_string(j));
  }
}

void RegisterRemoval() {
  const auto add = [](const char* name, void (*remove)()) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) {
                                   for (auto _ : state) {
                                     state.PauseTiming();
                                     MakeTree();
                                     state.ResumeTiming();
                                     remove();
                                   }
                                 })
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
  };
  add("removal of 20,000 files/ours", [] { QX_RemoveDirectory("tree", 0); });
  add("removal of 20,000 files/std::filesystem", [] { fs::remove_all("tree"); });
}

}  // namespace
}  // namespace launcher::bench

int main(int argumentCount, char** arguments) {
  using namespace launcher::bench;
  benchmark::Initialize(&argumentCount, arguments);
  if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 2;
  std::string kernels;
  for (const launcher::EcbKernel& kernel : launcher::kEcbKernels) {
    if (kernel.runsOn(launcher::ThisCpu())) kernels += std::string(", ") + kernel.name;
  }
  benchmark::AddCustomContext("kernels", kernels.substr(2));
  std::string absent;
  for (const std::string& peer : AbsentPeers()) absent += ", " + peer;
  benchmark::AddCustomContext("absent peers", absent.empty() ? "none" : absent.substr(2));

  RegisterCiphers();
  RegisterKeySetups();
  RegisterContainers();
  RegisterLookups();
  RegisterRemoval();
  // Discards the line that each look-up prints. The report goes to a file.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::ClearRegisteredBenchmarks();  // frees the peers before OpenSSL ends
  return 0;
}
