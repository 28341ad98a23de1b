#include "bfbr/outcome.h"

#include "support/interrupt.h"
#include "support/json_text.h"

namespace launcher {
namespace {

std::string NumberOrNull(const std::optional<std::uint64_t>& number) {
  return number ? std::to_string(*number) : "null";
}

std::string ClaimOrNull(const std::optional<bool>& claim) {
  return !claim ? "null" : *claim ? "true" : "false";
}

}  // namespace

const char* ReasonText(Reason reason) {
  static const char* const kTexts[] = {"",       "size",   "magic",    "length",
                                       "digest", "marker", "read",     "write",
                                       "exists", "memory", "internal", "interrupted"};
  return kTexts[static_cast<int>(reason)];
}

int ExitCodeFor(Reason reason) {
  switch (reason) {
    case Reason::kNone:
      return kFine;
    case Reason::kRead:
    case Reason::kWrite:
    case Reason::kExists:
      return kBadFile;
    case Reason::kMemory:
    case Reason::kInternal:
      return kNoMemory;
    case Reason::kInterrupted:
      return kInterruptedExitCode;
    default:
      return kBadData;
  }
}

std::string ShownName(const Outcome& outcome) {
  return outcome.file == "-" ? "standard input" : outcome.file;
}

std::string JsonOf(const Outcome& outcome) {
  const bool isFine = outcome.reason == Reason::kNone;
  return "{\"file\":" + JsonText(outcome.file) + ",\"ok\":" + (isFine ? "true" : "false") +
         ",\"reason\":" + (isFine ? "null" : JsonText(ReasonText(outcome.reason))) +
         ",\"message\":" + (isFine ? "null" : JsonText(outcome.message)) +
         ",\"containerSize\":" + NumberOrNull(outcome.containerSize) +
         ",\"payloadSize\":" + NumberOrNull(outcome.payloadSize) +
         ",\"marker\":" + ClaimOrNull(outcome.hasMarker) +
         ",\"sha256\":" + (outcome.sha256.empty() ? "null" : JsonText(outcome.sha256)) +
         ",\"fillerZero\":" + ClaimOrNull(outcome.isFillerZero) +
         ",\"repeatedBlocks\":" + NumberOrNull(outcome.repeatedBlocks) + "}";
}

std::string TextOf(const Outcome& outcome, Command command) {
  const std::string name = ShownName(outcome);
  const std::string payload = Grouped(outcome.payloadSize.value_or(0)) + " bytes";
  const bool hasMarker = outcome.hasMarker.value_or(false);
  if (command == Command::kVerify) {
    return name + ": fine, a payload of " + payload + (hasMarker ? " with" : " without") +
           " the marker\n";
  }
  const std::uint64_t containerSize = outcome.containerSize.value_or(0);
  return name + "\n" +                                                  //
         "  container        " + Grouped(containerSize) + " bytes\n" +  //
         "  payload          " + payload + "\n" +                       //
         "  sha256           " + outcome.sha256 + "\n" +                //
         "  marker           " + (hasMarker ? "yes" : "no") + "\n" +    //
         "  filler           " +
         (outcome.isFillerZero.value_or(true) ? "zero" : "not zero, which readers do not mind") +
         "\n" + "  repeated blocks  " + Grouped(outcome.repeatedBlocks.value_or(0)) + " of " +
         Grouped(containerSize / 8) + "\n";
}

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t place = text.size(); place > 3;) {
    place -= 3;
    text.insert(place, ",");
  }
  return text;
}

}  // namespace launcher
