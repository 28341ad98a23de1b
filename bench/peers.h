// Other Blowfish libraries with one interface: those that the build found.

#ifndef LAUNCHER_BENCH_PEERS_H_
#define LAUNCHER_BENCH_PEERS_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace launcher::bench {

class Cipher {
 public:
  virtual ~Cipher() = default;
  virtual void SetKey(const std::uint8_t* key, std::size_t size) = 0;
  // In place, in electronic-codebook mode.
  virtual void Encipher(std::uint8_t* region, std::size_t size) = 0;
  virtual void Decipher(std::uint8_t* region, std::size_t size) = 0;
};

struct Peer {
  std::string name;
  std::unique_ptr<Cipher> (*make)();
};

const std::vector<Peer>& Peers();

// Names of those that were not found.
const std::vector<std::string>& AbsentPeers();

}  // namespace launcher::bench

#endif  // LAUNCHER_BENCH_PEERS_H_
