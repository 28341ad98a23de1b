#include "support/new_file.h"

namespace launcher {

SystemError WriteNewFile(const std::string& path, const std::string& bytes,
                         NewFile::Existing existing, bool isSafe) {
  NewFile file;
  SystemError error = file.Open(path);
  if (error == 0) error = file.Write(bytes.data(), bytes.size());
  if (error == 0) error = file.Commit(existing, isSafe);
  return error;
}

}  // namespace launcher
