// The containers of tests/data/containers.txt, which openssl made.

#ifndef LAUNCHER_TESTS_SUPPORT_KNOWN_CONTAINERS_H_
#define LAUNCHER_TESTS_SUPPORT_KNOWN_CONTAINERS_H_

#include <stdexcept>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/data_file.h"
#include "support/guarded_buffer.h"

namespace launcher::test {

struct KnownContainer {
  std::string name;
  Bytes key;
  bool isIntact;
  bool isMadeByEncoding;  // with the built-in key, and nothing odd about it
  Bytes payload;          // of an intact one
  Bytes container;
};

inline std::vector<KnownContainer> KnownContainers() {
  std::vector<KnownContainer> containers;
  for (const auto& row : ReadDataLines("containers.txt", 4)) {
    const std::string& name = row[0];
    const bool isIntact = row[2] != "fails";
    const bool isOdd = name == "empty" || name == "other-key" || name == "filler-not-zero" ||
                       name.compare(0, 7, "length-") == 0;
    containers.push_back({name, BytesFromHex(row[1]), isIntact, isIntact && !isOdd,
                          isIntact ? BytesFromHex(row[2]) : Bytes(), BytesFromHex(row[3])});
  }
  return containers;
}

inline KnownContainer KnownContainerNamed(const std::string& name) {
  for (KnownContainer& known : KnownContainers()) {
    if (known.name == name) return known;
  }
  throw std::invalid_argument(name);
}

}  // namespace launcher::test

#endif  // LAUNCHER_TESTS_SUPPORT_KNOWN_CONTAINERS_H_
