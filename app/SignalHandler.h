// Process signals: SIGINT is printed and passed on through a pipe, SIGPIPE is ignored.
#pragma once

// Blocks SIGINT until the handlers are installed. Call it first: a SIGINT during the start would
// kill the program.
void holdInterrupts();

// Installs the handlers and unblocks SIGINT. Returns false if SIGINT cannot be caught, and prints
// the reason to standard output. Call it once, before the first window.
bool installSignalHandlers();

// The pipe's reading end. Each SIGINT writes one byte.
int interruptDescriptor();

// Signal context: prints the signal's number and writes to the pipe.
void signalHandler(int signo);
