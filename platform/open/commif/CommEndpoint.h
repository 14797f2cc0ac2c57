// The player's end of the link to the hub. After a successful open() a thread of its own delivers
// the hub's packets; when the hub goes it tries to reach it again once a second until close().
//
// Any thread may call. From inside the callback, open() fails with AlreadyOpen and close() only
// asks for the end: no further packet is delivered, and the thread is joined by the next open(),
// close() or the destructor on another thread.
#pragma once

#include "platform/libcommif.h"
#include "platform/open/commif/CommError.h"
#include "platform/open/commif/FileDescriptor.h"
#include "platform/open/commif/PacketSocket.h"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

class CommEndpoint
{
public:
    CommEndpoint() = default;
    ~CommEndpoint();
    CommEndpoint(const CommEndpoint&) = delete;
    CommEndpoint& operator=(const CommEndpoint&) = delete;

    CommError open(int endpoint, KvrCommCallback callback, void* context);
    void close(); // on return the callback is over, and none follows
    bool isReady();
    CommError send(int endpoint, const void* data, size_t length);

private:
    CommError start();
    bool startThread();
    void requestStop();
    void join(); // called with m_lifecycle held
    void run();  // the delivery thread, as the functions below
    void reconnect();
    void serve();
    void deliver(PacketBytes& packet);
    void replaceSocket(FileDescriptor socket);

    std::mutex m_lifecycle; // open() and close() as a whole; never taken on the delivery thread
    std::thread m_thread;   // under m_lifecycle

    // Set before the thread starts.
    int m_nEndpoint = 0;
    KvrCommCallback m_pCallback = nullptr;
    void* m_pContext = nullptr;
    std::string m_strPath;
    FileDescriptor m_wake; // readable once the thread shall end

    std::atomic<bool> m_bStop{true};

    std::mutex m_socketLock; // sending; the thread's own reads need no lock, as it alone replaces
    FileDescriptor m_socket;
};
