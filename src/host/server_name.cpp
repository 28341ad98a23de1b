// QX_CheckCert: compares the names that the caller has for a server with the game's own. It reads
// no certificate.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "config/deployment.h"
#include "config/string_table.h"
#include "launcher_dll.h"

namespace launcher {
namespace {

// In bytes, terminator included. A longer setting is not a host name: it is skipped.
constexpr std::size_t kHostNameCapacity = 1024;

bool IsSetting(StringLabel label, const char* hostName) {
  const OwnedText setting = LookUpText(label);
  return setting && std::strlen(setting.get()) < kHostNameCapacity &&
         std::strcmp(setting.get(), hostName) == 0;
}

}  // namespace
}  // namespace launcher

std::uint8_t QX_CALL QX_CheckCert(const char* certificateName, const char* hostName) {
  // Compares character by character: upper and lower case differ, and a wildcard has no special
  // meaning. The order counts, and so does the end at the first match: each lookup prints a line.
  const bool isTrusted = launcher::IsSetting(launcher::kQaApiHostLabel, hostName) ||
                         launcher::IsSetting(launcher::kCiApiHostLabel, hostName) ||
                         std::strcmp(certificateName, launcher::kServiceCertificateName) == 0 ||
                         std::strcmp(certificateName, launcher::kCiApiCertificateName) == 0;
  return isTrusted ? 1 : 0;
}
