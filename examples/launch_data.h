// What the launcher and its client agree on. The library hands a block of bytes from one to the
// other; what stands in it is their own affair.

#ifndef EXAMPLES_LAUNCH_DATA_H_
#define EXAMPLES_LAUNCH_DATA_H_

#include <cstdint>

// The block that the launcher leaves: the container's size in bytes and directly behind it the
// container. The launch line tells the block's address and not its size, so the block tells it.
struct BlockHeader {
  std::uint32_t containerSize;
};

// The most that the client will read.
constexpr std::uint32_t kMaxContainerSize = 0xFFFFF;

// What the client leaves in the current directory: the data as it found them, and what it did.
constexpr char kReceivedPath[] = "received.bin";
constexpr char kClientLogPath[] = "client.log";

#endif  // EXAMPLES_LAUNCH_DATA_H_
