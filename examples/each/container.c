/* Containers and the signature marker. */

#include "each.h"

/* [file_cipher_get_encode_size] */
static Outcome MeasureContainer(void) {
  const uint32_t size = file_cipher_get_encode_size(100);
  if (size == 0) return kFailed; /* there is no container for 0x80000000 bytes or more */
  printf("100 bytes make a container of %lu\n", (unsigned long)size);
  return size == 140 ? kDone : kFailed;
}
/* [file_cipher_get_encode_size] */

/* [file_cipher_encode] */
static Outcome EncipherFile(void) {
  const uint8_t payload[] = "level=7;coins=120";
  const uint32_t size = file_cipher_get_encode_size(sizeof payload);
  uint8_t* const container = malloc(size);
  if (container == NULL) return kFailed;
  /* Compare the result with 0: QX_IsFailed does not take 7 for a failure. */
  const CipherCode result = file_cipher_encode(payload, sizeof payload, container);
  if (result == QX_CIPHER_SUCCEEDED) printf("%lu bytes\n", (unsigned long)size);
  free(container);
  return result == QX_CIPHER_SUCCEEDED ? kDone : kFailed;
}
/* [file_cipher_encode] */

/* [file_cipher_decode] */
static Outcome DecipherFile(void) {
  uint8_t block[44] = "";
  char key[64];
  uint32_t size = 0, offset = 0;
  if (QX_LoadString(11000, key, sizeof key) != QX_SUCCEEDED) return kFailed; /* the built-in key */
  if (file_cipher_encode((const uint8_t*)"save", 4, block) != QX_CIPHER_SUCCEEDED) return kFailed;
  if (file_cipher_decode(block, sizeof block, (const uint8_t*)key, (int32_t)strlen(key), &size,
                         &offset, NULL) != QX_CIPHER_SUCCEEDED)
    return kFailed;
  return size == 4 && memcmp(block + offset, "save", size) == 0 ? kDone : kFailed;
}
/* [file_cipher_decode] */

/* [QX_GetEncodeDataSize] */
static Outcome MeasureData(void) {
  const uint32_t size = QX_GetEncodeDataSize(100);
  /* QX_Decode refuses a larger container. */
  return size <= 1048575 && size == 140 ? kDone : kFailed;
}
/* [QX_GetEncodeDataSize] */

/* [QX_Encode] */
static Outcome EncipherData(void) {
  const uint8_t payload[] = {1, 2, 3, 4};
  uint8_t container[44]; /* QX_GetEncodeDataSize(4) */
  if (QX_GetEncodeDataSize(sizeof payload) != sizeof container) return kFailed;
  if (QX_Encode(container, payload, sizeof payload) != QX_SUCCEEDED) return kFailed;
  return memcmp(container, "BFBR", 4) == 0 ? kDone : kFailed;
}
/* [QX_Encode] */

/* [QX_Decode] */
static Outcome DecipherData(void) {
  uint8_t block[44];
  uint32_t size = 0, offset = 0;
  if (QX_Encode(block, (const uint8_t*)"save", 4) != QX_SUCCEEDED) return kFailed;
  if (QX_Decode(block, sizeof block, &size, &offset, 1) != QX_SUCCEEDED) return kFailed;
  if (offset == 0) return kFailed; /* no intact container, although the result is 0 */
  return size == 4 && memcmp(block + offset, "save", size) == 0 ? kDone : kFailed;
}
/* [QX_Decode] */

/* [QX_GetSignatureSize] */
static Outcome MakeRoomForMarker(void) {
  const uint32_t signedSize = QX_GetSignatureSize() + 4;
  uint8_t* const signedData = malloc(signedSize);
  if (signedData == NULL) return kFailed;
  const uint8_t wasSigned = QX_SignSignature(signedData, signedSize, (const uint8_t*)"save", 4);
  free(signedData);
  return wasSigned != 0 ? kDone : kFailed;
}
/* [QX_GetSignatureSize] */

/* [QX_SignSignature] */
static Outcome SignData(void) {
  uint8_t signedData[22 + 4], block[68];
  uint32_t size = 0, offset = 0;
  if (!QX_SignSignature(signedData, sizeof signedData, (const uint8_t*)"save", 4)) return kFailed;
  if (QX_GetEncodeDataSize(sizeof signedData) > sizeof block) return kFailed;
  if (QX_Encode(block, signedData, sizeof signedData) != QX_SUCCEEDED) return kFailed;
  const int32_t blockSize = (int32_t)QX_GetEncodeDataSize(sizeof signedData);
  if (QX_Decode(block, blockSize, &size, &offset, 1) != QX_SUCCEEDED) return kFailed;
  return offset == 62 && size == 4 ? kDone : kFailed; /* 62: the marker was there */
}
/* [QX_SignSignature] */

void RunContainer(void) {
  Run("file_cipher_get_encode_size", MeasureContainer);
  Run("file_cipher_encode", EncipherFile);
  Run("file_cipher_decode", DecipherFile);
  Run("QX_GetEncodeDataSize", MeasureData);
  Run("QX_Encode", EncipherData);
  Run("QX_Decode", DecipherData);
  Run("QX_GetSignatureSize", MakeRoomForMarker);
  Run("QX_SignSignature", SignData);
}
