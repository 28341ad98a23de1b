/* One small example for each of the library's functions. The site shows the code between two
 * markers [NAME]; example_each runs them all. */

#ifndef EXAMPLES_EACH_EACH_H_
#define EXAMPLES_EACH_EACH_H_

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "launcher_dll.h"

/* How an example ended. kNoSteam is not a failure: a program should work without Steam too. */
typedef enum Outcome { kDone, kFailed, kNoSteam } Outcome;

typedef Outcome Example(void);

/* Runs one example and counts it. */
void Run(const char* name, Example* example);

/* Given on the command line: a client to start, and the URL of a running server. */
extern const char* clientPath;
extern const char* serverUrl;

/* Each runs a group of examples. Later examples may need earlier ones. */
void RunTextsAndMemory(void);
void RunContainer(void);
void RunLaunch(void);
void RunHost(void);
void RunSteamSession(void); /* leaves Steam's session open */
void RunSteamFiles(void);
void RunSteamEnd(void);

#endif /* EXAMPLES_EACH_EACH_H_ */
