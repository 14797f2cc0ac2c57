// The hub's command line.
#pragma once

#include "hub/HubCommand.h"

#include <string>
#include <vector>

struct HubOptions
{
    bool help = false;
    bool prompt = true; // read commands from standard input
    std::string socketPath;
    std::vector<HubCommand> messages; // for the first player that connects
    std::string error;                // not empty: what is wrong with the command line
};

HubOptions readHubOptions(const std::vector<std::string>& arguments);

void printHubHelp();
