// What makes containers and signed data, and the sizes that callers are told for them. What is
// encoded must decode, also where the output overlaps the input.

#include <cstring>
#include <optional>

#include "config/string_table.h"
#include "fuzz/fuzzing.h"
#include "launcher_dll.h"
#include "support/imitated_cpu.h"

namespace launcher {
namespace {

using fuzz::Bytes;
using fuzz::Require;

constexpr std::uint32_t kPayloadOffset = 40;
const std::string kMarker = kSignatureMarker;

void CheckSizes(std::uint32_t size) {
  const std::uint64_t exact = (std::uint64_t{size} + 36 + 7) / 8 * 8 + 4;
  Require(QX_GetEncodeDataSize(size) == static_cast<std::uint32_t>(exact), "the size that wraps");
  Require(file_cipher_get_encode_size(size) == (size < 0x80000000 ? exact : 0), "the exact size");
  Require(QX_GetSignatureSize() == kMarker.size(), "the marker's size");
  const Bytes one(1);
  Bytes small(kMarker.size(), fuzz::kFill);
  const auto capacity = static_cast<std::uint32_t>(small.size());
  Require(QX_SignSignature(small.data(), capacity, one.data(), std::max(size, 1u)) == 0 &&
              fuzz::IsUntouched(small),
          "no room for any data");
  const auto value = static_cast<std::int32_t>(size);
  Require(QX_IsFailed(value) == (value < 0 ? 1 : 0), "negative is failed");
  Require(QX_IsSucceeded(value) == (value < 0 ? 0 : 1), "else succeeded");
}

void CheckMemory(std::uint32_t size) {
  void* block = nullptr;
  Require(QX_Allocate(&block, size) == (size != 0 ? QX_SUCCEEDED : QX_BAD_ARGUMENT), "a block");
  Require((block != nullptr) == (size != 0), "no block of no size");
  const auto* const bytes = static_cast<const std::uint8_t*>(block);
  Require(std::all_of(bytes, bytes + size, [](std::uint8_t byte) { return byte == 0; }), "zeros");
  Require(QX_Deallocate(block) == QX_SUCCEEDED, "a block goes back");
}

// Signs `data` in place or not, and tells whether it could be. `data` is the signed data then.
bool Sign(Bytes& data, std::uint32_t capacity, bool isInPlace) {
  // In place the data lie at the marker's end already, or further up.
  Bytes area(std::max<std::size_t>(capacity, isInPlace ? kMarker.size() + data.size() : 0),
             fuzz::kFill);
  const Bytes source = isInPlace || !data.empty() ? data : Bytes(1);
  const std::uint8_t* from = source.data();
  if (isInPlace) {
    const std::size_t start = area.size() - data.size();
    std::copy(data.begin(), data.end(), area.begin() + static_cast<std::ptrdiff_t>(start));
    from = area.data() + start;
  }
  const Bytes before = area;
  std::uint8_t none = fuzz::kFill;
  const std::uint8_t result = QX_SignSignature(area.empty() ? &none : area.data(), capacity, from,
                                               static_cast<std::uint32_t>(data.size()));
  const bool fits = capacity >= kMarker.size() + data.size();
  Require(result == (fits ? 1 : 0), "signing by what fits");
  if (!fits) {
    Require(area == before && none == fuzz::kFill, "nothing written when refused");
    return false;
  }
  Bytes whole = test::BytesOf(kMarker);
  whole.insert(whole.end(), data.begin(), data.end());
  Require(std::equal(whole.begin(), whole.end(), area.begin()), "the marker and the data");
  Require(std::equal(area.begin() + static_cast<std::ptrdiff_t>(whole.size()), area.end(),
                     before.begin() + static_cast<std::ptrdiff_t>(whole.size())),
          "nothing behind them");
  data = whole;
  return true;
}

// Encodes and decodes again. In place, the payload lies `distance` bytes behind its container's
// beginning, or further down than the container reaches.
void CheckRoundTrip(const Bytes& payload, std::uint32_t distance, bool isSigned, bool byName) {
  const auto size = static_cast<std::uint32_t>(payload.size());
  const std::uint32_t containerSize = QX_GetEncodeDataSize(size);
  Bytes area(std::max(containerSize, distance + size), fuzz::kFill);
  std::copy(payload.begin(), payload.end(), area.begin() + distance);
  const Bytes before = area;
  const std::uint8_t* const from = area.data() + distance;
  const bool isDone = byName ? file_cipher_encode(from, size, area.data()) == QX_CIPHER_SUCCEEDED
                             : QX_Encode(area.data(), from, static_cast<std::int32_t>(size)) == 0;
  Require(isDone == (size != 0), "all but nothing is encoded");
  if (!isDone) {
    Require(area == before, "output unwritten when refused");
    return;
  }
  Require(std::equal(area.begin() + containerSize, area.end(), before.begin() + containerSize),
          "nothing behind the container");

  Bytes container(area.begin(), area.begin() + containerSize);
  std::uint32_t payloadSize = 0;
  std::uint32_t payloadOffset = 0;
  Require(QX_Decode(container.data(), static_cast<std::int32_t>(containerSize), &payloadSize,
                    &payloadOffset, 1) == QX_SUCCEEDED,
          "decoding");
  const bool hasMarker =
      isSigned ||
      (size >= kMarker.size() && std::memcmp(payload.data(), kMarker.data(), kMarker.size()) == 0);
  const auto skipped = hasMarker ? static_cast<std::uint32_t>(kMarker.size()) : 0;
  Require(payloadOffset == kPayloadOffset + skipped && payloadSize == size - skipped, "its place");
  Require(std::equal(payload.begin(), payload.end(), container.begin() + kPayloadOffset),
          "decode(encode(x)) == x");
}

}  // namespace
}  // namespace launcher

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace launcher;
  FuzzedDataProvider input(data, size);
  std::optional<test::ImitatedCpu> plainCpu;
  if (input.ConsumeBool()) plainCpu.emplace(CpuFeatures());
  CheckSizes(input.ConsumeIntegral<std::uint32_t>());
  CheckMemory(input.ConsumeIntegralInRange<std::uint32_t>(0, 500));

  const bool isInPlace = input.ConsumeBool();
  const bool byName = input.ConsumeBool();
  const bool signs = input.ConsumeBool();
  const auto capacityChoice = input.ConsumeIntegralInRange<std::uint32_t>(0, 50);
  const auto further = input.ConsumeIntegralInRange<std::uint32_t>(0, 100);
  const auto growth = input.ConsumeIntegral<std::uint8_t>();
  auto payload = input.ConsumeRemainingBytes<std::uint8_t>();
  // Seldom to more than the cipher takes in one stretch.
  if (growth >= 0xFE) payload.resize(payload.size() + (64 << 10), growth);
  const auto payloadSize = static_cast<std::uint32_t>(payload.size());
  const std::uint32_t enough = payloadSize + QX_GetSignatureSize();
  const std::uint32_t capacity =
      capacityChoice < 40 ? enough + capacityChoice - 10 : std::min(enough, capacityChoice - 40);
  const bool isSigned = signs && Sign(payload, capacity, isInPlace);
  const auto apart = QX_GetEncodeDataSize(static_cast<std::uint32_t>(payload.size()));
  CheckRoundTrip(payload, (isInPlace ? kPayloadOffset : apart) + further, isSigned, byName);
  return 0;
}
