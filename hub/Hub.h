// The device's side of the link: prints what players send, sends what it is told to. One thread.
#pragma once

#include "hub/HubOptions.h"
#include "hub/LineReader.h"
#include "platform/open/commif/FileDescriptor.h"

#include <vector>

class Hub
{
public:
    // The hub ends when `stop` becomes readable.
    Hub(FileDescriptor listener, FileDescriptor stop, const HubOptions& options);

    void run();

private:
    bool waitForWork(); // false: the hub must end
    void acceptPlayers();
    void readPlayers();
    bool readPlayer(const FileDescriptor& player); // false: it has gone
    void readCommands();
    void perform(const HubCommand& command);
    void sendToAll(const HubCommand& command);
    unsigned long sendTo(const FileDescriptor& player, const HubCommand& command);
    bool sendOne(const FileDescriptor& player, const PacketBytes& packet);

    FileDescriptor m_listener;
    FileDescriptor m_stop;
    std::vector<HubCommand> m_vecFirstMessages;
    std::vector<FileDescriptor> m_vecPlayers;
    LineReader m_input;
    bool m_bPrompt;
    bool m_bAcceptFailed = false; // leave the listener out of poll(), or it spins
    bool m_bInputReady = false;
    bool m_bQuit = false;
};
