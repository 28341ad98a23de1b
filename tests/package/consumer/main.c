/* A container there and back. Needs no C runtime, so that it links where there is none. */

#include <launcher_dll.h>

static uint8_t data[] = {'p', 'r', 'e', 'f', 'i', 'x', 0, 1, 2, 3};
static uint8_t key[] = {'7', 'E', '3', 'A', '9', '0', 'C', '2',
                        'D', '1', 'F', '8', '6', 'B', '4', '5'};

int main(void) {
  uint8_t* block = 0;
  uint32_t size = 0;
  uint32_t offset = 0;
  const uint32_t blockSize = file_cipher_get_encode_size(sizeof data);
  if (QX_IsFailed(QX_Allocate((void**)&block, blockSize))) return 1;
  if (file_cipher_encode(data, sizeof data, block) != QX_CIPHER_SUCCEEDED) return 2;
  if (file_cipher_decode(block, blockSize, key, sizeof key, &size, &offset, "prefix") !=
      QX_CIPHER_SUCCEEDED) {
    return 3;
  }
  if (size != 4 || block[offset + 3] != 3) return 4;
  return QX_Deallocate(block) == QX_SUCCEEDED ? 0 : 5;
}
