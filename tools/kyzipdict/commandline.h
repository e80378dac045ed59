#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include "commands.h"
#include <initializer_list>
#include <map>
#include <optional>
#include <string_view>

namespace ZipDict {

/** The arguments of a command, taken apart: options with a value behind them, and the rest. Tells on standard
 * error what is wrong. */
class CommandLine
{
public:
    /** @param options names of those that the command has, each with a value
     * @param switches names of those without a value */
    CommandLine(const Arguments &arguments, std::initializer_list<std::string_view> options,
                std::initializer_list<std::string_view> switches = {});

    /** Whether all arguments are good so far. */
    [[nodiscard]] bool isGood() const { return m_isGood; }
    [[nodiscard]] const Arguments &rest() const { return m_rest; }
    /** Whether an option or a switch is there. */
    [[nodiscard]] bool has(std::string_view name) const { return m_values.contains(name); }
    /** The value of an option; empty when it isn't there. */
    [[nodiscard]] std::string value(std::string_view option) const;
    /** The value of an option that is a number. A value that is none makes the arguments bad. */
    [[nodiscard]] unsigned number(std::string_view option, unsigned least, unsigned most, unsigned otherwise);
    /** Arguments that are bad for a reason of the command's own. */
    void refuse(const std::string &reason);

private:
    std::map<std::string, std::string, std::less<>> m_values;
    Arguments m_rest;
    bool m_isGood = true;
};

} // namespace ZipDict

#endif
