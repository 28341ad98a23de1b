// QX_CheckCert: whether a server is one of the game's own, by the names that the caller holds for
// it. No certificate is looked at.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "config/deployment.h"
#include "config/string_table.h"
#include "launcher_dll.h"

namespace launcher {
namespace {

// A longer setting is no host name and takes part in no comparison.
constexpr std::size_t kHostNameCapacity = 1024;

bool IsSetting(StringLabel label, const char* hostName) {
  const OwnedText setting = LookUpText(label);
  return setting && std::strlen(setting.get()) < kHostNameCapacity &&
         std::strcmp(setting.get(), hostName) == 0;
}

}  // namespace
}  // namespace launcher

std::uint8_t QX_CALL QX_CheckCert(const char* certificateName, const char* hostName) {
  // Character for character: the wildcard is a name like any other.
  const bool isTrusted = launcher::IsSetting(launcher::kQaApiHostLabel, hostName) ||
                         launcher::IsSetting(launcher::kCiApiHostLabel, hostName) ||
                         std::strcmp(certificateName, launcher::kServiceCertificateName) == 0 ||
                         std::strcmp(certificateName, launcher::kCiApiCertificateName) == 0;
  return isTrusted ? 1 : 0;
}
