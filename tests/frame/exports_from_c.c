/* The public header is plain C: this file is no test of behaviour, it has to compile and link. */

#include "frame/exports_from_c.h"

#include "launcher_dll.h"

int UseLibraryFromC(void) {
  void* block = 0;
  if (QX_IsFailed(QX_Allocate(&block, 16))) return 0;
  return QX_Deallocate(block) == QX_SUCCEEDED && QX_GetSignatureSize() == 22;
}
