// The command line of the client: its own path, its parent's process id and the address of the
// parent's data.
//
//   "PATH" PPPPPPPPAAAAAAAA
//
// PPPPPPPP is the process id and AAAAAAAA the address, in lower-case hexadecimal, the most
// significant digit first. QX_RightAddress and QX_RightDWORD read them from the end of the line.

#ifndef LAUNCHER_LAUNCH_LAUNCH_LINE_H_
#define LAUNCHER_LAUNCH_LAUNCH_LINE_H_

#include <cstddef>
#include <cstdint>

#include "cipher/container.h"

namespace launcher {

// In bytes, terminator included.
inline constexpr std::size_t kLaunchLineCapacity = 2048;

// The hexadecimal digits of a 32-bit number.
inline constexpr std::size_t kWordDigits = 8;

// The characters besides the path: two quotes, a blank and two numbers.
inline constexpr std::size_t kLaunchLineExtra = 3 + 2 * kWordDigits;

// The longest path, in characters, that leaves room for the rest and the terminator.
inline constexpr std::size_t kMaxClientPathLength = kLaunchLineCapacity - 1 - kLaunchLineExtra;

// Writes the line with its terminator. `clientPath` has at most kMaxClientPathLength characters; a
// `dataAddress` of 0 means that there is no data.
void FormatLaunchLine(char (&line)[kLaunchLineCapacity], const char* clientPath,
                      std::uint32_t processId, std::uint32_t dataAddress);

// The enciphered form of the line is a container. Its payload always has kSignedAreaSize bytes: the
// signature marker, the line without its terminator, zero bytes. If the line does not fit after the
// marker, the whole payload is zero.
inline constexpr std::uint32_t kSignedAreaSize = 2048;
inline constexpr std::uint32_t kEncipheredLineSize = ContainerSize(kSignedAreaSize);

// Writes the enciphered form of a line. Returns false, with `block` unwritten, if the system cannot
// compute the digest.
bool EncipherLaunchLine(std::uint8_t (&block)[kEncipheredLineSize], const char* line);

}  // namespace launcher

#endif  // LAUNCHER_LAUNCH_LAUNCH_LINE_H_
