// The player's end of the link to the hub. After open() succeeds, a thread of its own delivers the
// hub's packets. When the hub ends, that thread tries to connect again every second until close().
//
// Any thread may call. Inside the callback, open() fails with AlreadyOpen. There close() only asks
// the thread to end: no packet follows, and the next open(), close() or the destructor joins it.
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
    void close(); // returns when the callback is over; none follows
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

    std::mutex m_lifecycle; // held by open() and close(); the delivery thread never takes it
    std::thread m_thread;   // under m_lifecycle

    // Set before the thread starts.
    int m_nEndpoint = 0;
    KvrCommCallback m_pCallback = nullptr;
    void* m_pContext = nullptr;
    std::string m_strPath;
    FileDescriptor m_wake; // readable when the thread must end

    std::atomic<bool> m_bStop{true};

    std::mutex m_socketLock; // not for the thread's own reads: it alone replaces the socket
    FileDescriptor m_socket;
};
