// Results of KvrComm_GetInnerErrorCode(): the last failure. A success does not reset it.
#pragma once

enum class CommError : unsigned {
    None = 0,
    NoHub = 1,        // nothing answers at the socket's path
    AlreadyOpen = 2,  // set up twice, or from inside the callback
    BadArgument = 3,  // no callback, another endpoint, no data, or a packet too long
    NotConnected = 4, // never set up, closed, or the hub has gone
    QueueFull = 5,    // the hub does not read; sending never waits
    NoThread = 6      // the system gives no thread or descriptor
};
