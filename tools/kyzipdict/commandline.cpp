#include "commandline.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace ZipDict {

CommandLine::CommandLine(const Arguments &arguments, std::initializer_list<std::string_view> options,
                         std::initializer_list<std::string_view> switches)
{
    for (auto argument = arguments.begin(); argument != arguments.end() && m_isGood; ++argument) {
        if (argument->size() < 2 || argument->front() != '-')
            m_rest.push_back(*argument);
        else if (std::ranges::find(switches, *argument) != switches.end())
            m_values[*argument];
        else if (std::ranges::find(options, *argument) == options.end())
            refuse("unknown option " + *argument);
        else if (std::next(argument) == arguments.end())
            refuse("a value is missing behind " + *argument);
        else {
            const std::string &name = *argument;
            m_values[name] = *++argument;
        }
    }
}

std::string CommandLine::value(std::string_view option) const
{
    const auto found = m_values.find(option);
    return found == m_values.end() ? std::string() : found->second;
}

unsigned CommandLine::number(std::string_view option, unsigned least, unsigned most, unsigned otherwise)
{
    const auto found = m_values.find(option);
    if (found == m_values.end())
        return otherwise;
    const std::string &text = found->second;
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size() && number >= least && number <= most)
        return number;
    refuse("the value of " + std::string(option) + " is a number from " + std::to_string(least) + " to " +
           std::to_string(most));
    return otherwise;
}

void CommandLine::refuse(const std::string &reason)
{
    std::fprintf(stderr, "kyzipdict: %s\n", reason.c_str());
    m_isGood = false;
}

} // namespace ZipDict
