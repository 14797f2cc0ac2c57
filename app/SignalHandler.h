// Process signals: SIGINT is announced and passed on through a pipe, SIGPIPE is ignored.
#pragma once

// Installs the handlers. False when SIGINT cannot be caught; the reason has then been printed to
// standard output. Call once, before the first window.
bool installSignalHandlers();

// Reading end of the pipe; one byte arrives per SIGINT. CInterruptWatch listens to it.
int interruptDescriptor();

// Signal context: prints the signal's number and writes to the pipe; nothing else is allowed there.
void signalHandler(int signo);
