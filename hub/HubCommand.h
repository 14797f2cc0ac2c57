// One line of the prompt, or one message of the command line.
#pragma once

#include "platform/open/commif/PacketSocket.h"

#include <optional>
#include <string>

struct HubCommand
{
    enum class Kind { Send, Help, Quit };

    Kind kind = Kind::Send;
    PacketBytes packet;      // for Send
    unsigned long count = 1; // how often it is sent
};

std::optional<HubCommand> parseHubCommand(const std::string& line);

extern const char* const kHubCommandHelp;
