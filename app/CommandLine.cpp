#include "app/CommandLine.h"

#include "common/globals.h"

#include <array>
#include <cstring>

namespace {

constexpr int kExaminedArguments = 2;
constexpr size_t kLongestArgument = 64; // with its end; the rest is cut off

void examine(const char* argument)
{
    std::array<char, kLongestArgument> buffer = {};
    std::strncpy(buffer.data(), argument, buffer.size() - 1);
    char* rest = nullptr;
    const char* option = strtok_r(buffer.data(), "=", &rest);
    if (!option || std::strcmp(option, "--twokeymode") != 0)
        return;
    const char* value = strtok_r(nullptr, "=", &rest);
    if (!value)
        return;
    if (std::strcmp(value, "on") == 0)
        g_bTwoKeyMode = true;
    else if (std::strcmp(value, "off") == 0)
        g_bTwoKeyMode = false;
}

} // namespace

void readCommandLine(int argc, char** argv)
{
    if (argc < kExaminedArguments)
        return;
    for (int i = 0; i < kExaminedArguments; ++i)
        examine(argv[i]);
}
