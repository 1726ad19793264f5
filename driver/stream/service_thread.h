// Each open stream's own thread: it waits for the kernel's completion calls and passes finished buffers
// to the stream's direction, at time-critical priority and under DriverMutex.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Once each, at process attach and detach. Without a thread-local slot no thread can be started later.
void InitializeServiceThreads();
void DeleteServiceThreads();

// Waits, at most five seconds, until no service thread runs the library's code any more (those whose stream
// was closed from inside a callback end by themselves) and no stream is in use and no lock. FALSE: not so.
BOOL AwaitServiceThreads();

// Whether the calling thread is the service thread of one of this process's streams.
bool OnServiceThread();

// TRUE when the thread is running and waiting. A stream whose thread cannot be started stays usable but
// gets its buffers back only at a reset or close.
BOOL StartServiceThread(StreamInstance* stream);

// Ends the thread and waits until it has finished with the stream and its device, at most five seconds.
// FALSE when it has not, or when it is the calling thread (a client closing from inside its callback):
// the thread then lets go of the stream by itself, and the device must be left to it.
BOOL StopServiceThread(StreamInstance* stream);

// Completes a header that the kernel has refused like one that the card has finished with: on the service
// thread or, when that does not run, at once.
void CompleteRefusedHeader(StreamInstance* stream, WAVEHDR* header);

}  // namespace kestvox
