#include "hub/Hub.h"

#include "hub/PacketText.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kPlayerReadsMs = 5000; // how long to wait for a player that does not read
constexpr int kAcceptAgainMs = 1000;

} // namespace

Hub::Hub(FileDescriptor listener, FileDescriptor stop, const HubOptions& options)
    : m_listener(std::move(listener)),
      m_stop(std::move(stop)),
      m_vecFirstMessages(options.messages),
      m_input(STDIN_FILENO),
      m_bPrompt(options.prompt)
{
}

void Hub::run()
{
    while (!m_bQuit && waitForWork()) {
        readPlayers();
        acceptPlayers(); // before the commands, which are for every player connected by now
        readCommands();
    }
    acceptPlayers();
    readPlayers(); // prints what players sent before the hub was told to end
}

bool Hub::waitForWork()
{
    std::vector<pollfd> all = {{m_stop.get(), POLLIN, 0},
                               {m_bPrompt ? STDIN_FILENO : -1, POLLIN, 0},
                               {m_bAcceptFailed ? -1 : m_listener.get(), POLLIN, 0}};
    for (const FileDescriptor& player : m_vecPlayers)
        all.push_back({player.get(), POLLIN | POLLRDHUP, 0});
    const bool failed = poll(all.data(), all.size(), m_bAcceptFailed ? kAcceptAgainMs : -1) < 0;
    m_bInputReady = !failed && all[1].revents != 0;
    return failed ? errno == EINTR : all[0].revents == 0;
}

void Hub::acceptPlayers()
{
    for (;;) {
        FileDescriptor player(
            accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        m_bAcceptFailed = !player.isValid() && errno != EAGAIN;
        if (!player.isValid())
            return;
        std::puts("player connected");
        m_vecPlayers.push_back(std::move(player));
        for (const HubCommand& message : m_vecFirstMessages)
            perform(message);
        m_vecFirstMessages.clear();
    }
}

void Hub::readPlayers()
{
    const auto gone = [this](const FileDescriptor& player) { return !readPlayer(player); };
    m_vecPlayers.erase(std::remove_if(m_vecPlayers.begin(), m_vecPlayers.end(), gone),
                       m_vecPlayers.end());
}

bool Hub::readPlayer(const FileDescriptor& player)
{
    PacketBytes packet;
    for (;;) {
        switch (receivePacket(player, packet)) {
        case Received::Packet:
            std::printf("received %s\n", describePacket(packet).c_str());
            break;
        case Received::Nothing:
            return true;
        case Received::End:
            std::puts("player left");
            return false;
        }
    }
}

void Hub::readCommands()
{
    if (!m_bInputReady)
        return;
    for (const std::string& line : m_input.readLines()) {
        if (line.find_first_not_of(' ') == std::string::npos)
            continue;
        if (const std::optional<HubCommand> command = parseHubCommand(line))
            perform(*command);
        else
            std::printf("cannot read '%s'; type help\n", line.c_str());
    }
    m_bQuit = m_bQuit || m_input.atEnd();
}

void Hub::perform(const HubCommand& command)
{
    switch (command.kind) {
    case HubCommand::Kind::Send:
        sendToAll(command);
        break;
    case HubCommand::Kind::Help:
        std::fputs(kHubCommandHelp, stdout);
        break;
    case HubCommand::Kind::Quit:
        m_bQuit = true;
        break;
    }
}

void Hub::sendToAll(const HubCommand& command)
{
    if (m_vecPlayers.empty())
        std::puts("no player to send to");
    for (const FileDescriptor& player : m_vecPlayers)
        std::printf("sent %lu of %lu\n", sendTo(player, command), command.count);
}

unsigned long Hub::sendTo(const FileDescriptor& player, const HubCommand& command)
{
    unsigned long sent = 0;
    while (sent < command.count && sendOne(player, command.packet))
        ++sent;
    return sent;
}

// Waits while the player's queue is full. If sending fails, readPlayer() drops the player, as its
// last message may still be unread.
bool Hub::sendOne(const FileDescriptor& player, const PacketBytes& packet)
{
    for (;;) {
        const int error = sendPacket(player, packet.data(), packet.size());
        if (error == 0)
            return true;
        if (error != EAGAIN || !waitUntilWritable(player, m_stop, kPlayerReadsMs))
            return false;
    }
}
