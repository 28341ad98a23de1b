// Owners of system handles: each releases its handle when it goes out of scope.

#ifndef LAUNCHER_PLATFORM_OWNERS_H_
#define LAUNCHER_PLATFORM_OWNERS_H_

#include <cstdio>
#include <memory>
#include <utility>

#include "platform/win32.h"

namespace launcher {

// Kind has the handle's type, the value that means none, and Release. The failures of Release are
// not reported: nothing could be done about them.
template <class Kind>
class Owner {
 public:
  using Handle = typename Kind::Handle;

  Owner() = default;
  explicit Owner(Handle handle) : handle_(handle) {}
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() { Reset(); }

  explicit operator bool() const { return handle_ != Kind::kNone; }
  Handle Get() const { return handle_; }

  // Returns the handle without releasing it. The caller owns it then.
  Handle Detach() { return std::exchange(handle_, Kind::kNone); }

  // Releases the handle, if there is one, and becomes the owner of another one.
  void Reset(Handle handle = Kind::kNone) {
    if (handle_ != Kind::kNone) Kind::Release(handle_);
    handle_ = handle;
  }

 private:
  Handle handle_ = Kind::kNone;
};

// A process or a thread. The functions that create these return null on failure.
struct KernelHandleKind {
  using Handle = HANDLE;
  static constexpr Handle kNone = nullptr;
  static void Release(Handle handle) { CloseHandle(handle); }
};
using KernelHandle = Owner<KernelHandleKind>;

// A file or a directory of CreateFileA, which returns INVALID_HANDLE_VALUE on failure. That is a
// cast and so not constexpr.
struct FileHandleKind {
  using Handle = HANDLE;
  static inline const Handle kNone = INVALID_HANDLE_VALUE;
  static void Release(Handle handle) { CloseHandle(handle); }
};
using FileHandle = Owner<FileHandleKind>;

// A listing of FindFirstFileA.
struct FindHandleKind {
  using Handle = HANDLE;
  static inline const Handle kNone = INVALID_HANDLE_VALUE;
  static void Release(Handle handle) { FindClose(handle); }
};
using FindHandle = Owner<FindHandleKind>;

// A hash of CNG.
struct CngHashKind {
  using Handle = BCRYPT_HASH_HANDLE;
  static constexpr Handle kNone = nullptr;
  static void Release(Handle handle) { BCryptDestroyHash(handle); }
};
using CngHash = Owner<CngHashKind>;

struct CryptProviderKind {
  using Handle = HCRYPTPROV;
  static constexpr Handle kNone = 0;
  static void Release(Handle handle) { CryptReleaseContext(handle, 0); }
};
using CryptProvider = Owner<CryptProviderKind>;

struct CryptHashKind {
  using Handle = HCRYPTHASH;
  static constexpr Handle kNone = 0;
  static void Release(Handle handle) { CryptDestroyHash(handle); }
};
using CryptHash = Owner<CryptHashKind>;

// A block of LocalAlloc.
template <class T>
struct LocalBlockKind {
  using Handle = T*;
  static constexpr Handle kNone = nullptr;
  static void Release(Handle handle) { LocalFree(handle); }
};
template <class T>
using LocalBlock = Owner<LocalBlockKind<T>>;

// A stream. Its last write can fail unnoticed when it closes, so a writer must not leave anything
// in its buffer.
struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using OwnedFile = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace launcher

#endif  // LAUNCHER_PLATFORM_OWNERS_H_
