// The table of the library's texts and the four exports that read it.
//
// Every lookup goes through QX_LoadStringToMemory, even inside the library: callers can see its
// line and its effect on config.json.

#include "config/string_table.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "config/launcher_config.h"
#include "frame/bounded_text.h"
#include "frame/guard.h"
#include "platform/heap.h"
#include "platform/win32.h"

namespace launcher {
namespace {

struct TableEntry {
  constexpr TableEntry(StringLabel entryLabel, const char* fixedText)
      : label(entryLabel), text(fixedText), field(nullptr) {}
  constexpr TableEntry(StringLabel entryLabel, std::string LauncherConfig::*configField)
      : label(entryLabel), text(nullptr), field(configField) {}

  StringLabel label;
  const char* text;                    // null if the text is a setting
  std::string LauncherConfig::*field;  // that setting
};

// Labels are unique, so the order has no effect. Callers depend on each text as it is, even on its
// odd wording.
constexpr TableEntry kTable[] = {
    {kVendorNameLabel, "Tervane Inc."},
    {kBuildNameLabel, "Release"},
    {1000, "POST"},
    {1001, &LauncherConfig::apiServer},
    {1200, &LauncherConfig::orvaneServer},
    {1210, &LauncherConfig::purchaseServer},
    {1220, &LauncherConfig::telemetryServer},
    {1240, &LauncherConfig::downloadUrl},
    {5000, &LauncherConfig::orvaneQaApiUrl},
    {5001, &LauncherConfig::orvaneCiApiUrl},
    {5100, &LauncherConfig::gameUrl},
    {1011, "text/plain;level=1"},
    {1012, "X-Identifier"},
    {1014, "P-Authorization"},
    // Not a typing error: the first of these three has no underscore in its version.
    {1100, "version:TamlsEarlyAccess,pid:{0},f:CoreSaveDataCreate"},
    {1101, "version:Tamls_EarlyAccess,pid:{0},f:CoreSaveDataRestart"},
    {1102, "version:Tamls_EarlyAccess,pid:{0},f:UserExistence"},
    {2000, "Unable to find the specified procedure in the folder."},
    {2001, "Forbidden"},
    {2002, "If the folder does not exist, it returns an empty string."},
    {2003, "If the file in the specified folder is not found, it returns an empty string."},
    {2004, "If the file in the specified folder is not found, it returns an empty string."},
    {2005, "The specified file could not be read."},
    {2006, "The specified file could not be read."},
    {2007, "The file is invalid."},
    {2008, "The file does not match the specified conditions."},
    {2009, "The specified file is invalid."},
    {2010, "The specified file is not recognized."},
    {2011, "The operation could not be completed because the user canceled it."},
    {2012, "The operation could not be completed due to insufficient memory."},
    {2013, "Invalid JSON format."},
    {2014, "The specified TCP/IP address is invalid."},
    {2015, "If the file in the specified folder is not found."},
    {2016, "If the file in the specified folder is not found."},
    {2017, "If the file in the specified folder is not found."},
    {2018, "END"},
    {10023, "Be sure you are signed in to a Steam account and try again"},
    {10194, "Only one instance of the game can be running at one time."},
    {10196, "Please start Steam."},
    {10239,
     "Your operating system (OS) is not supported by this game. Please check the system "
     "requirement."},
    {kCipherKeyLabel, kBuiltInKey},
    {kSignatureMarkerLabel, kSignatureMarker},
};
static_assert(sizeof kTable / sizeof kTable[0] == 42);

// Prints the line with one write, even if the stream is not buffered, as that of a console. MinGW's
// printf, and msvcrt's fwrite under Wine, would write character by character, so printf_s prints a
// line that is already complete. It is not flushed: the runtime decides when it appears.
void PrintCallLine(StringLabel label) {
  char line[64];
  std::snprintf(line, sizeof line, "QX_LoadStringToMemory called with label: %d\n",
                static_cast<int>(label));
  printf_s("%s", line);
}

// Returns null for a label that is not in the table. The text may belong to `config`, so it is
// valid only as long as `config` is.
const char* FindText(StringLabel label, const LauncherConfig& config) {
  for (const TableEntry& entry : kTable) {
    if (entry.label != label) continue;
    return entry.text != nullptr ? entry.text : (config.*entry.field).c_str();
  }
  return nullptr;
}

ResultCode CopyTextToMemory(StringLabel label, char** text) {
  // Load first: with any label, a lookup must create a missing file and fail on a broken one.
  const LauncherConfig config = LoadLauncherConfig(kConfigPath);
  const char* const source = FindText(label, config);
  if (source == nullptr) return QX_NOT_FOUND;

  // Up to the first NUL, which a setting can contain.
  const std::size_t size = std::strlen(source) + 1;
  char* const copy = static_cast<char*>(AllocateBlock(size));
  if (copy == nullptr) return QX_OUT_OF_MEMORY;

  std::memcpy(copy, source, size);
  *text = copy;
  return QX_SUCCEEDED;
}

}  // namespace

OwnedText LookUpText(StringLabel label) {
  char* text = nullptr;
  QX_LoadStringToMemory(label, &text);
  return OwnedText(text);
}

}  // namespace launcher

ResultCode QX_CALL QX_LoadStringToMemory(StringLabel label, char** text) {
  launcher::PrintCallLine(label);  // on every call, even if it fails
  if (text == nullptr) return QX_BAD_ARGUMENT;

  return launcher::Guarded(QX_FAILED, [=] { return launcher::CopyTextToMemory(label, text); });
}

ResultCode QX_CALL QX_LoadString(StringLabel label, char* destination, std::uint32_t capacity) {
  if (destination == nullptr || capacity == 0) return QX_BAD_ARGUMENT;

  char* text = nullptr;
  const ResultCode result = QX_LoadStringToMemory(label, &text);
  if (result < 0) return result;

  // A longer text leaves destination unwritten. One of exactly capacity bytes has no room for its
  // terminator: CopyText fails and leaves an empty text.
  const launcher::OwnedText owner(text);
  if (std::strlen(text) > capacity) return QX_BAD_ARGUMENT;
  return launcher::CopyText(destination, capacity, text) ? QX_SUCCEEDED : QX_BAD_ARGUMENT;
}

ResultCode QX_CALL QX_UnloadStringFromMemory(char** text) {
  if (text == nullptr) return QX_BAD_ARGUMENT;

  std::free(*text);
  *text = nullptr;
  return QX_SUCCEEDED;
}

std::uint32_t QX_CALL QX_GetLengthOfRString(StringLabel label) {
  const launcher::OwnedText text = launcher::LookUpText(label);
  return text ? static_cast<std::uint32_t>(std::strlen(text.get())) : 0;
}
