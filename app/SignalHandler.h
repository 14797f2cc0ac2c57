// Process signals: SIGINT is announced and passed on through a pipe, SIGPIPE is ignored.
#pragma once

// Lets a SIGINT wait until the handlers are installed. Call first: it would end the program halfway
// into its start.
void holdInterrupts();

// Installs the handlers and lets a SIGINT that waits through. False when SIGINT cannot be caught;
// the reason has then been printed to standard output. Call once, before the first window.
bool installSignalHandlers();

// Reading end of the pipe; one byte arrives per SIGINT. CInterruptWatch listens to it.
int interruptDescriptor();

// Signal context: prints the signal's number and writes to the pipe; nothing else is allowed there.
void signalHandler(int signo);
