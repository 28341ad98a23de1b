/* Calls both kinds of name. Needs no C runtime, so that it links where there is none. */

#include <launcher_dll.h>

int main(void) {
  void* block = 0;
  if (QX_IsFailed(QX_Allocate(&block, 8)) || QX_Deallocate(block) != QX_SUCCEEDED) return 1;
  return file_cipher_get_encode_size(5) == 52 ? 0 : 2;
}
