// QX_GetSystemInformation: the library's build and vendor in one record.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "config/string_table.h"
#include "frame/bounded_text.h"
#include "launcher_dll.h"

// The record's layout is part of the binary interface.
static_assert(sizeof(SystemInformation) == 176);
static_assert(offsetof(SystemInformation, buildName) == 16);
static_assert(offsetof(SystemInformation, vendorName) == 48);

namespace launcher {
namespace {

// Constants of the interface, not the version of the library.
constexpr std::uint32_t kNumbers[4] = {0, 2, 5, 0};

// The field stays empty if the lookup fails or the text does not fit.
template <std::size_t kCapacity>
void FillField(char (&field)[kCapacity], StringLabel label) {
  const OwnedText text = LookUpText(label);
  if (text) CopyText(field, kCapacity, text.get());
}

}  // namespace
}  // namespace launcher

ResultCode QX_CALL QX_GetSystemInformation(SystemInformation* record, std::uint32_t size) {
  if (record == nullptr || size < sizeof *record) return QX_BAD_ARGUMENT;

  std::memset(record, 0, sizeof *record);
  std::memcpy(record->numbers, launcher::kNumbers, sizeof record->numbers);
  // In this order, since each lookup prints a line.
  launcher::FillField(record->buildName, launcher::kBuildNameLabel);
  launcher::FillField(record->vendorName, launcher::kVendorNameLabel);
  return QX_SUCCEEDED;
}
