#include "hub/HubCommand.h"

#include "hub/PacketText.h"

#include <charconv>

const char* const kHubCommandHelp =
    "  exit-request [MASK]   ask the player to exit: type 2, tag 3, value MASK (default 8)\n"
    "  raw [HEX]...          send these bytes as one packet, whatever they are\n"
    "  flood N [MASK]        send N exit requests as fast as the player takes them\n"
    "  help                  print this list\n"
    "  quit                  end the hub\n"
    "N and MASK are decimal, or hexadecimal with 0x before them.\n";

namespace {

constexpr uint32_t kExitMask = 8;

// Cuts the first word off the line.
std::string takeWord(std::string& line)
{
    const size_t from = line.find_first_not_of(' ');
    const size_t to = line.find(' ', from);
    std::string word = from == std::string::npos ? "" : line.substr(from, to - from);
    line = to == std::string::npos ? "" : line.substr(to + 1);
    return word;
}

// Decimal, or hexadecimal after 0x.
std::optional<uint32_t> toNumber(const std::string& word)
{
    const bool hex = word.compare(0, 2, "0x") == 0;
    const char* end = word.data() + word.size();
    uint32_t value = 0;
    const auto [stop, error] =
        std::from_chars(word.data() + (hex ? 2 : 0), end, value, hex ? 16 : 10);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

std::optional<HubCommand> sendRequest(const std::string& count, const std::string& mask)
{
    const std::optional<uint32_t> times = toNumber(count);
    const std::optional<uint32_t> bits = mask.empty() ? kExitMask : toNumber(mask);
    if (!times || !bits)
        return std::nullopt;
    return HubCommand{HubCommand::Kind::Send, exitRequest(*bits), *times};
}

std::optional<HubCommand> sendRaw(const std::string& hex)
{
    const std::optional<PacketBytes> packet = packetFromHex(hex);
    if (!packet)
        return std::nullopt;
    return HubCommand{HubCommand::Kind::Send, *packet, 1};
}

} // namespace

std::optional<HubCommand> parseHubCommand(const std::string& line)
{
    std::string rest = line;
    const std::string verb = takeWord(rest);
    if (verb == "raw")
        return sendRaw(rest);
    const std::string first = takeWord(rest);
    const std::string second = takeWord(rest);
    if (verb == "exit-request" && second.empty())
        return sendRequest("1", first);
    if (verb == "flood")
        return sendRequest(first, second);
    if (verb == "help")
        return HubCommand{HubCommand::Kind::Help, {}, 0};
    if (verb == "quit")
        return HubCommand{HubCommand::Kind::Quit, {}, 0};
    return std::nullopt;
}
