// How many blocks of a container occur in it already.

#ifndef LAUNCHER_TOOLS_BFBR_REPEATED_BLOCKS_H_
#define LAUNCHER_TOOLS_BFBR_REPEATED_BLOCKS_H_

#include <cstddef>
#include <cstdint>

namespace launcher {

// Counts the 8-byte blocks that are equal to an earlier one. Equal blocks are equal before and
// after the cipher, so either will do. `blocks` lies at a multiple of 8 and holds rubbish
// afterwards: it is sorted in place, which takes no more memory whatever the size.
std::uint64_t CountRepeatedBlocks(std::uint8_t* blocks, std::size_t count);

}  // namespace launcher

#endif  // LAUNCHER_TOOLS_BFBR_REPEATED_BLOCKS_H_
