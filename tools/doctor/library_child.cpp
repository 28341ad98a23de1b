#include "doctor/library_child.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <vector>

#include "doctor/built_in.h"
#include "doctor/checkup.h"
#include "doctor/export_list.h"
#include "launcher_dll.h"
#include "platform/owners.h"
#include "support/json_text.h"

namespace launcher::doctor {
namespace {

namespace fs = std::filesystem;

// Starts with a line end, since the library's own output can end without one.
void PrintLine(const Json& json) {
  std::printf("\n%s\n", JsonText(json).c_str());
  std::fflush(stdout);
}

// Returns the 32 bytes, or none if the system refuses.
std::string Sha256(const std::string& bytes) {
  HCRYPTPROV provider = 0;
  if (!CryptAcquireContextA(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT)) {
    return {};
  }
  const CryptProvider ownedProvider(provider);
  HCRYPTHASH hash = 0;
  if (!CryptCreateHash(provider, CALG_SHA_256, 0, 0, &hash)) return {};
  const CryptHash ownedHash(hash);
  BYTE digest[32];
  DWORD size = sizeof digest;
  if (!CryptHashData(hash, reinterpret_cast<const BYTE*>(bytes.data()),
                     static_cast<DWORD>(bytes.size()), 0) ||
      !CryptGetHashParam(hash, HP_HASHVAL, digest, &size, 0)) {
    return {};
  }
  return {reinterpret_cast<const char*>(digest), sizeof digest};
}

// Returns true if the file may be loaded.
bool CheckFile(const fs::path& path, Report& report) {
  const std::string name = path.filename().u8string();
  const std::string bytes = ReadBytes(path, kLargestLibrary);
  if (Sha256(bytes) == kLibraryDigest) {
    report.Add("image.same", {name, QX_VERSION});
    return true;
  }
  std::string version;
  std::string key = ExamineFile(path, bytes, version);
  if (key.empty()) key = version == QX_VERSION ? "image.digest" : "version.other";
  report.Add(key, {name, version.empty() ? "no version" : "version " + version, QX_VERSION});
  return key == "version.other";
}

bool CheckExports(const LoadedLibrary& library, Report& report) {
  std::vector<std::string> missing;
  std::vector<std::string> wrong;
  for (const Json& entry : Exports()) {
    const void* const found = FindIn(library, entry);
    if (found == nullptr) {
      missing.push_back(entry.at("name"));
    } else if (kIsWindows && library.FindOrdinal(entry.at("ordinal")) != found) {
      wrong.push_back(entry.at("name"));
    }
  }
  if (!missing.empty()) {
    report.Add("exports.missing", {Listed(missing)});
  } else if (!wrong.empty()) {
    report.Add("exports.misplaced", {Listed(wrong)});
  } else {
    report.Add("exports.fine", {std::to_string(Exports().size())});
  }
  return missing.empty() && wrong.empty();
}

void CheckDisplay(const LoadedLibrary& library, Report& report) {
  constexpr std::size_t kCapacity = std::size_t{1} << 20;
  std::string text(kCapacity, '\0');
  text.resize(QX_IN(library, QX_EnumDisplayMode)(0, 0, text.data(), kCapacity));
  // A list whose last mode is missing ends in a comma, so the text is not read as JSON. The first
  // brace is not that of a mode.
  const auto count = std::count(text.begin(), text.end(), '{') - 1;
  if (count > 0) {
    report.Add("display.modes", {Counted(static_cast<std::size_t>(count), "display mode")});
  } else if (kIsWindows) {
    report.Add("display.none");
  }
}

}  // namespace

int RunLibraryChild(const std::string& mode, const std::string& path) {
  if (std::freopen(kReplyFile, "w", stdout) == nullptr) return 1;
  Report report(PrintLine);
  if (!CheckFile(fs::u8path(path), report)) return 0;
  std::string error;
  const std::optional<LoadedLibrary> library = Load(fs::u8path(path), error);
  if (!library) {
    report.Add("load.refused", {error});
    return 0;
  }
  if (!CheckExports(*library, report)) return 0;
  const bool loads = QX_IN(*library, QX_IsStaging)() == 1;
  PrintLine({{"loads", loads}});
  if (mode != kEverythingMode) return 0;
  // The calls below need settings that load. Without a file the library creates the defaults.
  std::remove("config.json");
  CheckKnownResults(*library, report);
  CheckSteam(*library, fs::u8path(path).parent_path(), report);
  CheckDisplay(*library, report);
  return 0;
}

}  // namespace launcher::doctor
