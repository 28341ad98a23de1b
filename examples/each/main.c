/* Runs an example of each function, in the current directory, which has a folder "downloads" that
 * may be removed.
 *
 *   example_each CLIENT URL
 *
 * CLIENT, which should be example_client, is started. URL is requested. Exit status: 0 if all 60
 * did what they should (without Steam, what they should do then), 1 if not, 2 for a wrong call. */

#include "each.h"

const char* clientPath;
const char* serverUrl;

static int count;
static int failures;
static int withoutSteam;

void Run(const char* name, Example* example) {
  const Outcome outcome = example();
  ++count;
  if (outcome == kNoSteam) ++withoutSteam;
  if (outcome == kFailed) {
    ++failures;
    fprintf(stderr, "each: failed: %s\n", name);
  }
}

int main(int argumentCount, char** arguments) {
  if (argumentCount != 3) {
    fprintf(stderr, "usage: example_each CLIENT URL\n");
    return 2;
  }
  clientPath = arguments[1];
  serverUrl = arguments[2];

  RunTextsAndMemory();
  RunContainer();
  RunLaunch();
  RunHost();
  RunSteamSession();
  RunSteamFiles();
  RunSteamEnd();

  printf("each:     %d functions, %d failed, %d without Steam\n", count, failures, withoutSteam);
  return count == 60 && failures == 0 ? 0 : 1;
}
