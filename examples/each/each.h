/* One small example for each of the library's functions. The site shows the code between two
 * markers [NAME]; example_each runs them all. */

#ifndef EXAMPLES_EACH_EACH_H_
#define EXAMPLES_EACH_EACH_H_

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "launcher_dll.h"

/* How an example ended. Without Steam a program goes on as well as it can. */
typedef enum Outcome { kDone, kFailed, kNoSteam } Outcome;

typedef Outcome Example(void);

/* Runs one example and counts it. */
void Run(const char* name, Example* example);

/* Given on the command line: a client to start, and an address that answers. */
extern const char* clientPath;
extern const char* serverUrl;

/* The groups, each in an order in which they make sense. */
void RunTextsAndMemory(void);
void RunContainer(void);
void RunLaunch(void);
void RunHost(void);
void RunSteamSession(void); /* leaves Steam's session open */
void RunSteamFiles(void);
void RunSteamEnd(void);

#endif /* EXAMPLES_EACH_EACH_H_ */
