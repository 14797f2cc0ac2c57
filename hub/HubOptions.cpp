#include "hub/HubOptions.h"

#include "platform/open/commif/SocketPath.h"

#include <cstdio>

void printHubHelp()
{
    std::printf("quadplayer-hub " QP_VERSION "\n"
                "Usage: quadplayer-hub [--socket PATH] [--no-prompt] [MESSAGE]...\n"
                "Plays the other side of the player's link: prints each message that the player\n"
                "sends and sends it messages. Ends at the end of its input, on SIGINT or SIGTERM.\n"
                "\n"
                "  --socket PATH   listen there; the default is %s\n"
                "  --no-prompt     do not read commands from standard input\n"
                "  --help          print this text\n"
                "\n"
                "Each MESSAGE is one command in quotes, sent to the first player that connects;\n"
                "the prompt takes the same commands, for every player connected then:\n%s",
                commSocketPath().c_str(), kHubCommandHelp);
}

HubOptions readHubOptions(const std::vector<std::string>& arguments)
{
    HubOptions options;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--help")
            options.help = true;
        else if (argument == "--no-prompt")
            options.prompt = false;
        else if (argument == "--socket" && i + 1 < arguments.size())
            options.socketPath = arguments[++i];
        else if (const auto message = parseHubCommand(argument))
            options.messages.push_back(*message);
        else
            options.error = "cannot read '" + argument + "'; --help explains";
    }
    if (options.socketPath.empty())
        options.socketPath = commSocketPath();
    return options;
}
