// `doctor bundle`: a ZIP file with the report, to send to those who help.

#ifndef LAUNCHER_TOOLS_DOCTOR_BUNDLE_H_
#define LAUNCHER_TOOLS_DOCTOR_BUNDLE_H_

#include <filesystem>

#include "doctor/checkup.h"

namespace launcher::doctor {

struct BundleOptions {
  std::filesystem::path output;
  bool isAgreed = false;  // do not ask
  bool replaces = false;  // a file that is there
};

// Shows what will be in the file, asks, and writes it. Answers the exit status: that of the report,
// or 2 if no file was written.
int WriteBundle(const Subject& subject, const BundleOptions& options);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_BUNDLE_H_
