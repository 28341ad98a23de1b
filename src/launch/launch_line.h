// What the client is told: its own path, and where to find its parent and the parent's data.
//
//   "PATH" PPPPPPPPAAAAAAAA
//
// PPPPPPPP is the parent's process id and AAAAAAAA the data's address, lower-case hexadecimal, most
// significant digit first. The readers QX_RightAddress and QX_RightDWORD take them off the end.

#ifndef LAUNCHER_LAUNCH_LAUNCH_LINE_H_
#define LAUNCHER_LAUNCH_LAUNCH_LINE_H_

#include <cstddef>
#include <cstdint>

#include "cipher/container.h"
#include "launch/hex_digits.h"

namespace launcher {

inline constexpr std::size_t kLaunchLineCapacity = 2048;

// All that is not the path: two quotes, a blank and two numbers.
inline constexpr std::size_t kLaunchLineExtra = 3 + 2 * kWordDigits;

// The longest path, in characters, that leaves room for the rest and the terminator.
inline constexpr std::size_t kMaxClientPathLength = kLaunchLineCapacity - 1 - kLaunchLineExtra;

// Writes the line. `clientPath` has at most kMaxClientPathLength characters; a `dataAddress` of 0
// stands for no data.
void FormatLaunchLine(char (&line)[kLaunchLineCapacity], const char* clientPath,
                      std::uint32_t processId, std::uint32_t dataAddress);

// The line once more, signed and enciphered: the container of a payload that is always of
// kSignedAreaSize bytes, the signature marker, the line without its terminator and zero bytes. A
// line that does not fit behind the marker leaves all of the payload zero.
inline constexpr std::uint32_t kSignedAreaSize = 2048;
inline constexpr std::uint32_t kEncipheredLineSize = ContainerSize(kSignedAreaSize);

// Writes the enciphered form. Answers false, with `block` unwritten, where the system gives no
// digest.
bool EncipherLaunchLine(std::uint8_t (&block)[kEncipheredLineSize], const char* line);

}  // namespace launcher

#endif  // LAUNCHER_LAUNCH_LAUNCH_LINE_H_
