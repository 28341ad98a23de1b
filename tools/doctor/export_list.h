// The list of the library's exports, with what each result means.

#ifndef LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_
#define LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace launcher::doctor {

struct ResultMeaning {
  std::int64_t from;
  std::uint64_t to;  // as the type of the result reads it; equal to `from` for one value
  std::string means;
  std::string next;
};

struct Export {
  std::uint32_t ordinal;
  std::string name;
  std::string decorated;
  std::string returns;
  std::vector<std::string> arguments;
  std::vector<ResultMeaning> results;
};

const std::vector<Export>& Exports();

// By its plain or its decorated name; null for none.
const Export* FindExport(const std::string& name);

// What a result of an export means, null where the list does not say.
const ResultMeaning* MeaningOf(const Export& entry, std::int64_t result);

// The text of `doctor explain`, for all results where `result` is empty. Throws
// std::invalid_argument, with a sentence, for an unknown export or a result that is none.
std::string Explain(const std::string& name, const std::optional<std::string>& result);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_EXPORT_LIST_H_
